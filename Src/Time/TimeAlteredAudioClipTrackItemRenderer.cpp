#include "Time/TimeAlteredAudioClipTrackItemRenderer.h"

#include "AudioRender/Core/FillUp.h"
#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Sonaro/AudioResamplerFactory.h"
#include "Sonaro/AudioUtilities.h"
#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"

#include <algorithm>
#include <cmath>

namespace SN
{

namespace
{

// Above this speed the resampler is the windowed sinc, which is not made for slower ones.
constexpr double kSlowestSincSpeed = 0.04;
constexpr double kFastestLongFilterSpeed = 100.0;

// By how much a later block's reading may exceed that of the first one: a resampler's place between two samples.
constexpr unsigned kLargestPhase = 64;
// Beyond it, a clip would take more memory than its audio: such a speed grows the buffer while it plays.
constexpr unsigned kLargestScratch = 1u << 23;

constexpr unsigned kScalerFFTSize = 2048;
// Windows of twice the size of the transform, less one sample.
constexpr unsigned kScalerWindowMode = 1;

// Ticks are cut off, not rounded. No rate for a speed of 0.
FrameRate GetRateAtSpeed(FrameRate const& inRate, double inSpeed)
{
	double const samplesPerSecond = inRate.GetSamplesPerSecond() * inSpeed;
	double const ticks = static_cast<double>(zorvmediatypes::kTicksPerSecond) / samplesPerSecond;
	return samplesPerSecond == 0.0 || !(std::abs(ticks) < 0x1p63)
			   ? FrameRate()
			   : FrameRate(static_cast<std::int64_t>(ticks));
}

// A buffer for so many samples, silent.
dsp::AudioBuffer& PrepareScratch(dsp::AudioBuffer& ioBuffer, unsigned inSamples)
{
	if (ioBuffer.GetCapacity() < inSamples)
	{
		// Only for requests longer than the largest block and for speeds far from 1.
		ioBuffer.Init(ioBuffer.GetNumChannels(), inSamples);
	}
	ioBuffer.SetUseSize(inSamples);
	ioBuffer.Zero();
	return ioBuffer;
}

// Channels that the item does not have are silent, whatever a resampler makes of their flags.
void MarkSilentFrom(unsigned long long inFirstChannel, dsp::AudioBuffer& outBuffer)
{
	for (unsigned long long channel = inFirstChannel; channel < outBuffer.GetNumChannels(); ++channel)
	{
		outBuffer.MarkChannelSilent(channel);
	}
}

} // namespace

int TimeAlteredAudioClipTrackItemRenderer::InitFrom(TimeAlteredAudioClipTrackItemSettings const& inSettings)
{
	int const result = AudioRenderContextClient::Init(inSettings.mContext, inSettings.mFrameRate);
	if (!ResultSucceeded(result))
	{
		return result;
	}
	mRelativeSpeed = inSettings.mSpeed / inSettings.mScalerSpeed;
	if (!std::isfinite(mRelativeSpeed))
	{
		return eInvalidArgument;
	}
	mGenerator = inSettings.mGenerator;
	mChain.Init(inSettings.mProcessors, inSettings.mPanProcessor);
	mSpeed = inSettings.mSpeed;
	mScalerSpeed = inSettings.mScalerSpeed;
	mMaintainPitch = inSettings.mMaintainPitch;
	mReverse = inSettings.mReverse;
	mResampleBeforeScaling = mMaintainPitch && mSpeed != mScalerSpeed;
	mQuality = inSettings.mContext->GetRenderQuality();
	mTimeOffset = inSettings.mTimeOffset;
	mSecondTimeOffset = inSettings.mSecondTimeOffset;
	mItemStartTime = inSettings.mItemStartTime;
	mItemEndTime = inSettings.mItemEndTime;
	MakeConverters();
	return result;
}

void TimeAlteredAudioClipTrackItemRenderer::MakeConverters()
{
	mContentFrameRate = GetRateAtSpeed(GetFrameRate(), mRelativeSpeed);
	if (mMaintainPitch)
	{
		mTimeScaler = GetAudioTimeScalerFactory()->CreateAudioTimeScaler(mQuality);
	}
	if (!mMaintainPitch || mResampleBeforeScaling)
	{
		mResampler = AudioResamplerFactory::CreateAudioResampler(
			mSpeed > kSlowestSincSpeed ? RenderQuality::kHigh : RenderQuality::kMedium);
	}
	InitConverters();
	ReserveScratch();
}

// Also puts all positions back to the item's beginning.
void TimeAlteredAudioClipTrackItemRenderer::InitConverters()
{
	if (mTimeScaler)
	{
		mTimeScaler->Init(
			1.0 / mScalerSpeed, GetFrameRate(), GetNumChannels(), 1.0, kScalerFFTSize, kScalerWindowMode);
	}
	if (mResampler)
	{
		InitResampler(*mResampler);
	}
	mSourcePosition = mReverse ? (mItemEndTime - mItemStartTime) * mRelativeSpeed : kTimeZero;
	mClipPosition = mSourcePosition;
	mMediaOffset = kTimeZero;
	mChain.RestartControlBlock();
}

void TimeAlteredAudioClipTrackItemRenderer::InitResampler(IAudioResampler& ioResampler) const
{
	bool const longFilter =
		mSpeed > kSlowestSincSpeed && mSpeed <= kFastestLongFilterSpeed && !mMaintainPitch;
	double const speed = mResampleBeforeScaling ? mRelativeSpeed : mSpeed;
	ioResampler.Init(GetRateAtSpeed(GetFrameRate(), speed), GetFrameRate(),
		mChain.GetPanProcessor()->GetNumOutputChannels(), longFilter);
}

unsigned TimeAlteredAudioClipTrackItemRenderer::GetMaxScalerInput() const
{
	// Which of its two leads a scaler reads depends on the side of 1 on which its ratio lies.
	unsigned const block = GetMaxBlockSize();
	double const ratio = std::min(mTimeScaler->GetRatio(), 1.0);
	return std::max({block, mTimeScaler->GetMaxInputSampleCount(block, 0.0),
		mTimeScaler->GetMaxInputSampleCount(block, ratio)});
}

unsigned TimeAlteredAudioClipTrackItemRenderer::GetMaxFetch() const
{
	unsigned const scaled = mTimeScaler ? GetMaxScalerInput() : GetMaxBlockSize();
	if (!mResampler)
	{
		return scaled;
	}
	// A resampler reads most for its first block, and to ask changes it: another one is asked.
	auto const probe = AudioResamplerFactory::CreateAudioResampler(
		mSpeed > kSlowestSincSpeed ? RenderQuality::kHigh : RenderQuality::kMedium);
	InitResampler(*probe);
	unsigned const first = probe->GetInputSampleCount(scaled);
	return first + std::min(kLargestPhase, ~first);
}

void TimeAlteredAudioClipTrackItemRenderer::ReserveScratch()
{
	unsigned const samples = std::clamp(GetMaxFetch(), GetMaxResampleBufferSize(), kLargestScratch);
	IAudioPanProcessor& panner = *mChain.GetPanProcessor();
	ReserveStackAudioBuffer(panner.GetNumInputChannels(), samples,
		StackAudioBufferTags::kTimeAlteredAudioClipTrackItemRendererResampler);
	ReserveStackAudioBuffer(panner.GetNumOutputChannels(), samples,
		StackAudioBufferTags::kTimeAlteredAudioClipTrackItemRendererPan);
	if (mTimeScaler)
	{
		mScalerInput.Init(panner.GetNumOutputChannels(), GetMaxScalerInput());
	}
}

InterfaceRef<IAudioGenerator> TimeAlteredAudioClipTrackItemRenderer::Clone()
{
	auto const clone = StartClone(*this);
	clone->CopyTimesFrom(*this);
	clone->mSpeed = mSpeed;
	clone->mScalerSpeed = mScalerSpeed;
	clone->mRelativeSpeed = mRelativeSpeed;
	clone->mMaintainPitch = mMaintainPitch;
	clone->mReverse = mReverse;
	clone->mResampleBeforeScaling = mResampleBeforeScaling;
	clone->mQuality = mQuality;
	clone->mTimeOffset = mTimeOffset;
	clone->mSecondTimeOffset = mSecondTimeOffset;
	clone->mItemStartTime = mItemStartTime;
	clone->mItemEndTime = mItemEndTime;
	clone->mGenerator = mGenerator->Clone();
	clone->mChain.CloneFrom(mChain, *this);
	clone->MakeConverters();
	return clone;
}

void TimeAlteredAudioClipTrackItemRenderer::GetAudioData(
	TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	// What nothing writes is silent.
	ioBuffer.Zero();
	unsigned const count = ioBuffer.GetUseSize();
	if (count == 0)
	{
		return;
	}
	TickTime const time = inTime + mTimeOffset;
	if (time < kTimeZero && mMediaOffset == kTimeZero)
	{
		mMediaOffset = mReverse ? -(time * mSpeed) : time * mSpeed;
	}
	unsigned const scaled = mTimeScaler ? mTimeScaler->GetInputSampleCount(count) : count;
	unsigned const fetch = mResampler ? mResampler->GetInputSampleCount(scaled) : scaled;
	ScopedStackAudioBuffer const readScratch(
		GetStackAudioBuffer(mChain.GetPanProcessor()->GetNumInputChannels(),
			StackAudioBufferTags::kTimeAlteredAudioClipTrackItemRendererResampler));
	ScopedStackAudioBuffer const panScratch(GetStackAudioBuffer(
		GetNumChannels(), StackAudioBufferTags::kTimeAlteredAudioClipTrackItemRendererPan));
	dsp::AudioBuffer& source = PrepareScratch(readScratch.GetBuffer(), fetch);
	if (mReverse)
	{
		MovePositions(-static_cast<long long>(fetch));
	}
	ReadSource(source, fetch);
	if (mReverse != inReverse)
	{
		source.Reverse();
	}
	bool const panAlters = !mChain.GetPanProcessor()->DoesNotAlterAudio();
	dsp::AudioBuffer* const panned = panAlters ? &PrepareScratch(panScratch.GetBuffer(), fetch) : nullptr;
	RunChain(source, panned, inReverse);
	Convert(panned ? *panned : source, ioBuffer, scaled);
	if (!mReverse)
	{
		MovePositions(fetch);
	}
}

void TimeAlteredAudioClipTrackItemRenderer::ReadSource(dsp::AudioBuffer& outSource, unsigned inCount)
{
	if (mSourcePosition >= kTimeZero || !mReverse)
	{
		ReadPieces(outSource, 0, mSourcePosition + mMediaOffset);
		return;
	}
	// What would lie before the clip's beginning is not read and stays silent.
	long long const before = (-mSourcePosition).ToFrame64(GetFrameRate());
	if (before < inCount)
	{
		ReadPieces(outSource, static_cast<unsigned>(before), kTimeZero);
	}
}

void TimeAlteredAudioClipTrackItemRenderer::ReadPieces(
	dsp::AudioBuffer& outSource, unsigned inOffset, TickTime inPosition)
{
	dsp::AudioSubBuffer window;
	window.Init(outSource.GetNumChannels());
	for (unsigned done = inOffset; done < outSource.GetUseSize();)
	{
		window.Assign(outSource, done);
		unsigned const piece = std::min(window.GetUseSize(), std::max(GetMaxBlockSize(), 1u));
		window.SetUseSize(piece);
		mGenerator->GetAudioData(inPosition, window, false);
		FillUp(window, piece);
		inPosition.AddFrames(piece, GetFrameRate());
		done += piece;
	}
}

void TimeAlteredAudioClipTrackItemRenderer::RunChain(
	dsp::AudioBuffer& ioSource, dsp::AudioBuffer* outPan, bool inReverse)
{
	dsp::AudioSubBuffer window;
	window.Init(ioSource.GetNumChannels());
	window.Assign(ioSource, 0);
	dsp::AudioSubBuffer panOutput;
	if (outPan)
	{
		panOutput.Init(outPan->GetNumChannels());
		panOutput.Assign(*outPan, 0);
	}
	mChain.Run({window, outPan ? &panOutput : nullptr, mSecondTimeOffset + mClipPosition + mMediaOffset,
				   mContentFrameRate, inReverse},
		*this,
		{.mSkipsLatentProcessors = IsDelayCompensationDisabled(),
			.mAlwaysCuts = true,
			.mMaxPiece = std::max(GetMaxBlockSize(), 1u)});
}

void TimeAlteredAudioClipTrackItemRenderer::Convert(
	dsp::AudioBuffer& ioChained, dsp::AudioBuffer& outBuffer, unsigned inScaled)
{
	unsigned const fetched = ioChained.GetUseSize();
	if (fetched == 0)
	{
		// The outputs lie in what the converters still hold, which no flag of an empty block may hide.
		ioChained.ClearSilenceFlags(dsp::SilenceFlags::All());
	}
	if (!mTimeScaler)
	{
		mResampler->Process(ioChained, outBuffer, fetched, outBuffer.GetUseSize());
		MarkSilentFrom(ioChained.GetNumChannels(), outBuffer);
		return;
	}
	dsp::AudioBuffer& input = mResampler ? PrepareScratch(mScalerInput, inScaled) : ioChained;
	if (mResampler)
	{
		mResampler->Process(ioChained, input, fetched, inScaled);
	}
	// A scaler leaves out what is flagged, and what comes after it would then be heard too early.
	dsp::ZeroBufferAccordingToSilenceFlags(input);
	input.ClearSilenceFlags(dsp::SilenceFlags::All());
	mTimeScaler->Process(input, outBuffer, inScaled, outBuffer.GetUseSize());
}

void TimeAlteredAudioClipTrackItemRenderer::MovePositions(long long inFetched)
{
	mSourcePosition.AddFrames(inFetched, GetFrameRate());
	mClipPosition.AddFrames(
		static_cast<long long>(static_cast<double>(inFetched) / mRelativeSpeed), GetFrameRate());
}

void TimeAlteredAudioClipTrackItemRenderer::Preroll(TickTime const& inStartTime, bool inReverse)
{
	mGenerator->Preroll(inStartTime, inReverse);
	mChain.Preroll(inStartTime, inReverse);
}

void TimeAlteredAudioClipTrackItemRenderer::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	if (inForceCompletion && !IsDelayCompensationDisabled())
	{
		mGenerator->FillInitialDelay(inStartTime, inDelayTime, inReverse, true);
	}
}

void TimeAlteredAudioClipTrackItemRenderer::Reset()
{
	GeneratorWithInputs::Reset();
	if (mTimeScaler)
	{
		mTimeScaler->Reset();
	}
	if (mResampler)
	{
		mResampler->Reset();
	}
	InitConverters();
}

void TimeAlteredAudioClipTrackItemRenderer::VisitNodes(NodeVisitor& ioVisitor)
{
	ioVisitor.Visit(mGenerator);
	mChain.VisitNodes(ioVisitor);
}

} // namespace SN
