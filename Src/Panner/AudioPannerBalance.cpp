#include "Panner/AudioPannerBalance.h"

namespace SN
{

AudioPannerBalance::AudioPannerBalance()
	: PannerClass(u"AudioPannerBalance", VX::kAudioChannelTypeAdaptive, VX::kAudioChannelTypeAdaptive)
{
}

int AudioPannerBalance::Init(AutomatedPannerSettings const& inSettings, IdentityTest inIdentityTest)
{
	mIdentityTest = inIdentityTest;
	return AutomatedPanner::Init(inSettings, kAnyParameterCount);
}

void AudioPannerBalance::CopyFrom(
	AudioPannerBalance const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
	mIdentityTest = inOther.mIdentityTest;
}

bool AudioPannerBalance::DoesNotAlterAudio()
{
	return mIdentityTest == IdentityTest::kOn && GetParameterCount() > 0 && GetParameter(0) &&
		   StandsAt(0, 0.5f);
}

void AudioPannerBalance::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	mBalance.Process(inInput, outOutput, GetValueOrZero(0));
}

} // namespace SN
