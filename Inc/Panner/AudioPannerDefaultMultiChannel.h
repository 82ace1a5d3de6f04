#pragma once

#include "Panner/AutomatedPanner.h"
#include "Panner/PannerClass.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

// Copies channels between any two layouts: each input of the routing to the first output that it names,
// or straight by position when the routing has not as many entries as the smaller layout has channels.
// Its controls are kept and sampled, and have no effect.
class AudioPannerDefaultMultiChannel final
	: public PannerClass<AudioPannerDefaultMultiChannel, AutomatedPanner>
{
public:
	int Init(AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix,
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout)
	{
		SetShape(u"AudioPannerDefaultMultiChannel", inInputLayout, inOutputLayout);
		mMatrix = inMatrix;
		return AutomatedPanner::Init(inSettings, kAnyParameterCount);
	}

	void CopyFrom(AudioPannerDefaultMultiChannel const& inOther, FrameRate const& inFrameRate,
		unsigned inControlInterval)
	{
		AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
		mMatrix = inOther.mMatrix;
	}

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
	{
		if (inInput.IsSilent())
		{
			outOutput.Zero();
			return;
		}
		unsigned const channels = std::min(GetNumInputChannels(), GetNumOutputChannels());
		if (mMatrix.size() != channels)
		{
			for (unsigned channel = 0; channel < channels; ++channel)
			{
				outOutput.CopyChannel(inInput, channel, channel);
			}
			return;
		}
		for (auto const& [input, outputs] : mMatrix)
		{
			if (!outputs.empty())
			{
				outOutput.CopyChannel(inInput, input, *outputs.begin());
			}
		}
	}

private:
	AudioChannelMatrix mMatrix;
};

} // namespace SN
