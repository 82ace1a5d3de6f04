#include "stretch/omega/SpliceEngine.h"

#include "stretch/omega/SincTable.h"
#include "stretch/omega/SpliceSearch.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace dsp::stretch::omega
{

namespace
{

constexpr float kDefaultReach = 37.0f;
// What is compared, in milliseconds, where accuracy is preferred to time.
constexpr double kAccurateWindow = 60.0;
// Beyond this many source samples for a middle one, the history is not made longer: stretches then get off their
// place more than elsewhere, and are brought back when the history ends.
constexpr double kLargestStretch = 16.0;

unsigned ToSamples(double inSampleRate, double inMilliseconds)
{
	return static_cast<unsigned>(std::lround(inSampleRate * inMilliseconds / 1000.0));
}

double ToFactor(float inSemitones)
{
	return zorvcore::math::Exp2(static_cast<double>(inSemitones) / 12.0);
}

// A fade's rise from 0 to 1, at 4096 points.
std::array<float, 4096> MakeFade()
{
	std::array<float, 4096> fade{};
	for (unsigned i = 0; i < fade.size(); ++i)
	{
		double const sine =
			zorvcore::math::Sin((i + 0.5) / static_cast<double>(fade.size()) * std::numbers::pi / 2.0);
		fade[i] = static_cast<float>(sine * sine);
	}
	return fade;
}

std::array<float, 4096> const& GetFade()
{
	static std::array<float, 4096> const sFade = MakeFade();
	return sFade;
}

} // namespace

SpliceEngine::SpliceEngine(
	double inSampleRate, unsigned inNumChannels, unsigned inBlockSize, OmegaLimits const& inLimits)
	: mSampleRate(inSampleRate),
	  mNumChannels(inNumChannels),
	  mBlockSize(inBlockSize),
	  mLimits(inLimits)
{
	SincTable::ForPlaces();
	SincTable::ForRates();
	GetFade();
	SetReach(kDefaultReach);
	double const fastest = 1.0 / static_cast<double>(mLimits.mMinRatio);
	double const lowest = std::min(1.0, ToFactor(mLimits.mMinSemitones));
	double const highest = std::max(1.0, ToFactor(mLimits.mMaxSemitones));
	mSlack = static_cast<unsigned>((SincTable::ForRates().GetHalfWidth() + 4) * fastest / lowest) + 8;
	InitTones();
	unsigned const reach = mLengths.mOff + mLengths.mSearch + SpliceSearch::kMargin;
	unsigned const aheadOfSplices =
		reach + ToSamples(mSampleRate, kAccurateWindow) + 32 + 2 * mLengths.mLongestFade + 2 * kStep + kTaps;
	double const aheadOfTones =
		0.5 * mTones.GetFrameSize() * (std::min(fastest / lowest, kFastestTones) + 1.0) + mSampleRate / 400.0;
	mLookAhead = std::max(aheadOfSplices, static_cast<unsigned>(aheadOfTones) + 3) + mSlack;
	double const stretch = std::min(fastest / lowest, kLargestStretch);
	unsigned const behind =
		reach + std::max(mTones.GetFrameSize() + kTaps,
					static_cast<unsigned>(
						stretch * (mLengths.mLongFade + kStep + mLengths.mAttack) + mLengths.mLongestFade));
	// A block's input is there as a whole before any of it is played.
	auto const block = static_cast<unsigned>(std::ceil(mBlockSize * fastest));
	unsigned const keep = (mLookAhead + mSlack + behind + block + 63) / 64 * 64;
	unsigned const input = GetInputForBlock(mBlockSize, mLimits.mMinRatio);
	mSource.Init(mNumChannels, keep, input);
	mSound.Init(1, keep, input);
	mCoarse.Init(1, keep / SpliceSearch::GetDecimation(mSampleRate), 1);
	auto const middle = static_cast<unsigned>(mBlockSize * highest);
	auto const filter = static_cast<unsigned>(SincTable::ForRates().GetHalfWidth() * highest) + 4;
	mMiddle.Init(mNumChannels, middle + 2 * filter + kStep, kStep);
	mOnsets.Init(mSampleRate);
	SetSourceRemaining(0);
}

void SpliceEngine::InitTones()
{
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		// Unequal, so that a sound of opposite phase in two channels does not vanish from the sum.
		mChannelWeights.push_back(1.0f / (1.0f + 0.25f * static_cast<float>(channel % 7)));
	}
	mTones.Init(mSampleRate, mChannelWeights);
	mToneSound.Init(1, mTones.GetFrameSize(), mTones.GetFrameSize());
	mToneCoarse.Init(1, mTones.GetFrameSize(), 1);
}

