#include "AudioRender/Source/AudioStreamRenderer.h"

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SN
{

namespace
{

// The longest stretch of one prefetch request, in samples.
constexpr unsigned kMaxPrefetchRequest = 0x10000;

} // namespace

int AudioStreamRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioSource> const& inSource, int inChannelIndex,
	double inStreamSpeed, InterfaceRef<UnknownBase> const& inKey, InterfaceRef<IAudioGenerator>* outGenerator)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	InterfaceRef<AudioRenderContext> const context(inContext);
	if (inKey)
	{
		// The key alone decides, whatever channel is asked for.
		if (InterfaceRef<IAudioGenerator> const found = context->FindStreamRenderer(inKey))
		{
			*outGenerator = found;
			return kSuccess;
		}
	}

	auto const stream = zorvcore::classref::MakeObject<AudioStreamRenderer>();
	int const result = stream->AudioRenderContextClient::Init(inContext, inFrameRate);
	stream->SetSource(inSource);
	stream->mChannelIndex = static_cast<std::uint32_t>(inChannelIndex);
	stream->mStreamSpeed = inStreamSpeed;
	if (stream->SelectsChannel())
	{
		stream->ReserveStackAudioBuffer(inSource->GetNumChannels(), stream->GetMaxBlockSize(),
			StackAudioBufferTags::kAudioStreamRenderer);
	}
	if (ResultSucceeded(result))
	{
		*outGenerator = stream;
		stream->mIsShared = inKey.IsValid();
		if (stream->mIsShared)
		{
			context->AddStreamRenderer(inKey, *outGenerator);
		}
	}
	return result;
}

void AudioStreamRenderer::SetSource(InterfaceRef<IAudioSource> const& inSource)
{
	mSource = inSource;
	mFile = inSource;
	mAsync = inSource;
}

InterfaceRef<IAudioGenerator> AudioStreamRenderer::Clone()
{
	if (mIsShared)
	{
		return InterfaceRef<IAudioGenerator>::FromThis(this);
	}
	auto const clone = StartClone(*this);
	clone->CopyTimesFrom(*this);
	clone->SetSource(mSource);
	clone->mChannelIndex = mChannelIndex;
	clone->mStreamSpeed = mStreamSpeed;
	clone->mPreviewOffset = mPreviewOffset;
	clone->mIsShared = mIsShared;
	return clone;
}

void AudioStreamRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	PrefetchRange range = inRange - mPreviewOffset;
	range.mStart = std::max(range.mStart, kTimeZero);
	int const length = (range.mEnd - range.mStart).ToFrame32(GetFrameRate());
	if (length <= 0 || !mAsync)
	{
		return;
	}
	TickTime time = range.mStart;
	for (auto remaining = static_cast<unsigned>(length); remaining > 0;)
	{
		unsigned const count = std::min(remaining, kMaxPrefetchRequest);
		inAccumulator.AddPrefetchRequest(inType, mAsync, time, count);
		remaining -= count;
		time.AddFrames(count, GetFrameRate());
	}
}

void AudioStreamRenderer::GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse)
{
	TickTime const position = inTime - mPreviewOffset;
	TickTime end = position;
	if (position < kTimeZero && end.AddFrames(inBuffer.GetUseSize(), GetFrameRate()) < kTimeZero)
	{
		inBuffer.Zero();
		return;
	}
	if (SelectsChannel())
	{
		ScopedStackAudioBuffer const scratch(
			GetStackAudioBuffer(mSource->GetNumChannels(), StackAudioBufferTags::kAudioStreamRenderer));
		dsp::AudioBuffer& source = scratch.GetBuffer();
		source.SetUseSize(inBuffer.GetUseSize());
		ReadInto(source, inBuffer, position);
		if (source.GetUseSize() < inBuffer.GetUseSize())
		{
			// A block beyond the context's largest: what the scratch cannot hold is silence.
			inBuffer.Zero();
		}
		inBuffer.CopyChannel(source, mChannelIndex, 0);
		for (unsigned long long channel = 1; channel < inBuffer.GetNumChannels(); ++channel)
		{
			inBuffer.MarkChannelSilent(channel);
		}
	}
	else
	{
		ReadInto(inBuffer, inBuffer, position);
	}
	if (inReverse)
	{
		inBuffer.Reverse();
	}
}

// Fills ioTarget, which is ioBuffer or stands in for it, from inPosition on; what lies before the
// source's start is silence, in a window less for the source to fill.
void AudioStreamRenderer::ReadInto(
	dsp::AudioBuffer& ioTarget, dsp::AudioBuffer& ioBuffer, TickTime const& inPosition)
{
	if (inPosition >= kTimeZero)
	{
		ReadSource(ioTarget, inPosition);
		return;
	}
	ioBuffer.Zero();
	dsp::AudioSubBuffer window;
	window.Init(ioTarget.GetNumChannels());
	window.Assign(ioTarget, static_cast<unsigned>(-inPosition.ToFrame64(GetFrameRate())));
	ReadSource(window, kTimeZero);
}

void AudioStreamRenderer::ReadSource(dsp::AudioBuffer& ioTarget, TickTime const& inTime)
{
	if (!mSource)
	{
		return;
	}
	if (mFile && !mFile->IsGrowing() && inTime >= mFile->GetDuration())
	{
		ioTarget.Zero();
		return;
	}
	if (mAsync && IsPrefetchEnabled())
	{
		mAsync->ReadPrefetchedAudio(inTime, ioTarget);
		return;
	}
	mSource->ReadAudio(VX::BinaryData(), ioTarget, inTime, false);
}

unsigned AudioStreamRenderer::GetNumChannels()
{
	return mChannelIndex != kAllChannels || !mSource ? 1 : mSource->GetNumChannels();
}

AudioChannelLayout AudioStreamRenderer::GetAudioChannelLayout()
{
	return mChannelIndex == kAllChannels && mSource ? mSource->GetAudioChannelLayout()
													: VX::kAudioChannelLayout_Mono;
}

} // namespace SN
