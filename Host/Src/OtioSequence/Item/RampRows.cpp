#include "RampRows.h"

#include "SonaroHost/Base/TimePosition.h"

#include <cmath>

namespace SonaroHost::Otio
{

namespace
{

constexpr double kMostMoments = 600.0;

// A number of seconds that people count in.
std::int64_t ChooseStep(double inSeconds)
{
	for (std::int64_t const step : {1, 2, 5, 10, 30, 60, 120, 300, 600, 1200})
	{
		if (inSeconds <= kMostMoments * static_cast<double>(step))
		{
			return step;
		}
	}
	constexpr std::int64_t kHour = 3600;
	return kHour * static_cast<std::int64_t>(std::ceil(inSeconds / (kMostMoments * kHour)));
}

} // namespace

std::optional<RampRow> MakeRampRow(
	Placement const& inPlacement, ItemTiming const& inTiming, Scope const& inScope, MediaTime const& inMedia)
{
	TimeSpan const visible = TimeSpan{inPlacement.mStart, inPlacement.mEnd}.Intersect(inScope.mVisible);
	if (!inTiming.mCurve || visible.IsEmpty())
	{
		return std::nullopt;
	}
	SpeedCurve const& curve = *inTiming.mCurve;
	Ratio const from = visible.mStart - inPlacement.mStart;
	Ratio const to = visible.mEnd - inPlacement.mStart;
	SpeedCurve::Span const speeds = curve.GetSpeeds(from, to);
	CurveTimes const times(curve, from, to);
	RampRow row;
	row.mExactSeconds = curve.DescribeWay(from, to);
	row.mSeconds = (curve.GetPosition(to) - curve.GetPosition(from)).ToDouble();
	row.mLowestSpeed = speeds.mFirst.ToDouble();
	row.mHighestSpeed = speeds.mLast.ToDouble();
	row.mStepSeconds = ChooseStep(times.GetTotalWay());
	// The curve's position where the file begins.
	Ratio const early = inTiming.mIsBackwards ? Ratio(1) / inMedia.mRate : Ratio();
	double const origin = (inMedia.mStart + early - inTiming.mContentStart).ToDouble();
	int const rate = inScope.mGrid.GetSampleRate();
	TimeSpan const programme = inScope.mToProgramme.Map(visible);
	for (CurveTimes::Passage const& passage :
		times.ListPassages(origin, static_cast<double>(row.mStepSeconds)))
	{
		Ratio const time = inPlacement.mStart + Ratio::FromDouble(passage.mTime);
		std::int64_t const frame = ToSamples(inScope.mToProgramme.Map(time), rate);
		// What is reached at the end is not played.
		if (frame >= ToSamples(programme.mStart, rate) && frame < ToSamples(programme.mEnd, rate))
		{
			row.mMoments.push_back({std::llround(passage.mPosition - origin), frame});
		}
	}
	return row;
}

} // namespace SonaroHost::Otio
