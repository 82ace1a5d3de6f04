#include "AudioRender/Track/AudioMixRenderer.h"

#include "AudioRender/Track/AudioMixRendererCreateFailure.h"
#include "Sonaro/PrefetchRange.h"

#include <algorithm>

namespace SN
{

int AudioMixRenderer::InitFrom(AudioMixSettings const& inSettings)
{
	int const result = AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
	if (!ResultSucceeded(result))
	{
		return result;
	}
	if (!inSettings.mFirst || !inSettings.mSecond || !inSettings.mProcessor)
	{
		throw AudioMixRendererCreateFailure(__FILE__, __LINE__);
	}
	SetNodes({inSettings.mFirst, inSettings.mFirstTimeScale},
		{inSettings.mSecond, inSettings.mSecondTimeScale}, inSettings.mProcessor);
	return result;
}

void AudioMixRenderer::SetNodes(
	Input const& inFirst, Input const& inSecond, InterfaceRef<IAudioProcessor> const& inProcessor)
{
	mFirst = inFirst;
	mSecond = inSecond;
	mProcessor = inProcessor;
	mProcessorControls = inProcessor;
	if (InterfaceRef<IAudioGeneratorPrivate>(mSecond.mGenerator))
	{
		mDescription = mFirst.mGenerator;
	}
	std::size_t const channels = GetAudioChannelLayout().size();
	mGeneratorBuffer.Init(2 * channels, GetMaxBlockSize());
	mProcessorBuffer.Init(2 * channels, GetMaxBlockSize());
	mOutputView.Init(channels);
}

InterfaceRef<IAudioGenerator> AudioMixRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->CopyTimesFrom(*this);
	clone->SetNodes({mFirst.mGenerator->Clone(), mFirst.mTimeScale},
		{mSecond.mGenerator->Clone(), mSecond.mTimeScale},
		mProcessor->Clone(GetFrameRate(), GetMaxBlockSize(), GetControlInterval()));
	return clone;
}

bool AudioMixRenderer::HasHistory()
{
	return mFirst.mGenerator->HasHistory() || mSecond.mGenerator->HasHistory();
}

TickTime AudioMixRenderer::GetDelay()
{
	return IsDelayCompensationDisabled() ? kTimeZero : mFirst.mGenerator->GetDelay();
}

void AudioMixRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	for (Input const* const input : {&mFirst, &mSecond})
	{
		input->mGenerator->Preroll(inStartTime * input->mTimeScale, inReverse);
	}
	mProcessor->Preroll(inStartTime, inReverse);
}

void AudioMixRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	for (Input const* const input : {&mFirst, &mSecond})
	{
		input->mGenerator->FillInitialDelay(
			inStartTime * input->mTimeScale, inDelayTime, inReverse, inForceCompletion);
	}
}

void AudioMixRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	for (Input const* const input : {&mFirst, &mSecond})
	{
		input->mGenerator->AccumulatePrefetchRequests(inRange * input->mTimeScale, inType, inAccumulator);
	}
}

void AudioMixRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	if (mProcessorControls)
	{
		mProcessorControls->UpdateControls(inTime);
	}
	unsigned const channels = GetNumOutputChannels();
	unsigned const total = ioBuffer.GetUseSize();
	unsigned const chunk = std::min(total, GetMaxBlockSize());
	if (channels != 0)
	{
		// What nothing writes is silent.
		ioBuffer.Zero();
	}
	mOutputView.Assign(ioBuffer, 0);
	unsigned written = 0;
	while (written < total)
	{
		unsigned const wanted = std::min(total - written, chunk);
		unsigned const got = RenderPass(inTime, wanted, channels, inReverse);
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			mOutputView.CopyChannel(mProcessorBuffer, channel, channel);
		}
		mOutputView.ShiftOffset(got);
		written += got;
		if (got == 0 || got != wanted)
		{
			break;
		}
	}
	ioBuffer.SetUseSize(written);
}

unsigned AudioMixRenderer::RenderPass(
	TickTime const& inTime, unsigned inWanted, unsigned inChannels, bool inReverse)
{
	PullInput(mFirst, inTime, inWanted, inReverse);
	unsigned const got = std::min(mGeneratorBuffer.GetUseSize(), inWanted);
	mProcessorBuffer.SetUseSize(got);
	// Where the second generator gives less than the first, the rest of it is silent.
	mProcessorBuffer.Zero();
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		mProcessorBuffer.CopyChannel(mGeneratorBuffer, channel, channel);
	}
	PullInput(mSecond, inTime, got, inReverse);
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		mProcessorBuffer.CopyChannel(mGeneratorBuffer, channel, channel + inChannels);
	}
	mProcessor->ProcessAudioData(mProcessorBuffer, inTime);
	return got;
}

void AudioMixRenderer::PullInput(
	Input const& inInput, TickTime const& inTime, unsigned inFrames, bool inReverse)
{
	mGeneratorBuffer.SetUseSize(inFrames);
	mGeneratorBuffer.Zero();
	inInput.mGenerator->GetAudioData(inTime * inInput.mTimeScale, mGeneratorBuffer, inReverse);
}

void AudioMixRenderer::CollectLiveParameters(LiveAudioParameterMap& outParameters)
{
	for (InterfaceRef<ILiveAudioParameterOwner> const& owner :
		{InterfaceRef<ILiveAudioParameterOwner>(mFirst.mGenerator),
			InterfaceRef<ILiveAudioParameterOwner>(mSecond.mGenerator),
			InterfaceRef<ILiveAudioParameterOwner>(mProcessor)})
	{
		if (owner)
		{
			owner->CollectLiveParameters(outParameters);
		}
	}
}

unsigned AudioMixRenderer::GetNumChannels()
{
	return mDescription ? mDescription->GetNumChannels() : 0;
}

unsigned AudioMixRenderer::GetNumOutputChannels()
{
	return mDescription ? mDescription->GetNumOutputChannels() : 0;
}

AudioChannelLayout AudioMixRenderer::GetAudioChannelLayout()
{
	return mDescription ? mDescription->GetAudioChannelLayout() : AudioChannelLayout();
}

FrameRate AudioMixRenderer::GetGeneratorFrameRate()
{
	return mDescription ? mDescription->GetGeneratorFrameRate() : FrameRate();
}

void AudioMixRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	ioVisitor.Visit(mFirst.mGenerator);
	ioVisitor.Visit(mSecond.mGenerator);
	ioVisitor.Visit(mProcessor);
}

} // namespace SN
