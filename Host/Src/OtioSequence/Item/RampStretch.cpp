#include "RampStretch.h"

#include "SonaroHost/Base/NumberText.h"

#include <algorithm>

namespace SonaroHost::Otio
{

namespace
{

// What is stretched before a clip, and made after it for conversions of its rate.
Ratio const kLeadSeconds(1);
Ratio const kTailSeconds(1, 10);

bool IsInRange(Stretch const& inStretch, SpeedCurve::Span const& inSpeeds)
{
	Stretch lowest = inStretch;
	lowest.mSpeed = inSpeeds.mFirst;
	Stretch highest = inStretch;
	highest.mSpeed = inSpeeds.mLast;
	return lowest.IsInRange() && highest.IsInRange();
}

// The lowest and the highest speed of an item's times, without their sign where all are below 0.
SpeedCurve::Span FindSpeeds(SpeedCurve const& inCurve, TimeSpan const& inTimes)
{
	SpeedCurve::Span const speeds = inCurve.GetSpeeds(inTimes.mStart, inTimes.mEnd);
	return speeds.mLast < Ratio() ? SpeedCurve::Span{-speeds.mLast, -speeds.mFirst} : speeds;
}

// The part of the time warps that does not keep the pitch, which is left to the pitch.
Ratio FindFollowedSpeed(Clip const& inClip, bool inKeepsPitch)
{
	Ratio all(1);
	for (Effect const& effect : inClip.mEffects)
	{
		if (effect.mIsEnabled && effect.mKind == Effect::Kind::kLinearTimeWarp)
		{
			all = all * Ratio::FromDouble(effect.mTimeScalar);
		}
	}
	return std::max(all, -all) / GetKeptSpeed(inClip, inKeepsPitch);
}

// inStretch: without its ramp. Nothing is heard before the media.
RampStretch PlaceRamp(
	Stretch const& inStretch, ItemTiming const& inTiming, TimeSpan const& inReach, MediaTime const& inMedia)
{
	SpeedCurve const& curve = *inTiming.mCurve;
	bool const isBackwards = inTiming.mIsBackwards;
	TimeSpan const times{inReach.mStart - (isBackwards ? kTailSeconds : kLeadSeconds),
		inReach.mEnd + (isBackwards ? kLeadSeconds : kTailSeconds)};
	RampStretch ramp{inStretch, isBackwards ? times.mEnd : times.mStart, isBackwards};
	// The media's time at the item's start, from where on the curve counts.
	Ratio const origin = inTiming.mContentStart - inMedia.mStart;
	if (auto const start = CurveTimes(curve, times.mStart, times.mEnd).FindFirst(-origin.ToDouble()))
	{
		ramp.mStart = Ratio::FromDouble(*start);
	}
	ramp.mStretch.mStart = std::max((origin + curve.GetPosition(ramp.mStart)) * inMedia.mRate, Ratio());
	Ratio const frames = ramp.FindPlace(isBackwards ? times.mStart : times.mEnd, inMedia.mRate);
	ramp.mStretch.mRamp = Stretch::Ramp{curve.MoveBy(-ramp.mStart), frames.Floor() + 1};
	return ramp;
}

} // namespace

std::optional<RampStretch> ChooseRampStretch(MakerContext& ioContext, Clip const& inClip,
	ItemTiming const& inTiming, TimeSpan const& inReach, MediaTime const& inMedia)
{
	bool const byDefault = ioContext.mOptions.mKeepsPitch;
	if (!inTiming.mCurve || !KeepsPitch(inClip, byDefault))
	{
		return std::nullopt;
	}
	Stretch stretch;
	stretch.mPitch =
		Stretch::GetPitchFactor(inClip.GetSettings().mSemitones) * FindFollowedSpeed(inClip, byDefault);
	// The time scaler has one ratio from start to end.
	bool const isScaler = ioContext.mOptions.mStretchEngine == StretchEngine::kScaler;
	stretch.mEngine = isScaler ? StretchEngine::kOmega : ioContext.mOptions.mStretchEngine;
	SpeedCurve::Span const speeds =
		FindSpeeds(*inTiming.mCurve, {inReach.mStart - kLeadSeconds, inReach.mEnd + kLeadSeconds});
	if (!IsInRange(stretch, speeds))
	{
		double const factor = stretch.mPitch.ToDouble();
		ioContext.Tell(Note::Kind::kIgnored, inClip.mPlace,
			"speeds from " + FormatNumber(speeds.mFirst.ToDouble()) + " to " +
				FormatNumber(speeds.mLast.ToDouble()) +
				" cannot keep their pitch, which follows the speed; use " +
				FormatNumber(Stretch::kLowestSpeed * factor) + " to " +
				FormatNumber(Stretch::kHighestSpeed * factor) + ", in one direction");
		return std::nullopt;
	}
	if (isScaler)
	{
		ioContext.TellOnce(Note::Kind::kRemark, inClip.mPlace,
			"'scaler' has one speed from start to end, so ramps that keep their pitch are stretched by "
			"'omega'");
	}
	return PlaceRamp(stretch, inTiming, inReach, inMedia);
}

} // namespace SonaroHost::Otio
