#include "Panner/AudioPannerStereoTo51.h"

#include "Vexilon/Constants.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"

#include <algorithm>
#include <cmath>

namespace SN
{

AudioPannerStereoTo51::AudioPannerStereoTo51()
	: PannerClass(u"AudioPannerStereoTo51", VX::kAudioChannelTypeStereo, &GetStereoSurroundGains, 4)
{
}

void AudioPannerStereoTo51::PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
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

LowFrequencyFeed AudioPannerStereoTo51::GetFeed(dsp::AudioBuffer const& inInput)
{
	if (GetX() != mLfeX)
	{
		constexpr float kQuarterTurn = 0.5f * VX::kPi;
		mLfeX = GetX();
		mLfeLeftGain = std::cos(kQuarterTurn * mLfeX);
		mLfeRightGain = std::sin(kQuarterTurn * mLfeX);
	}
	return {inInput.GetChannel(0), inInput.GetChannel(1), mLfeLeftGain, mLfeRightGain};
}

} // namespace SN
