#pragma once

#include "Sonaro/IAudioPanProcessor.h"

namespace SN
{

// The making of panners, which all their classes have alike: Self derives from this over the base that does the work.
// A panner is made without arguments. Its Init sets it up, its CopyFrom makes it the clone of another one.
template <class Self, class Base>
class PannerClass : public Base
{
public:
	// Hands out a new panner when its Init succeeds with these arguments.
	template <class... Args>
	static int Create(InterfaceRef<IAudioPanProcessor>* outProcessor, Args const&... inArgs)
	{
		auto const panner = zorvcore::classref::MakeObject<Self>();
		int const result = panner->Init(inArgs...);
		if (ResultSucceeded(result))
		{
			*outProcessor = panner;
		}
		return result;
	}

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override
	{
		auto const clone = zorvcore::classref::MakeObject<Self>();
		clone->CopyFrom(static_cast<Self const&>(*this), inFrameRate, inControlInterval);
		return clone;
	}

protected:
	using Base::Base;
};

} // namespace SN
