#include "AudioRender/Track/RealtimeAudioClipTrackItemRenderer.h"

#include "AudioRender/Core/FillUp.h"
#include "AudioRender/Core/StackAudioBufferTags.h"
#include "AudioRender/Track/LoopWrap.h"
#include "AudioRender/Track/PanWorkingWidth.h"
#include "AudioRender/Track/RenderAndDiscard.h"
#include "Sonaro/AudioResamplerFactory.h"
#include "Sonaro/AudioUtilities.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace SN
{

namespace
{

// Samples by which the source's position may be off before it is set anew: reading on sounds better.
constexpr long long kPositionTolerance = 16;

constexpr TickTime kLongestFill = TickTime::FromTicks(60 * zorvmediatypes::kTicksPerSecond);

constexpr FrameRate kOneHertz(zorvmediatypes::kTicksPerSecond);

FrameRate GetInputRate(double inSpeed)
{
	return inSpeed == 0.0 ? FrameRate() : kOneHertz * inSpeed;
}

} // namespace

int RealtimeAudioClipTrackItemRenderer::InitFrom(RealtimeAudioClipTrackItemSettings const& inSettings)
{
	int const result = AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
	if (!ResultSucceeded(result))
	{
		return result;
	}
	if (!inSettings.mPanProcessor)
	{
		return eNullPointer;
	}
	if (std::isnan(inSettings.mSpeed))
	{
		return eInvalidArgument;
	}
	mSource = inSettings.mSource;
	mChain.Init(inSettings.mProcessors, inSettings.mPanProcessor);
	mSpeed = inSettings.mSpeed;
	mUsesResampler = mSpeed != 1.0;
	mTimeTransform = inSettings.mTimeTransform;
	mTimeOffset = inSettings.mTimeOffset;
	ReserveScratch();
	return result;
}

void RealtimeAudioClipTrackItemRenderer::ReserveScratch()
{
	IAudioPanProcessor& panner = *mChain.GetPanProcessor();
	mWidth = GetPanWorkingWidth(panner);
	// What a resampler reads may be longer than a block.
	unsigned const samples = mUsesResampler ? GetMaxResampleBufferSize() : GetMaxBlockSize();
	ReserveStackAudioBuffer(mWidth, samples, StackAudioBufferTags::kRealtimeAudioClipTrackItemRendererPan);
	ReserveStackAudioSubBuffer(mWidth);
	if (mUsesResampler)
	{
		mResampler = AudioResamplerFactory::CreateAudioResampler(RenderQuality::kMedium);
		mResampler->Init(GetInputRate(mSpeed), kOneHertz, panner.GetNumOutputChannels(), false);
		ReserveStackAudioBuffer(
			mWidth, samples, StackAudioBufferTags::kRealtimeAudioClipTrackItemRendererResampler);
	}
}

InterfaceRef<IAudioGenerator> RealtimeAudioClipTrackItemRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->CopyTimesFrom(*this);
	clone->mSpeed = mSpeed;
	clone->mUsesResampler = mUsesResampler;
	clone->mTimeTransform = mTimeTransform;
	clone->mTimeOffset = mTimeOffset;
	clone->mPrerolled = mPrerolled;
	clone->mSource = mSource->Clone();
	clone->mChain.CloneFrom(mChain, *this);
	clone->ReserveScratch();
	return clone;
}

void RealtimeAudioClipTrackItemRenderer::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	// What nothing writes is silent.
	ioBuffer.Zero();
	if ((!IsImmediateRender() && !mPrerolled) || ioBuffer.GetUseSize() == 0)
	{
		return;
	}
	TickTime const sourceTime = mTimeTransform->GetTime(ShiftTime(inTime));
	if (mUsesResampler)
	{
		RenderResampled(sourceTime * mSpeed, ioBuffer, inReverse);
	}
	else
	{
		RenderStraight(sourceTime, ioBuffer, inReverse);
	}
}

TickTime RealtimeAudioClipTrackItemRenderer::ShiftTime(TickTime const& inTime) const
{
	bool const isAhead = !IsDelayCompensationDisabled() && mTimeOffset != kTimeZero;
	return isAhead ? WrapIntoLoop(inTime + mTimeOffset, GetPrefetcher()) : inTime;
}