void SpliceEngine::SetReach(float inMilliseconds)
{
	float const reach = inMilliseconds > 10.0f ? std::min(inMilliseconds, kDefaultReach) : 10.0f;
	mMayPlayTones = reach >= 30.0f;
	mLengths.mSearch = ToSamples(mSampleRate, 10.0 * static_cast<double>(reach / kDefaultReach));
	mLengths.mOff = ToSamples(mSampleRate, 25.0 * static_cast<double>(reach / kDefaultReach));
	mLengths.mStep = std::clamp(ToSamples(mSampleRate, 4.0 / 3.0), 8u, kStep);
	mLengths.mLeast = std::max(2u, ToSamples(mSampleRate, 2.5));
	mLengths.mWindow =
		(ToSamples(mSampleRate, mSettings.mPreferAccuracy ? kAccurateWindow : 22.0) / 32 + 1) * 32;
	mLengths.mFade = std::max(mLengths.mStep, ToSamples(mSampleRate, 8.0));
	mLengths.mLongFade = std::max(mLengths.mStep, ToSamples(mSampleRate, 30.0));
	mLengths.mLongestFade = std::max(mLengths.mStep, ToSamples(mSampleRate, 80.0));
	mLengths.mOnsetFade = ToSamples(mSampleRate, 5.0);
	mLengths.mGuard = ToSamples(mSampleRate, 0.7);
	mLengths.mAttack = ToSamples(mSampleRate, 8.0);
}

void SpliceEngine::SetRatio(float inStartRatio, float inEndRatio)
{
	float const ratio = std::clamp(0.5f * (inStartRatio + inEndRatio), mLimits.mMinRatio, mLimits.mMaxRatio);
	if (std::isnan(ratio) || ratio == mRatio)
	{
		return;
	}
	mRatio = ratio;
	Anchor();
}

void SpliceEngine::SetPitch(float inStartSemitones, float inEndSemitones)
{
	float const pitch =
		std::clamp(0.5f * (inStartSemitones + inEndSemitones), mLimits.mMinSemitones, mLimits.mMaxSemitones);
	if (std::isnan(pitch) || pitch == mSemitones)
	{
		return;
	}
	mSemitones = pitch;
	Anchor();
}

// Both clocks go on from here at the ratio and pitch that are set.
void SpliceEngine::Anchor()
{
	mAnchorSource += static_cast<double>(mOutput - mAnchorOutput) * mAdvance;
	mAnchorMiddle = MiddleAt(mOutput);
	mAnchorOutput = mOutput;
	mAdvance = 1.0 / static_cast<double>(mRatio);
	mPitch = mSemitones == 0.0f ? 1.0 : ToFactor(mSemitones);
	// Semitones in single precision are good for six digits: a tape's pitch is made exactly that.
	if (std::fabs(mAdvance / mPitch - 1.0) < 1e-5)
	{
		mPitch = mAdvance;
	}
	mStretch = mAdvance / mPitch;
}

double SpliceEngine::IdealAt(std::int64_t inMiddle) const
{
	return mAnchorSource + (static_cast<double>(inMiddle) - mAnchorMiddle) * mStretch;
}

double SpliceEngine::MiddleAt(std::int64_t inOutput) const
{
	return mAnchorMiddle + static_cast<double>(inOutput - mAnchorOutput) * mPitch;
}

// How many middle samples the conversion reads on either side.
std::int64_t SpliceEngine::FilterReach() const
{
	return static_cast<std::int64_t>(
			   std::ceil(SincTable::ForRates().GetHalfWidth() * std::max(1.0, mPitch))) +
		   1;
}

std::int64_t SpliceEngine::MiddleEndFor(std::int64_t inOutput) const
{
	return static_cast<std::int64_t>(std::floor(MiddleAt(inOutput))) + FilterReach();
}

unsigned SpliceEngine::GetInputForBlock(unsigned inBlockSize, float inRatio) const
{
	double const ratio = static_cast<double>(inRatio >= mLimits.mMinRatio ? inRatio : mLimits.mMinRatio);
	double const input = std::ceil(inBlockSize / ratio) + mLookAhead + mSlack + 4;
	return static_cast<unsigned>(std::min(input, 4294967295.0));
}

unsigned SpliceEngine::GetInputNeeded(unsigned inNumOutput) const
{
	if (inNumOutput == 0)
	{
		return 0;
	}
	double const ideal = IdealAt(MiddleEndFor(mOutput + inNumOutput));
	std::int64_t const end = static_cast<std::int64_t>(std::ceil(ideal)) + mLookAhead;
	return static_cast<unsigned>(std::clamp<std::int64_t>(end - mSource.GetEnd(), 0, UINT32_MAX));
}

