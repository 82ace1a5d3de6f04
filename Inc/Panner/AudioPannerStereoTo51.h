#pragma once

#include "Panner/PannerClass.h"
#include "Panner/SurroundPanner.h"
#include "Vexilon/Constants.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace SN
{

// Places left and right in the field of 5.1, each on its own side in front and in the rear; the centre
// gets their mean.
class AudioPannerStereoTo51 final : public PannerClass<AudioPannerStereoTo51, SurroundPanner>
{
public:
	// It takes four controls.
	AudioPannerStereoTo51()
		: PannerClass(u"AudioPannerStereoTo51", VX::kAudioChannelTypeStereo, &GetStereoSurroundGains, 4)
	{
	}

protected:
	void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) override
	{
		GetRamp(kLeft).Process(inInput, 0, outOutput, kLeft);
		GetRamp(kRight).Process(inInput, 1, outOutput, kRight);
		GetRamp(kLeftSurround).Process(inInput, 0, outOutput, kLeftSurround);
		GetRamp(kRightSurround).Process(inInput, 1, outOutput, kRightSurround);

		// The sums below read samples, not flags.
		dsp::ZeroBufferAccordingToSilenceFlags(const_cast<dsp::AudioBuffer&>(inInput));
		unsigned const frames = std::min(inInput.GetUseSize(), outOutput.GetUseSize());
		outOutput.NoteChannelWrite(kCenter, frames);
		outOutput.NoteChannelWrite(kLowFrequency, frames);

		float* const center = outOutput.GetChannel(kCenter);
		zorvaccelerate::utility::Add(frames, inInput.GetChannel(0), inInput.GetChannel(1), center);
		zorvaccelerate::utility::MulConstant_InPlace(frames, center, 0.5f);
		GetRamp(kCenter).Process(outOutput, kCenter);

		GetFilter().Process(frames, GetFeed(inInput), outOutput.GetChannel(kLowFrequency));
		GetRamp(kLowFrequency).Process(outOutput, kLowFrequency);
	}

private:
	LowFrequencyFeed GetFeed(dsp::AudioBuffer const& inInput)
	{
		if (GetX() != mLfeX)
		{
			constexpr float kQuarterTurn = 0.5f * VX::kPi;
			mLfeX = GetX();
			mLfeLeftGain = zorvcore::math::Cos(kQuarterTurn * mLfeX);
			mLfeRightGain = zorvcore::math::Sin(kQuarterTurn * mLfeX);
		}
		return {inInput.GetChannel(0), inInput.GetChannel(1), mLfeLeftGain, mLfeRightGain};
	}

	// What each input gives to the low frequency channel, and the X that it is for.
	float mLfeLeftGain = 0.0f;
	float mLfeRightGain = 0.0f;
	float mLfeX = -1.0f;
};

} // namespace SN
