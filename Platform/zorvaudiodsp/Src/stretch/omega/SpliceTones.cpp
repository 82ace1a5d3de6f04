#include "stretch/omega/SpliceEngine.h"
#include "stretch/omega/SpliceSearch.h"

#include <algorithm>
#include <cmath>

namespace dsp::stretch::omega
{

// Notes that have no period in common are detuned by splices. Where they are steady, frames play them.
bool SpliceEngine::StartTones(Moment const& inMoment)
{
	std::int64_t const middle = mMiddle.GetEnd();
	if (!mMayPlayTones || middle < mToneRetry)
	{
		return false;
	}
	mToneRetry = middle + static_cast<std::int64_t>(mSampleRate / 10.0);
	unsigned const hop = mTones.GetHop();
	std::int64_t const start = inMoment.mPlace - hop;
	std::int64_t const place = FindTonePlace();
	double const off = static_cast<double>(inMoment.mPlace) - inMoment.mIdeal;
	bool const isKept = std::fabs(off) <= mLengths.mOff + mLengths.mSearch;
	// Until frames are complete, the stretch that is played now is heard.
	if (!isKept || place == kNoTonePlace || !IsFreeOfOnsets(start, inMoment.mPlace + 3 * hop))
	{
		return false;
	}
	mToneSound.Reset();
	mToneSound.Extend(mTones.GetFrameSize());
	ReadStretch(mSegment, mSound, 0, start, mTones.GetFrameSize(), mToneSound.At(0, 0));
	mTones.Begin(mToneSound.At(0, 0));
	if (!mTones.AddFrame(mSource, mSound, place))
	{
		return false;
	}
	mToneFrames = 1;
	mToneHopEnd = middle + hop;
	return true;
}

// Where the middle of the frame that begins now lies in the source, somewhat early where the source is not there yet.
std::int64_t SpliceEngine::FindTonePlace() const
{
	std::int64_t const middle = mMiddle.GetEnd();
	std::int64_t const half = mTones.GetFrameSize() / 2;
	auto const ideal = static_cast<std::int64_t>(std::floor(IdealAt(middle + half)));
	std::int64_t const place = std::min(ideal, GetHorizon() - half);
	bool const isNear = ideal - place <= mLengths.mOff;
	bool const isFree = IsFreeOfOnsets(place - half - mTones.GetHop(), place + half);
	return isNear && isFree ? place : kNoTonePlace;
}

bool SpliceEngine::IsFreeOfOnsets(std::int64_t inStart, std::int64_t inEnd) const
{
	return mOnsets.FindAfter(inStart - mLengths.mGuard) > inEnd;
}

void SpliceEngine::ContinueTones()
{
	mTones.Advance();
	mToneHopEnd += mTones.GetHop();
	std::int64_t const place = mStretch == 1.0 ? kNoTonePlace : FindTonePlace();
	if (place != kNoTonePlace && mTones.AddFrame(mSource, mSound, place))
	{
		++mToneFrames;
		return;
	}
	if (IsToneComplete())
	{
		mSegment = Segment{};
		mSegment.mOffset = static_cast<std::int64_t>(IdealAt(mMiddle.GetEnd())) - mMiddle.GetEnd();
	}
	Moment const moment = LookAhead();
	double length = std::min(mLengths.mLongFade, mTones.GetHop());
	if (moment.mOnset != OnsetDetector::kNone)
	{
		length = std::clamp<double>(TimeUntilOnsetFade(moment), mLengths.mStep, length);
	}
	LeaveTones(moment, length);
}

void SpliceEngine::LeaveTones(Moment const& inMoment, double inLength)
{
	mToneRetry = mMiddle.GetEnd() + static_cast<std::int64_t>(mSampleRate / 10.0);
	if (!IsToneComplete())
	{
		// What was played before is still heard, and has the same phases.
		StartFade(-mSegment.mFraction, 1.0, inLength);
		mNext = mSegment;
		return;
	}
	SpliceMatch const match = FindAfterTones(inMoment);
	StartFade(match.mDistance, match.mSimilarity, inLength);
	mSegment = mNext;
}

// Compares the source with what the frames go on with.
SpliceMatch SpliceEngine::FindAfterTones(Moment const& inMoment)
{
	unsigned const decimation = SpliceSearch::GetDecimation(mSampleRate);
	SumTones();
	mToneCoarse.Reset();
	SpliceSearch::Decimate(mToneSound, decimation, mToneCoarse);
	double const target = mStretch > 1.0 ? GetLimit() : -GetLimit();
	SpliceRange range;
	range.mSound = mToneSound.At(0, 0);
	range.mCoarse = mToneCoarse.At(0, 0);
	range.mFrom = static_cast<std::int64_t>(inMoment.mIdeal) / decimation * decimation;
	range.mWanted = std::max(
		static_cast<std::int64_t>(inMoment.mIdeal + target), inMoment.mLastOnset + mLengths.mGuard + 1);
	range.mNear = mLengths.mSearch;
	range.mLowest = std::max(range.mWanted - range.mNear, inMoment.mLastOnset + mLengths.mGuard + 1);
	range.mHighest = range.mWanted + range.mNear;
	range.mWindow = std::min(mLengths.mWindow, (mTones.GetHop() - 8 * decimation) / 32 * 32);
	range.mDecimation = decimation;
	mSegment = Segment{};
	mSegment.mOffset = range.mFrom - mMiddle.GetEnd();
	return SpliceSearch::Find(mSound, mCoarse, range, mSettings.mPreferAccuracy ? 4 : 2);
}

// The weighted sum of all channels, for a hop.
void SpliceEngine::SumTones()
{
	unsigned const hop = mTones.GetHop();
	mToneSound.Reset();
	mToneSound.Extend(hop);
	float* const sound = mToneSound.At(0, 0);
	std::fill_n(sound, hop, 0.0f);
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		float const* const samples = mTones.GetSamples(channel);
		for (unsigned i = 0; i < hop; ++i)
		{
			sound[i] += mChannelWeights[channel] * samples[i];
		}
	}
	for (unsigned i = 0; i < hop; ++i)
	{
		sound[i] /= std::max(mTones.GetCoverage()[i], 0.5f);
	}
}

// What the frames leave to the stretch before or after them, added to what they have.
void SpliceEngine::MixTones(unsigned inChannel, unsigned inCount, float* ioSamples) const
{
	auto const index = static_cast<std::size_t>(
		mMiddle.GetEnd() - inCount - (mToneHopEnd - static_cast<std::int64_t>(mTones.GetHop())));
	float const* const tones = mTones.GetSamples(inChannel) + index;
	if (IsToneComplete() && mFadeLength == 0)
	{
		std::copy_n(tones, inCount, ioSamples);
		return;
	}
	float const* const coverage = mTones.GetCoverage() + index;
	for (unsigned i = 0; i < inCount; ++i)
	{
		ioSamples[i] = ioSamples[i] * (1.0f - coverage[i]) + tones[i];
	}
}

} // namespace dsp::stretch::omega