void SpliceEngine::Begin(float, StreamSettings const* inSettings, unsigned inNumInput)
{
	mSettings = inSettings ? *inSettings : StreamSettings{};
	SetReach(mSettings.mReach);
	SetSourceRemaining(inNumInput);
}

void SpliceEngine::SetSourceRemaining(unsigned)
{
	mOutput = 0;
	mAnchorOutput = 0;
	mAnchorSource = 0.0;
	mAnchorMiddle = 0.0;
	mSource.Reset();
	mSound.Reset();
	mCoarse.Reset();
	mMiddle.Reset();
	mOnsets.Reset(mSettings.mOnsetSensitivity);
	mSegment = Segment{};
	mFadeLength = 0;
	mToneFrames = 0;
	mToneRetry = 0;
	Anchor();
}

void SpliceEngine::Process(unsigned inNumOutput, float const* const* inInputs, float* const* outOutputs)
{
	unsigned const numOutput = std::min(inNumOutput, GetOutputLimit());
	if (numOutput == 0)
	{
		return;
	}
	TakeInput(inInputs, GetInputNeeded(numOutput));
	MakeMiddle(MiddleEndFor(mOutput + numOutput));
	Convert(numOutput, outOutputs);
	mOutput += numOutput;
}

void SpliceEngine::TakeInput(float const* const* inInputs, unsigned inNumInput)
{
	mSource.Append(inInputs, inNumInput);
	std::int64_t const start = mSound.GetEnd();
	mSound.Extend(inNumInput);
	float* const sound = mSound.At(0, start);
	std::fill_n(sound, inNumInput, 0.0f);
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		float const weight = mChannelWeights[channel];
		float const* const input = inInputs[channel];
		for (unsigned i = 0; i < inNumInput; ++i)
		{
			sound[i] += weight * input[i];
		}
	}
	mOnsets.Append(sound, inNumInput);
	SpliceSearch::Decimate(mSound, SpliceSearch::GetDecimation(mSampleRate), mCoarse);
}

void SpliceEngine::MakeMiddle(std::int64_t inEnd)
{
	while (mMiddle.GetEnd() < inEnd)
	{
		std::int64_t const position = mMiddle.GetEnd();
		if (mFadeLength == 0 && AreTonesPlaying() && position == mToneHopEnd)
		{
			ContinueTones();
		}
		else if (mFadeLength == 0 && !AreTonesPlaying() && position % mLengths.mStep == 0)
		{
			Decide();
		}
		std::int64_t count =
			std::min<std::int64_t>(inEnd - position, mLengths.mStep - position % mLengths.mStep);
		if (mFadeLength != 0)
		{
			count = std::min<std::int64_t>(count, mFadeLength - mFaded);
		}
		else if (AreTonesPlaying())
		{
			count = std::min(count, mToneHopEnd - position);
		}
		Render(static_cast<unsigned>(count));
	}
}

// By how much both stretches are heard, so that power stays.
void SpliceEngine::FillGains(unsigned inCount, float* outGains, float* outFormerGains) const
{
	auto const difference = static_cast<float>(1.0 - mFadeSimilarity);
	if (mFadeSimilarity > kAlike)
	{
		// At a difference of 0.05, a straight line is within 0.1 % of the root.
		auto const length = static_cast<float>(mFadeLength);
		for (unsigned i = 0; i < inCount; ++i)
		{
			float const rise = (static_cast<float>(static_cast<int>(mFaded + i)) + 0.5f) / length;
			float const scale = 1.0f + rise * (1.0f - rise) * difference;
			outGains[i] = rise * scale;
			outFormerGains[i] = (1.0f - rise) * scale;
		}
		return;
	}
	for (unsigned i = 0; i < inCount; ++i)
	{
		float const rise = GetFade()[(2ull * (mFaded + i) + 1) * 2048 / mFadeLength];
		float const scale = 1.0f / std::sqrt(1.0f - 2.0f * rise * (1.0f - rise) * difference);
		outGains[i] = rise * scale;
		outFormerGains[i] = (1.0f - rise) * scale;
	}
}

void SpliceEngine::Render(unsigned inCount)
{
	if (!IsToneComplete() || mFadeLength != 0)
	{
		KeepWithinHistory(mSegment, inCount);
	}
	if (mFadeLength != 0)
	{
		KeepWithinHistory(mNext, inCount);
	}
	mMiddle.Extend(inCount);
	std::array<float, kStep> gains;
	std::array<float, kStep> formerGains;
	if (mFadeLength != 0)
	{
		FillGains(inCount, gains.data(), formerGains.data());
	}
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		float* const middle = mMiddle.At(channel, mMiddle.GetEnd() - inCount);
		ReadPresent(channel, inCount, middle);
		if (mFadeLength != 0)
		{
			std::array<float, kStep> samples;
			ReadSegment(mNext, channel, inCount, samples.data());
			for (unsigned i = 0; i < inCount; ++i)
			{
				middle[i] = middle[i] * formerGains[i] + samples[i] * gains[i];
			}
		}
	}
	if (mFadeLength == 0)
	{
		return;
	}
	mFaded += inCount;
	if (mFaded == mFadeLength)
	{
		mSegment = mNext;
		mFadeLength = 0;
		mToneFrames = 0;
	}
}

