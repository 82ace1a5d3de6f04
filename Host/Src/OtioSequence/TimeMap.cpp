#include "TimeMap.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace SonaroHost::Otio
{

namespace
{

TimeSpan MakeSpan(Ratio const& inA, Ratio const& inB)
{
	return {std::min(inA, inB), std::max(inA, inB)};
}

} // namespace

TimeSpan TimeSpan::Intersect(TimeSpan const& inOther) const
{
	return {std::clamp(mStart, inOther.mStart, inOther.mEnd), std::clamp(mEnd, inOther.mStart, inOther.mEnd)};
}

ContentCurve::ContentCurve(SpeedCurve const& inCurve, Ratio const& inLength, Ratio const& inStart)
	: mCurve(inCurve),
	  mLength(inLength),
	  mStart(inStart),
	  mTimes(inCurve, Ratio(), inLength)
{
}

TimeSpan ContentCurve::ToContent(TimeSpan const& inTimes) const
{
	SpeedCurve::Span const positions = mCurve.GetPositions(inTimes.mStart, inTimes.mEnd);
	return {mStart + positions.mFirst, mStart + positions.mLast};
}

Ratio ContentCurve::FindTime(Ratio const& inContent) const
{
	Ratio const position = inContent - mStart;
	if (auto const time = mTimes.FindFirst(position.ToDouble()))
	{
		return Ratio::FromDouble(*time);
	}
	Ratio const before = mCurve.GetSpeed(Ratio());
	if (before != Ratio() && position / before < Ratio())
	{
		return position / before;
	}
	Ratio const after = mCurve.GetSpeed(mLength);
	Ratio const left = position - mCurve.GetPosition(mLength);
	return after != Ratio() && left / after > Ratio() ? mLength + left / after : mLength;
}

TimeSpan ContentCurve::FindTimes(TimeSpan const& inContent) const
{
	TimeSpan times = MakeSpan(FindTime(inContent.mStart), FindTime(inContent.mEnd));
	auto const add = [&times](Ratio const& inTime) {
		times = {std::min(times.mStart, inTime), std::max(times.mEnd, inTime)};
	};
	// What is heard again, or from the start, or up to a turn or the end.
	for (Ratio const& content : {inContent.mStart, inContent.mEnd})
	{
		if (auto const last = mTimes.FindLast((content - mStart).ToDouble()))
		{
			add(Ratio::FromDouble(*last));
		}
	}
	std::vector<Ratio> ends = mCurve.FindTurns();
	ends.insert(ends.end(), {Ratio(), mLength});
	for (Ratio const& time : ends)
	{
		Ratio const content = ToContent(time);
		if (time >= Ratio() && time <= mLength && content > inContent.mStart && content < inContent.mEnd)
		{
			add(time);
		}
	}
	return times;
}

struct TimeMap::Bend
{
	Ratio Map(Ratio const& inTime) const
	{
		Ratio const time = mBefore.Map(inTime);
		return mIsInverse ? mCurve->FindTime(time) : mCurve->ToContent(time);
	}
	TimeSpan Map(TimeSpan const& inSpan) const
	{
		TimeSpan const span = mBefore.Map(inSpan);
		return mIsInverse ? mCurve->FindTimes(span) : mCurve->ToContent(span);
	}

	TimeMap mBefore;
	std::shared_ptr<ContentCurve const> mCurve;
	bool mIsInverse = false;
};

TimeMap::TimeMap(Ratio const& inStart, std::shared_ptr<ContentCurve const> inCurve)
	: mBend(std::make_shared<Bend const>(Bend{TimeMap(inStart, Ratio(), Ratio(1)), std::move(inCurve)}))
{
}

Ratio TimeMap::Map(Ratio const& inTime) const
{
	return mOffset + (mBend ? mBend->Map(inTime) : inTime) * mFactor;
}

TimeMap TimeMap::After(TimeMap const& inFirst) const
{
	TimeMap result;
	if (mBend)
	{
		result = *this;
		result.mBend = std::make_shared<Bend const>(
			Bend{mBend->mBefore.After(inFirst), mBend->mCurve, mBend->mIsInverse});
		return result;
	}
	result.mBend = inFirst.mBend;
	result.mOffset = mOffset + inFirst.mOffset * mFactor;
	result.mFactor = mFactor * inFirst.mFactor;
	return result;
}

TimeMap TimeMap::Invert() const
{
	TimeMap const back(mOffset, Ratio(), Ratio(1) / mFactor);
	if (!mBend)
	{
		return back;
	}
	TimeMap bent;
	bent.mBend = std::make_shared<Bend const>(Bend{back, mBend->mCurve, !mBend->mIsInverse});
	return mBend->mBefore.Invert().After(bent);
}

TimeSpan TimeMap::Map(TimeSpan const& inSpan) const
{
	if (inSpan.IsEmpty())
	{
		Ratio const time = Map(inSpan.mStart);
		return {time, time};
	}
	TimeSpan const span = mBend ? mBend->Map(inSpan) : inSpan;
	return MakeSpan(mOffset + span.mStart * mFactor, mOffset + span.mEnd * mFactor);
}

} // namespace SonaroHost::Otio
