#include "Panner/AudioPannerMonoToStereo.h"

#include "Panner/CreatePanner.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

int AudioPannerMonoToStereo::Create(
	AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerMonoToStereo>(outProcessor, inSettings);
}

AudioPannerMonoToStereo::AudioPannerMonoToStereo()
	: AutomatedPanner(u"AudioPannerMonoToStereo", VX::kAudioChannelTypeMono, VX::kAudioChannelTypeStereo)
{
}

int AudioPannerMonoToStereo::Init(AutomatedPannerSettings const& inSettings)
{
	int const result = AutomatedPanner::Init(inSettings, 1);
	mRamps.Init(inSettings.mFrameRate);
	return result;
}

InterfaceRef<IAudioPanProcessor> AudioPannerMonoToStereo::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerMonoToStereo>();
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	clone->mRamps.Init(inFrameRate);
	return clone;
}

void AudioPannerMonoToStereo::ProcessAudioData(
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
		mRamps.GetRight().Process(inInput, 0, outOutput, 1);
	}
	NoteBlock(inTime, inInput.GetUseSize());
}

} // namespace SN
