#include "AudioRender/Component/AudioSendRenderer.h"

namespace SN
{

namespace
{

constexpr unsigned long long kSendGain = 0;
constexpr unsigned long long kBypass = 1;

} // namespace

int AudioSendRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, InterfaceRef<UnknownBase> const& inSendTarget, Parameters const& inParams,
	InterfaceRef<IAudioPanProcessor> const& inPanner, InterfaceRef<IAudioProcessor>* outProcessor)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	auto const renderer = zorvcore::classref::MakeObject<AudioSendRenderer>();
	int const result = renderer->AudioRenderContextClient::Init(inContext, inFrameRate);
	renderer->ParameterOwnerMixin::Init(inParams,
		{
			.mFrameRate = inFrameRate,
			.mBypassIndex = kBypass,
			.mParamInitFlag = renderer->GetSendParamFlag(),
			.mActionFlag = true,
		},
		inContext);
	renderer->mPanner = inPanner;
	renderer->MakeBuffers(renderer->GetMaxBlockSize());
	if (ResultSucceeded(result))
	{
		renderer->AddCachedGenerator(inSendTarget, renderer);
		*outProcessor = renderer;
	}
	return result;
}

void AudioSendRenderer::MakeBuffers(unsigned inMaxBlockSize)
{
	mSendBuffer.Init(mPanner->GetNumOutputChannels(), inMaxBlockSize);
	mSendBuffer.Zero();
	mWriteView.Init(mSendBuffer.GetNumChannels());
	mWriteView.Assign(mSendBuffer, 0);
}

InterfaceRef<IAudioProcessor> AudioSendRenderer::Clone(
	FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval)
{
	auto const clone = StartClone(*this);
	clone->CopyFrom(*this, false, inFrameRate, inControlInterval);
	clone->mPanner = mPanner->Clone(inFrameRate, inControlInterval);
	clone->MakeBuffers(inMaxBlockSize);
	AddClone(InterfaceRef<UnknownBase>::FromThis(this), clone);
	return clone;
}

void AudioSendRenderer::ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime)
{
	unsigned const frames = inBuffer.GetUseSize();
	mWriteView.SetUseSize(frames);
	if (mWriteView.GetUseSize() == 0)
	{
		return;
	}
	if (inBuffer.IsSilent())
	{
		mWriteView.ZeroBuffers();
	}
	// What has no room is cut off.
	dsp::AudioSubBuffer input;
	input.Init(inBuffer.GetNumChannels());
	input.Assign(inBuffer, 0);
	input.SetUseSize(mWriteView.GetUseSize());
	dsp::AudioBuffer const& heard =
		input.GetUseSize() < frames ? static_cast<dsp::AudioBuffer const&>(input) : inBuffer;
	if (IsBypassed())
	{
		mWriteView.Zero();
	}
	else if (mPanner->DoesNotAlterAudio())
	{
		mWriteView.CopyFromScale(heard, GetValueOrZero(kSendGain));
	}
	else
	{
		mPanner->ProcessAudioData(heard, mWriteView, inTime);
		mWriteView *= GetValueOrZero(kSendGain);
	}
	mWriteView.ShiftOffset(frames);
}

void AudioSendRenderer::MixCachedAudio(dsp::AudioBuffer& inBuffer)
{
	if (!mSendBuffer.IsSilent())
	{
		inBuffer.Mix(mSendBuffer);
	}
	mWriteView.Assign(mSendBuffer, 0);
}

void AudioSendRenderer::Preroll(TickTime const& inTime, bool inReverse)
{
	mSendBuffer.Zero();
	mPanner->Preroll(inTime, inReverse);
	ParameterOwnerMixin::Preroll(inTime);
}

void AudioSendRenderer::Reset()
{
	mPanner->Reset();
	ParameterOwnerMixin::Reset();
}

} // namespace SN
