#pragma once

#include "Sonaro/IAudioPanProcessor.h"

namespace SN
{

// What the Create functions of panners do: has a new panner set itself up, and hands it out when that succeeds.
template <class Panner, class... Args>
int CreatePanner(InterfaceRef<Panner> const& inPanner, InterfaceRef<IAudioPanProcessor>* outProcessor,
	Args const&... inArgs)
{
	int const result = inPanner->Init(inArgs...);
	if (ResultSucceeded(result))
	{
		*outProcessor = inPanner;
	}
	return result;
}

// The same for a panner that is made without arguments.
template <class Panner, class... Args>
int CreatePanner(InterfaceRef<IAudioPanProcessor>* outProcessor, Args const&... inArgs)
{
	return CreatePanner(zorvcore::classref::MakeObject<Panner>(), outProcessor, inArgs...);
}

} // namespace SN
