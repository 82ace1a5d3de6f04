#include "stretch/omega/RubberBandEngine.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace dsp::stretch::omega
{

namespace
{

using RubberBand::RubberBandStretcher;

// The longest window of the library and a few of its steps, in seconds.
constexpr double kLookAheadSeconds = 0.4;
// What the steps of the library leave undecided.
constexpr double kStepSeconds = 0.012;
// The time in which what is off is made good, about.
constexpr double kSteeringSeconds = 0.1;

} // namespace

RubberBandEngine::RubberBandEngine(
	double inSampleRate, unsigned inNumChannels, unsigned inBlockSize, OmegaLimits const& inLimits)
	: mSampleRate(inSampleRate),
	  mNumChannels(inNumChannels),
	  mBlockSize(inBlockSize),
	  mLimits(inLimits),
	  mLookAhead(static_cast<unsigned>(kLookAheadSeconds * inSampleRate)),
	  mStretcher(static_cast<std::size_t>(inSampleRate), inNumChannels,
		  RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFiner |
			  RubberBandStretcher::OptionPitchHighConsistency | RubberBandStretcher::OptionChannelsTogether),
	  mScratch(static_cast<std::size_t>(inNumChannels) * kStep),
	  mInputPointers(inNumChannels),
	  mOutputPointers(inNumChannels)
{
	mStretcher.setMaxProcessSize(kStep);
	unsigned const input = GetInputForBlock(mBlockSize, mLimits.mMinRatio);
	mQueue.Init(mNumChannels, mLookAhead + input, input);
}

void RubberBandEngine::SetRatio(float inStartRatio, float inEndRatio)
{
	float const ratio = 0.5f * (inStartRatio + inEndRatio);
	mRatio = std::isnan(ratio) ? mRatio : std::clamp(ratio, mLimits.mMinRatio, mLimits.mMaxRatio);
}

void RubberBandEngine::SetPitch(float inStartSemitones, float inEndSemitones)
{
	float const pitch = 0.5f * (inStartSemitones + inEndSemitones);
	mSemitones =
		std::isnan(pitch) ? mSemitones : std::clamp(pitch, mLimits.mMinSemitones, mLimits.mMaxSemitones);
}

unsigned RubberBandEngine::GetInputForBlock(unsigned inBlockSize, float inRatio) const
{
	double const ratio = static_cast<double>(inRatio >= mLimits.mMinRatio ? inRatio : mLimits.mMinRatio);
	return static_cast<unsigned>(std::min(std::ceil(inBlockSize / ratio) + mLookAhead + 2.0, 4294967295.0));
}

unsigned RubberBandEngine::GetInputNeeded(unsigned inNumOutput) const
{
	if (inNumOutput == 0)
	{
		return 0;
	}
	std::int64_t const end = static_cast<std::int64_t>(std::ceil(GetSourceAt(inNumOutput))) + mLookAhead;
	return static_cast<unsigned>(std::clamp<std::int64_t>(end - mQueue.GetEnd(), 0, UINT32_MAX));
}

void RubberBandEngine::Begin(float, StreamSettings const*, unsigned inNumInput)
{
	SetSourceRemaining(inNumInput);
}

void RubberBandEngine::SetSourceRemaining(unsigned)
{
	mQueue.Reset();
	mSourceDone = 0.0;
	mFed = 0;
	mIsStarted = false;
}

// The library's delay depends on the ratio and pitch that it starts with.
void RubberBandEngine::Start()
{
	mIsStarted = true;
	mStretcher.reset();
	mStretcher.setTimeRatio(static_cast<double>(mRatio));
	mStretcher.setPitchScale(zorvcore::math::Exp2(static_cast<double>(mSemitones) / 12.0));
	std::fill(mScratch.begin(), mScratch.end(), 0.0f);
	std::fill(mInputPointers.begin(), mInputPointers.end(), mScratch.data());
	mHalfWindow = mStretcher.getPreferredStartPad();
	for (std::size_t left = mHalfWindow; left > 0;)
	{
		std::size_t const count = std::min<std::size_t>(left, kStep);
		mStretcher.process(mInputPointers.data(), count, false);
		left -= count;
	}
	mDelay = mStretcher.getStartDelay();
}

// False when the queue is empty.
bool RubberBandEngine::FeedStep()
{
	std::int64_t const required =
		std::max<std::int64_t>(1, static_cast<std::int64_t>(mStretcher.getSamplesRequired()));
	std::int64_t const count = std::min({required, std::int64_t{kStep}, mQueue.GetEnd() - mFed});
	if (count <= 0)
	{
		return false;
	}
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		mInputPointers[channel] = mQueue.At(channel, mFed);
	}
	mStretcher.process(mInputPointers.data(), static_cast<std::size_t>(count), false);
	mFed += count;
	return true;
}

void RubberBandEngine::Process(unsigned inNumOutput, float const* const* inInputs, float* const* outOutputs)
{
	unsigned const numOutput = std::min(inNumOutput, GetOutputLimit());
	if (numOutput == 0)
	{
		return;
	}
	mQueue.Append(inInputs, GetInputNeeded(numOutput));
	if (!mIsStarted)
	{
		Start();
	}
	mStretcher.setPitchScale(zorvcore::math::Exp2(static_cast<double>(mSemitones) / 12.0));
	Steer();
	Retrieve(numOutput, outOutputs);
	mSourceDone = GetSourceAt(numOutput);
}

// Sets the ratio, higher where the library has got ahead of the source's place by more than its steps do, and lower
// where it lags. What it has got and not given yet is half a window of the source, and half a window of output, which
// it has made by the ratio before a change.
void RubberBandEngine::Steer()
{
	double const lead =
		static_cast<double>(mFed) - std::max(0, mStretcher.available()) * GetAdvance() - mSourceDone;
	double const usual = static_cast<double>(mHalfWindow) * (1.0 + GetAdvance()) - kStep / 2.0;
	double const seconds = mFed > 0 ? (lead - usual) / mSampleRate : 0.0;
	double const off = seconds - std::clamp(seconds, -kStepSeconds, kStepSeconds);
	mStretcher.setTimeRatio(static_cast<double>(mRatio) * std::clamp(1.0 + off / kSteeringSeconds, 0.7, 1.4));
}

void RubberBandEngine::Retrieve(unsigned inCount, float* const* outOutputs)
{
	unsigned done = 0;
	while (done < inCount)
	{
		auto const available = static_cast<std::size_t>(std::max(0, mStretcher.available()));
		if (available == 0)
		{
			if (!FeedStep())
			{
				break;
			}
			continue;
		}
		bool const isDelay = mDelay > 0;
		std::size_t const count = isDelay ? std::min({available, mDelay, std::size_t{kStep}})
										  : std::min<std::size_t>(available, inCount - done);
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			mOutputPointers[channel] =
				isDelay ? mScratch.data() + std::size_t{channel} * kStep : outOutputs[channel] + done;
		}
		std::size_t const retrieved = mStretcher.retrieve(mOutputPointers.data(), count);
		mDelay -= isDelay ? retrieved : 0;
		done += isDelay ? 0 : static_cast<unsigned>(retrieved);
	}
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		std::fill(outOutputs[channel] + done, outOutputs[channel] + inCount, 0.0f);
	}
}

} // namespace dsp::stretch::omega
