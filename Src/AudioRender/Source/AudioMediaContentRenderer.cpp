#include "AudioRender/Source/AudioMediaContentRenderer.h"

#include "AudioRender/Core/CreateNode.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

int AudioMediaContentRenderer::Create(
	AudioContentSettings const& inSettings, InterfaceRef<IAudioGenerator>* outGenerator)
{
	InterfaceRef<AudioRenderContext> const context(inSettings.mContext);
	bool const isShared = context && inSettings.mKey;
	if (isShared)
	{
		if (InterfaceRef<IAudioGenerator> const known = context->FindContentRenderer(
				inSettings.mKey, inSettings.mFrameRate, inSettings.mMediaFrameRate))
		{
			*outGenerator = known;
			return kSuccess;
		}
	}
	int const result = CreateNode<AudioMediaContentRenderer>(inSettings, outGenerator);
	if (isShared && ResultSucceeded(result))
	{
		context->AddContentRenderer(
			inSettings.mKey, inSettings.mFrameRate, inSettings.mMediaFrameRate, *outGenerator);
	}
	return result;
}

int AudioMediaContentRenderer::InitFrom(AudioContentSettings const& inSettings)
{
	int const result = Init(inSettings.mContext, inSettings.mFrameRate);
	mGenerator = inSettings.mGenerator;
	mGeneratorPrivate = inSettings.mGenerator;
	mTime = ContentTime(
		inSettings.mFrameRate, inSettings.mMediaFrameRate, inSettings.mHasOffset, inSettings.mOffset);
	mContentEnd = inSettings.mContentEnd;
	ReserveStackAudioSubBuffer(GetNumChannels());
	return result;
}

void AudioMediaContentRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (inForceCompletion)
	{
		mGenerator->FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
	}
}

void AudioMediaContentRenderer::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	TickTime const time = mTime.Map(inTime);
	if (time >= kTimeZero || !IsImmediateRender())
	{
		mGenerator->GetAudioData(time, inBuffer, inReverse);
		return;
	}
	TickTime const end = time + TickTime(inBuffer.GetUseSize(), GetFrameRate());
	inBuffer.Zero();
	if (end <= kTimeZero)
	{
		return;
	}
	// Its own, since the scratch window belongs to whichever renderer of this width is further in.
	dsp::AudioSubBuffer window;
	window.Init(inBuffer.GetNumChannels());
	window.Assign(inBuffer, static_cast<unsigned>(-time.ToFrame32(GetFrameRate())));
	mGenerator->GetAudioData(kTimeZero, window, inReverse);
}

} // namespace SN
