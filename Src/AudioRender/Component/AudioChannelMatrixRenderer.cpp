#include "AudioRender/Component/AudioChannelMatrixRenderer.h"

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferChannel.h"

#include <algorithm>

namespace SN
{

int AudioChannelMatrixRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix,
	InterfaceRef<IAudioProcessor>* outProcessor)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	auto const renderer = zorvcore::classref::MakeObject<AudioChannelMatrixRenderer>();
	int const result = renderer->Init(inContext, inFrameRate, inMatrix);
	if (ResultSucceeded(result))
	{
		*outProcessor = renderer;
	}
	return result;
}

int AudioChannelMatrixRenderer::Init(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix)
{
	int const result = AudioRenderContextClient::Init(inContext, inFrameRate);
	mMatrix = inMatrix;
	for (auto const& [input, outputs] : mMatrix)
	{
		for (unsigned long long const output : outputs)
		{
			if (output >= dsp::AudioBuffer::kMaxChannels)
			{
				return eInvalidArgument;
			}
			mChannelCount = std::max(mChannelCount, output + 1);
			mIdentity = mIdentity && input == output;
		}
	}
	if (mChannelCount == 0)
	{
		mChannelCount = VX::kAdaptiveChannels;
	}
	ReserveStackAudioBuffer(static_cast<unsigned>(mChannelCount), GetMaxBlockSize(),
		StackAudioBufferTags::kAudioChannelMatrixRenderer);
	return result;
}

InterfaceRef<IAudioProcessor> AudioChannelMatrixRenderer::Clone(FrameRate const&, unsigned, unsigned)
{
	auto const clone = StartClone(*this);
	clone->mMatrix = mMatrix;
	clone->mIdentity = mIdentity;
	clone->mChannelCount = mChannelCount;
	return clone;
}

void AudioChannelMatrixRenderer::ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const&)
{
	if (inBuffer.IsSilent())
	{
		return;
	}
	if (!mIdentity)
	{
		Route(inBuffer);
		return;
	}
	for (unsigned long long channel = mChannelCount; channel < inBuffer.GetNumChannels(); ++channel)
	{
		inBuffer.ZeroChannel(channel, inBuffer.GetUseSize(), false);
	}
}

void AudioChannelMatrixRenderer::Route(dsp::AudioBuffer& ioBuffer) const
{
	ScopedStackAudioBuffer const scratch(GetStackAudioBuffer(
		static_cast<unsigned>(mChannelCount), StackAudioBufferTags::kAudioChannelMatrixRenderer));
	dsp::AudioBuffer& routed = scratch.GetBuffer();
	routed.SetUseSize(ioBuffer.GetUseSize());
	routed.SetSilenceFlags(dsp::SilenceFlags::All());
	dsp::AudioBufferChannel from;
	dsp::AudioBufferChannel to;
	for (auto const& [input, outputs] : mMatrix)
	{
		from.AssignForReading(ioBuffer, input);
		for (unsigned long long const output : outputs)
		{
			to.Assign(routed, output);
			to.Mix(from);
		}
	}
	if (routed.GetUseSize() < ioBuffer.GetUseSize())
	{
		// A block beyond the context's largest: what the scratch cannot hold is silence.
		ioBuffer.Zero();
	}
	ioBuffer.CopyFrom(routed, routed.GetUseSize());
}

} // namespace SN