// What is played now, without what a fade leads to. This and the next one are called after the middle has been made
// longer by inCount.
void SpliceEngine::ReadPresent(unsigned inChannel, unsigned inCount, float* outSamples) const
{
	if (!IsToneComplete() || mFadeLength != 0)
	{
		ReadSegment(mSegment, inChannel, inCount, outSamples);
	}
	if (AreTonesPlaying())
	{
		MixTones(inChannel, inCount, outSamples);
	}
}

void SpliceEngine::ReadSegment(
	Segment const& inSegment, unsigned inChannel, unsigned inCount, float* outSamples) const
{
	std::int64_t const position = mMiddle.GetEnd() - inCount + inSegment.mOffset;
	ReadStretch(inSegment, mSource, inChannel, position, inCount, outSamples);
}

// From inPosition of the source on.
void SpliceEngine::ReadStretch(Segment const& inSegment, SampleHistory const& inSource, unsigned inChannel,
	std::int64_t inPosition, unsigned inCount, float* outSamples)
{
	if (inSegment.mFraction == 0.0)
	{
		std::copy_n(inSource.At(inChannel, inPosition), inCount, outSamples);
		return;
	}
	zorvaccelerate::utility::Convolve(
		inCount, inSource.At(inChannel, inPosition - kTapsBefore), kTaps, inSegment.mTaps.data(), outSamples);
}

// Brings a stretch back to its place that has got so far off it that its samples are not kept.
void SpliceEngine::KeepWithinHistory(Segment& ioSegment, unsigned inCount) const
{
	std::int64_t const position = mMiddle.GetEnd() + ioSegment.mOffset;
	std::int64_t const lowest = mSource.GetStart() + kTaps;
	std::int64_t const highest = mSource.GetEnd() - inCount - kTaps;
	if (position < lowest || position > highest)
	{
		auto const ideal = static_cast<std::int64_t>(std::llround(IdealAt(mMiddle.GetEnd())));
		ioSegment = Segment{};
		ioSegment.mOffset = std::clamp(ideal, lowest, highest) - mMiddle.GetEnd();
	}
}

void SpliceEngine::Convert(unsigned inNumOutput, float* const* outOutputs) const
{
	double const start = MiddleAt(mOutput);
	double const whole = std::floor(start);
	if (mPitch == 1.0 && whole == start)
	{
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			std::copy_n(
				mMiddle.At(channel, static_cast<std::int64_t>(whole)), inNumOutput, outOutputs[channel]);
		}
		return;
	}
	for (unsigned i = 0; i < inNumOutput; ++i)
	{
		ConvertSample(MiddleAt(mOutput + i), i, outOutputs);
	}
}

// One output at a place of the middle, by a filter that is stretched when the rate falls.
void SpliceEngine::ConvertSample(double inPlace, unsigned inIndex, float* const* outOutputs) const
{
	// The filter is worked out in parts of this.
	constexpr unsigned kPart = 64;
	SincTable const& table = SincTable::ForRates();
	double const scale = 1.0 / std::max(1.0, mPitch);
	std::int64_t const reach = FilterReach() - 1;
	auto const middle = static_cast<std::int64_t>(std::floor(inPlace));
	std::array<double, AudioBuffer::kMaxChannels> sums{};
	std::array<float, kPart> taps;
	for (std::int64_t first = middle - reach + 1; first <= middle + reach; first += kPart)
	{
		auto const count = static_cast<unsigned>(std::min<std::int64_t>(kPart, middle + reach - first + 1));
		for (unsigned k = 0; k < count; ++k)
		{
			taps[k] = table.Get((static_cast<double>(first + k) - inPlace) * scale);
		}
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			float const* const samples = mMiddle.At(channel, first);
			double sum = 0.0;
			for (unsigned k = 0; k < count; ++k)
			{
				sum += static_cast<double>(taps[k]) * static_cast<double>(samples[k]);
			}
			sums[channel] += sum;
		}
	}
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		outOutputs[channel][inIndex] = static_cast<float>(sums[channel] * scale);
	}
}

} // namespace dsp::stretch::omega