void RealtimeAudioClipTrackItemRenderer::RenderStraight(
	TickTime const& inSourceTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	unsigned const frames = ioBuffer.GetUseSize();
	bool const panAlters = PanAlters();
	// A window of the whole of a window shows nothing else.
	if (!panAlters && mChain.IsEmpty() && ioBuffer.GetNumChannels() <= mWidth &&
		!ioBuffer.CanProcessInGroupsOfFour())
	{
		mSource->GetAudioData(inSourceTime, ioBuffer, inReverse);
		FillUp(ioBuffer, frames);
		return;
	}
	ScopedStackAudioBuffer const scratch(
		panAlters ? GetStackAudioBuffer(mWidth, StackAudioBufferTags::kRealtimeAudioClipTrackItemRendererPan)
				  : nullptr);
	dsp::AudioBuffer& buffer = panAlters ? scratch.GetBuffer() : ioBuffer;
	if (panAlters)
	{
		buffer.SetUseSize(frames);
		buffer.Zero();
	}
	dsp::AudioSubBuffer window;
	window.Init(std::min<unsigned long long>(mWidth, buffer.GetNumChannels()));
	window.Assign(buffer, 0);
	mSource->GetAudioData(inSourceTime, window, inReverse);
	FillUp(window, frames);
	RunChain(window, panAlters ? &ioBuffer : nullptr, inSourceTime, inReverse);
}

void RealtimeAudioClipTrackItemRenderer::RenderResampled(
	TickTime const& inSourceTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	unsigned const outputs = ioBuffer.GetUseSize();
	unsigned const inputs = mResampler->GetInputSampleCount(outputs);
	if (inputs > GetMaxResampleBufferSize())
	{
		return;
	}
	if (inReverse)
	{
		mSourcePosition.AddFrames(-static_cast<long long>(inputs), GetFrameRate());
	}
	long long const off = inSourceTime.ToFrame64(GetFrameRate()) - mSourcePosition.ToFrame64(GetFrameRate());
	if (off > kPositionTolerance || off < -kPositionTolerance)
	{
		mSourcePosition = inSourceTime;
	}
	ScopedStackAudioBuffer const readScratch(
		GetStackAudioBuffer(mWidth, StackAudioBufferTags::kRealtimeAudioClipTrackItemRendererResampler));
	ScopedStackAudioBuffer const panScratch(
		GetStackAudioBuffer(mWidth, StackAudioBufferTags::kRealtimeAudioClipTrackItemRendererPan));
	dsp::AudioBuffer& read = readScratch.GetBuffer();
	dsp::AudioBuffer& panned = panScratch.GetBuffer();
	read.SetUseSize(inputs);
	read.Zero();
	panned.SetUseSize(inputs);
	panned.Zero();

	TickTime const start = ReadSource(read, inputs, inReverse);
	bool const panAlters = PanAlters();
	dsp::AudioSubBuffer window;
	window.Init(mWidth);
	window.Assign(read, 0);
	RunChain(window, panAlters ? &panned : nullptr, start, inReverse);
	dsp::AudioBuffer& input = panAlters ? panned : read;
	if (inputs == 0)
	{
		// The outputs lie in what the resampler still holds, which no flag of an empty block may hide.
		input.ClearSilenceFlags(dsp::SilenceFlags::All());
	}
	mResampler->Process(input, ioBuffer, inputs, outputs);
}

TickTime RealtimeAudioClipTrackItemRenderer::ReadSource(
	dsp::AudioBuffer& ioBuffer, unsigned inCount, bool inReverse)
{
	TickTime const start = mSourcePosition;
	TickTime position = start;
	dsp::AudioSubBuffer window;
	window.Init(mWidth);
	for (unsigned done = 0; done < inCount;)
	{
		unsigned const piece = std::min(inCount - done, std::max(GetMaxBlockSize(), 1u));
		window.Assign(ioBuffer, done);
		window.SetUseSize(piece);
		mSource->GetAudioData(position, window, inReverse);
		FillUp(window, piece);
		if (inReverse)
		{
			window.Reverse();
		}
		position.AddFrames(piece, GetFrameRate());
		done += piece;
	}
	if (inReverse)
	{
		ioBuffer.Reverse();
	}
	else
	{
		mSourcePosition = position;
	}
	return start;
}

void RealtimeAudioClipTrackItemRenderer::RunChain(
	dsp::AudioSubBuffer& ioWindow, dsp::AudioBuffer* outPan, TickTime const& inTime, bool inReverse)
{
	dsp::AudioSubBuffer panOutput;
	if (outPan)
	{
		panOutput.Init(std::min<unsigned long long>(mWidth, outPan->GetNumChannels()));
		panOutput.Assign(*outPan, 0);
	}
	mChain.Run({ioWindow, outPan ? &panOutput : nullptr, inTime, GetFrameRate(), inReverse}, *this,
		{.mSkipsLatentProcessors = IsDelayCompensationDisabled()});
}

void RealtimeAudioClipTrackItemRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	if (mPrerolled)
	{
		return;
	}
	mPrerolled = true;
	mSource->Preroll(mTimeTransform->GetTime(inStartTime + mTimeOffset), inReverse);
	mChain.Preroll(inStartTime * mSpeed, inReverse);
	if (IsDelayCompensationDisabled())
	{
		return;
	}
	if (IsImmediateRender() || !IsPrefetchEnabled())
	{
		WarmUp(inStartTime);
		return;
	}
	mDelay = GetSourceDelay() + mTimeOffset;
	mFramesFilled = 0;
	long long const frames = GetDelayInFrames();
	mFillPosition = inStartTime;
	if (GetNestingDepth() != 0 && inStartTime >= GetDelay())
	{
		// The sequence around it has begun long enough ago.
		mFramesFilled = frames;
		return;
	}
	mFillPosition.AddFrames(inReverse ? frames : -frames, GetFrameRate());
	PrepareToDiscard(frames);
}

// The delay in the item's own time. An item that stands still, or nearly so, would fill for ever.
TickTime RealtimeAudioClipTrackItemRenderer::GetSourceDelay() const
{
	if (!mUsesResampler)
	{
		return mSource->GetDelay();
	}
	TickTime const delay = mSpeed == 0.0 ? kTimeMax : mSource->GetDelay() / mSpeed;
	return delay > kLongestFill ? kTimeZero : delay;
}

// This is done off the render path, and only for an item that has something to throw away: there may be very many.
void RealtimeAudioClipTrackItemRenderer::PrepareToDiscard(long long inFrames)
{
	if (inFrames > 0 && !mDiscarded)
	{
		mDiscarded = std::make_unique<dsp::AudioBuffer>(mWidth, GetMaxBlockSize());
	}
}

void RealtimeAudioClipTrackItemRenderer::WarmUp(TickTime const& inStartTime)
{
	long long const frames = mTimeOffset.ToFrame64(GetFrameRate());
	if (frames > 0)
	{
		mFillPosition = inStartTime;
		mFillPosition.AddFrames(-frames, GetFrameRate());
		PrepareToDiscard(frames);
		Discard(static_cast<unsigned>(std::min<long long>(frames, UINT32_MAX)), false, true);
	}
}

// Renders so many frames from the fill position on: what counts is that processors and resampler have heard
// them.
void RealtimeAudioClipTrackItemRenderer::Discard(unsigned inFrames, bool inReverse, bool inPrefetch)
{
	RenderAndDiscard(*this, {inFrames, GetFrameRate(), GetMaxBlockSize(), inReverse, inPrefetch},
		mFillPosition, *mDiscarded);
}

void RealtimeAudioClipTrackItemRenderer::FillInitialDelay(
	TickTime const&, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (IsDelayCompensationDisabled())
	{
		return;
	}
	if (inForceCompletion)
	{
		mSource->FillInitialDelay(mFillPosition, inDelayTime, inReverse, true);
	}
	long long const total = GetDelayInFrames();
	if (mFramesFilled >= total || !mDiscarded)
	{
		return;
	}
	long long const wanted = inForceCompletion ? total : inDelayTime.ToFrame64(GetFrameRate());
	long long const count = std::min(wanted, total - mFramesFilled);
	mFramesFilled += count;
	if (count > 0)
	{
		Discard(static_cast<unsigned>(std::min<long long>(count, UINT32_MAX)), inReverse, inForceCompletion);
	}
}

void RealtimeAudioClipTrackItemRenderer::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator)
{
	PrefetchRange range = inRange + mTimeOffset;
	if (mUsesResampler)
	{
		range *= mSpeed;
		double const ratio = mResampler->GetInputFrameRate().GetSamplesPerSecond() /
							 mResampler->GetOutputFrameRate().GetSamplesPerSecond();
		if (ratio > 1.0)
		{
			// More source is read than output.
			range.mEnd = range.mStart + (range.mEnd - range.mStart) * ratio;
		}
	}
	mSource->AccumulatePrefetchRequests(range, inType, inAccumulator);
}

void RealtimeAudioClipTrackItemRenderer::Reset()
{
	GeneratorWithInputs::Reset();
	mChain.RestartControlBlock();
	mPrerolled = false;
}

void RealtimeAudioClipTrackItemRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	ioVisitor.Visit(mSource);
	mChain.VisitNodes(ioVisitor);
}

} // namespace SN
