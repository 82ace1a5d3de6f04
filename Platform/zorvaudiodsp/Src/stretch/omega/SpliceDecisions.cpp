#include "stretch/omega/SincTable.h"
#include "stretch/omega/SpliceEngine.h"
#include "stretch/omega/SpliceSearch.h"

#include <algorithm>
#include <cmath>

namespace dsp::stretch::omega
{

// Between two fades: whether to leave the stretch that is played, and where to go on.
void SpliceEngine::Decide()
{
	Moment const moment = LookAhead();
	if (moment.mOnset != OnsetDetector::kNone && MeetOnset(moment))
	{
		return;
	}
	double const off = static_cast<double>(moment.mPlace) - moment.mIdeal;
	// A stretch that runs ahead of its place must not reach an onset before its time.
	double const untilOnset = static_cast<double>(moment.mOnset - moment.mPlace) - mLengths.mGuard;
	if (moment.mOnset != OnsetDetector::kNone &&
		static_cast<double>(moment.mPlace) > moment.mPath + mLengths.mStep / 4.0 &&
		untilOnset < mLengths.mFade + 2.0 * mLengths.mStep)
	{
		Splice(moment, true);
		return;
	}
	double const attack = mLengths.mAttack / std::max(1.0, mStretch);
	if (static_cast<double>(moment.mPlace - moment.mLastOnset) < attack)
	{
		return;
	}
	double const limit = GetLimit();
	bool const isOff = mStretch > 1.0 ? off < -limit : mStretch < 1.0 ? off > limit : std::fabs(off) > limit;
	// Off to the other side, as after a change of the ratio, it comes back by itself, unless it is far off.
	if (isOff || std::fabs(off) > mLengths.mOff + mLengths.mSearch)
	{
		Splice(moment, false);
	}
}

// How far off its place a stretch gets before it is left: what comes together in 15 milliseconds, within limits.
double SpliceEngine::GetLimit() const
{
	double const reach = mLengths.mOff;
	return std::clamp(std::fabs(1.0 - mStretch) * 0.015 * mSampleRate, 0.16 * reach, reach);
}

// The end of the source whose onsets are known with blocks of any size.
std::int64_t SpliceEngine::GetHorizon() const
{
	auto const ideal = static_cast<std::int64_t>(IdealAt(mMiddle.GetEnd()));
	return ideal + mLookAhead - mSlack - static_cast<std::int64_t>(mSampleRate / 400.0);
}

SpliceEngine::Moment SpliceEngine::LookAhead() const
{
	std::int64_t const middle = mMiddle.GetEnd();
	Moment moment;
	moment.mIdeal = IdealAt(middle);
	moment.mPlace = middle + mSegment.mOffset;
	moment.mLastOnset = mOnsets.FindUpTo(moment.mPlace);
	// Those that ought to have been played long ago are given up.
	auto const ideal = static_cast<std::int64_t>(moment.mIdeal);
	std::int64_t const onset = mOnsets.FindAfter(std::max(moment.mPlace, ideal - mLengths.mOff));
	if (onset < GetHorizon())
	{
		moment.mOnset = onset;
		moment.mLead = (static_cast<double>(onset) - moment.mIdeal) / mStretch;
		moment.mPath = static_cast<double>(onset) - moment.mLead;
	}
	return moment;
}

// Goes to where the onset is reached at its time, shortly before it, and stays there until it has passed. False while
// there is time.
bool SpliceEngine::MeetOnset(Moment const& inMoment)
{
	double const left = inMoment.mLead - mLengths.mGuard;
	if (left > mLengths.mOnsetFade + mLengths.mStep)
	{
		return false;
	}
	// One that is known too late for a fade before it is played late.
	double const late = std::max(0.0, mLengths.mGuard + mLengths.mStep / 2.0 - inMoment.mLead);
	double const off = static_cast<double>(inMoment.mPlace) + mSegment.mFraction - inMoment.mPath + late;
	if (std::fabs(off) * 2000.0 <= mSampleRate || (late > 0.0 && off > 0.0))
	{
		return true;
	}
	double const distance = -std::round(off);
	double const similarity = SpliceSearch::Compare(
		mSound, inMoment.mPlace, inMoment.mPlace + static_cast<std::int64_t>(distance), mLengths.mOnsetFade);
	double const untilOnset = static_cast<double>(inMoment.mOnset - inMoment.mPlace) - mLengths.mGuard;
	StartFade(distance - mSegment.mFraction, similarity, std::min(left, untilOnset));
	return true;
}

void SpliceEngine::Splice(Moment const& inMoment, bool inIsForced)
{
	SpliceRange const range = FindRange(inMoment, inIsForced);
	if (range.mLowest > range.mHighest)
	{
		return;
	}
	SpliceMatch const match = SpliceSearch::Find(mSound, mCoarse, range, mSettings.mPreferAccuracy ? 4 : 2);
	if (match.mSimilarity < kSame && !inIsForced && inMoment.mOnset == OnsetDetector::kNone &&
		StartTones(inMoment))
	{
		return;
	}
	double fade = mLengths.mLongestFade;
	if (inMoment.mOnset != OnsetDetector::kNone)
	{
		double const untilOnset = static_cast<double>(inMoment.mOnset - inMoment.mPlace) - mLengths.mGuard;
		fade = std::min(
			fade, std::max<double>(std::min(TimeUntilOnsetFade(inMoment), untilOnset), mLengths.mStep));
	}
	Fade const chosen = ChooseFade(inMoment, match);
	StartFade(match.mDistance, chosen.mSimilarity, std::min(fade, chosen.mLength));
}

// In middle samples, for a moment with an onset.
double SpliceEngine::TimeUntilOnsetFade(Moment const& inMoment) const
{
	return inMoment.mLead - mLengths.mGuard - mLengths.mOnsetFade - mLengths.mStep;
}

// Where a splice may go to: nowhere if the lowest place is above the highest one.
SpliceRange SpliceEngine::FindRange(Moment const& inMoment, bool inIsForced) const
{
	double const limit = GetLimit();
	double const target = mStretch == 1.0 ? 0.0 : mStretch > 1.0 ? limit : -limit;
	double const reach = mLengths.mOff + mLengths.mSearch;
	double lowest = inMoment.mIdeal - reach;
	double highest = inMoment.mIdeal + reach;
	if (inMoment.mOnset != OnsetDetector::kNone)
	{
		// At a slower speed, what is played gets to an onset early and goes back before it as often as it has to.
		highest = mStretch > 1.0 ? std::min(highest, inMoment.mPath) : highest;
		lowest = std::min(lowest, highest - mLengths.mSearch);
	}
	// What has set in is not heard again.
	lowest = std::max(lowest, static_cast<double>(inMoment.mLastOnset + mLengths.mGuard + 1));
	auto const place = static_cast<double>(inMoment.mPlace);
	if (place - inMoment.mIdeal < target && !inIsForced)
	{
		lowest = std::max(lowest, place + mLengths.mLeast);
	}
	else
	{
		highest = std::min(highest, place - mLengths.mLeast);
	}
	SpliceRange range;
	range.mFrom = inMoment.mPlace;
	range.mLowest = static_cast<std::int64_t>(lowest);
	range.mHighest = lowest > highest ? range.mLowest - 1 : static_cast<std::int64_t>(highest);
	auto const wanted = static_cast<std::int64_t>(inMoment.mIdeal + target);
	range.mWanted = std::min(std::max(wanted, range.mLowest), range.mHighest);
	range.mNear = mLengths.mSearch;
	range.mWindow = mLengths.mWindow;
	range.mDecimation = SpliceSearch::GetDecimation(mSampleRate);
	return range;
}

// How long the stretch that is gone to stays near its place, in middle samples. By the distance alone, each fade that
// ends late would make the next one longer, until the source that is kept is too short.
double SpliceEngine::TimeUntilOff(Moment const& inMoment, SpliceMatch const& inMatch) const
{
	double const off = static_cast<double>(inMoment.mPlace) + inMatch.mDistance - inMoment.mIdeal;
	double const left = GetLimit() + (mStretch > 1.0 ? off : -off);
	return std::min(left, std::fabs(inMatch.mDistance)) / std::max(std::fabs(1.0 - mStretch), 1e-6);
}

// Where both stretches are alike for so long, the fade lasts until the next splice is due. Notes of a chord, which have no
// period in common, then drift in phase steadily, by a fraction of a hertz, in place of a step at each splice.
SpliceEngine::Fade SpliceEngine::ChooseFade(Moment const& inMoment, SpliceMatch const& inMatch) const
{
	if (inMatch.mSimilarity <= kAlike)
	{
		return {static_cast<double>(mLengths.mFade), inMatch.mSimilarity};
	}
	double const length =
		std::clamp<double>(TimeUntilOff(inMoment, inMatch), mLengths.mFade, mLengths.mLongestFade);
	double const similarity = SpliceSearch::Compare(mSound, inMoment.mPlace,
		inMoment.mPlace + std::llround(inMatch.mDistance), static_cast<unsigned>(length));
	return similarity > kAlike ? Fade{length, similarity}
							   : Fade{std::min<double>(length, mLengths.mLongFade), inMatch.mSimilarity};
}

// inDistance from what is played now on.
void SpliceEngine::StartFade(double inDistance, double inSimilarity, double inLength)
{
	double const distance = inDistance + mSegment.mFraction;
	double const whole = std::floor(distance);
	mNext.mOffset = mSegment.mOffset + static_cast<std::int64_t>(whole);
	mNext.mFraction = distance - whole;
	double sum = 0.0;
	for (unsigned k = 0; k < kTaps; ++k)
	{
		mNext.mTaps[k] = SincTable::ForPlaces().Get(static_cast<double>(k) - kTapsBefore - mNext.mFraction);
		sum += static_cast<double>(mNext.mTaps[k]);
	}
	for (float& tap : mNext.mTaps)
	{
		tap = static_cast<float>(static_cast<double>(tap) / sum);
	}
	// At high speed, a long fade would take both stretches far from their place.
	double const shortest = mLengths.mStep / 2.0;
	double const longest = 4.0 * mLengths.mLongestFade / std::max(4.0, std::fabs(mStretch - 1.0));
	mFadeLength = static_cast<unsigned>(std::clamp(inLength, shortest, std::max(longest, shortest)));
	mFaded = 0;
	std::int64_t const place = mMiddle.GetEnd() + mSegment.mOffset;
	std::int64_t const next = mMiddle.GetEnd() + mNext.mOffset;
	mFadeSimilarity = IsEndNear(place) || IsEndNear(next) ? 1.0 : std::clamp(inSimilarity, 0.0, 1.0);
}

// Whether silence follows soon, as after the end of the source: what is alike until then would be raised by a fade that
// makes up for the part that is not.
bool SpliceEngine::IsEndNear(std::int64_t inPlace) const
{
	unsigned const length = std::max(mLengths.mWindow, mFadeLength);
	unsigned const silent = mLengths.mStep / 4;
	float const* const end = mSound.At(0, inPlace + length);
	return std::all_of(end - silent, end, [](float inSample) { return inSample == 0.0f; });
}

} // namespace dsp::stretch::omega
