#include "Panner/AudioPannerStereoToStereo.h"

#include "Panner/CreatePanner.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

int AudioPannerStereoToStereo::Create(
	AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerStereoToStereo>(outProcessor, inSettings);
}

AudioPannerStereoToStereo::AudioPannerStereoToStereo()
	: AutomatedPanner(u"AudioPannerStereoToStereo", VX::kAudioChannelTypeStereo, VX::kAudioChannelTypeStereo)
{
}

int AudioPannerStereoToStereo::Init(AutomatedPannerSettings const& inSettings)
{
	int const result = AutomatedPanner::Init(inSettings, 1);
	mRamps.Init(inSettings.mFrameRate);
	return result;
}

InterfaceRef<IAudioPanProcessor> AudioPannerStereoToStereo::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerStereoToStereo>();
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	clone->mRamps.Init(inFrameRate);
	return clone;
}

bool AudioPannerStereoToStereo::DoesNotAlterAudio()
{
	return GetParameterCount() > 0 && StandsAt(0, 0.5f);
}

void AudioPannerStereoToStereo::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const& inTime)
{
	mRamps.SetPan(GetValueOrZero(0));
	if (inInput.IsSilent())
	{
		mRamps.AdvanceWithoutProcessing(inInput.GetUseSize());
		outOutput.Zero();
	}
	else
	{
		if (IsJump(inTime))
		{
			mRamps.Jump(GetFrameRate());
		}
		mRamps.GetLeft().Process(inInput, 0, outOutput, 0);
		mRamps.GetRight().Process(inInput, 1, outOutput, 1);
	}
	NoteBlock(inTime, inInput.GetUseSize());
}

} // namespace SN
