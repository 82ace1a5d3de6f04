#pragma once

#include "Sonaro/IAudioPanProcessor.h"

namespace SN
{

// What the Create functions of panners do: makes one, has it set itself up, and hands it out when that
// succeeds.
template <class Panner, class... Args>
int CreatePanner(InterfaceRef<IAudioPanProcessor>* outProcessor, Args const&... inArgs)
{
	auto const panner = zorvcore::classref::MakeObject<Panner>();
	int const result = panner->Init(inArgs...);
	if (ResultSucceeded(result))
	{
		*outProcessor = panner;
	}
	return result;
}

} // namespace SN
