#pragma once

#include "Panner/PannerClass.h"
#include "Panner/SurroundPanner.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

// Places one channel in the field of 5.1: pairs of equal power in front and in the rear. Controls that are
// missing stand at 0.
class AudioPannerMonoTo51 final : public PannerClass<AudioPannerMonoTo51, SurroundPanner>
{
public:
	AudioPannerMonoTo51()
		: PannerClass(
			  u"AudioPannerMonoTo51", VX::kAudioChannelTypeMono, &GetMonoSurroundGains, kAnyParameterCount)
	{
	}

protected:
	void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) override
	{
		for (Channel const channel : {kLeft, kRight, kCenter, kLeftSurround, kRightSurround})
		{
			GetRamp(channel).Process(inInput, 0, outOutput, channel);
		}
		unsigned const frames = std::min(inInput.GetUseSize(), outOutput.GetUseSize());
		if (inInput.IsChannelSilent(0))
		{
			// Another channel of a wider buffer is heard. What a flag covers counts as zeros, and the filter rings on.
			const_cast<dsp::AudioBuffer&>(inInput).ZeroChannel(0, frames, false);
		}
		GetFilter().Process(frames, {.mFirst = inInput.GetChannel(0)}, outOutput.GetChannel(kLowFrequency));
		outOutput.NoteChannelWrite(kLowFrequency, frames);
		GetRamp(kLowFrequency).Process(outOutput, kLowFrequency);
	}
};

} // namespace SN
