#include "Panner/AudioPannerBalance.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPannerBalance::Create(AutomatedPannerSettings const& inSettings, IdentityTest inIdentityTest,
	InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerBalance>(outProcessor, inSettings, inIdentityTest);
}

AudioPannerBalance::AudioPannerBalance()
	: AutomatedPanner(u"AudioPannerBalance", VX::kAudioChannelTypeAdaptive, VX::kAudioChannelTypeAdaptive)
{
}

int AudioPannerBalance::Init(AutomatedPannerSettings const& inSettings, IdentityTest inIdentityTest)
{
	mIdentityTest = inIdentityTest;
	return AutomatedPanner::Init(inSettings, kAnyParameterCount);
}

InterfaceRef<IAudioPanProcessor> AudioPannerBalance::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerBalance>();
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	clone->mIdentityTest = mIdentityTest;
	return clone;
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
