#pragma once

#include "SonaroHost/Base/CurveTimes.h"
#include "SonaroHost/Base/SpeedCurve.h"

#include <memory>

namespace SonaroHost::Otio
{

struct TimeSpan
{
	bool IsEmpty() const { return !(mStart < mEnd); }
	// Empty, at the end of inOther that is nearer, where they do not meet.
	TimeSpan Intersect(TimeSpan const& inOther) const;

	Ratio mStart;
	Ratio mEnd;
};

// How an item's content passes along a speed curve.
class ContentCurve
{
public:
	// The item's time, from 0 to inLength, and the time of its content that is heard at 0.
	ContentCurve(SpeedCurve const& inCurve, Ratio const& inLength, Ratio const& inStart);

	Ratio ToContent(Ratio const& inTime) const { return mStart + mCurve.GetPosition(inTime); }
	// All that is heard meanwhile.
	TimeSpan ToContent(TimeSpan const& inTimes) const;
	// When a time of the content is heard first. Where it is not heard within the item, when it would be if the speed stayed
	// as it is at either end; otherwise the item's end.
	Ratio FindTime(Ratio const& inContent) const;
	// From the first to the last time at which something of it is heard.
	TimeSpan FindTimes(TimeSpan const& inContent) const;

private:
	SpeedCurve mCurve;
	Ratio mLength;
	Ratio mStart;
	CurveTimes mTimes;
};

// Maps one time to another: times a factor that is not 0, plus an offset; and along speed curves before that.
class TimeMap
{
public:
	TimeMap() = default;
	// inFrom becomes inTo.
	TimeMap(Ratio const& inFrom, Ratio const& inTo, Ratio const& inFactor)
		: mOffset(inTo - inFrom * inFactor),
		  mFactor(inFactor)
	{
	}
	// Maps to the content of an item that starts at inStart.
	TimeMap(Ratio const& inStart, std::shared_ptr<ContentCurve const> inCurve);

	// Whether it is a factor and an offset alone; then GetFactor is the factor.
	bool IsLinear() const { return !mBend; }
	Ratio const& GetFactor() const { return mFactor; }
	Ratio Map(Ratio const& inTime) const;
	// The map that applies inFirst and then this one.
	TimeMap After(TimeMap const& inFirst) const;
	TimeMap Invert() const;
	// All that times of the span are mapped to.
	TimeSpan Map(TimeSpan const& inSpan) const;

private:
	// A curve, or the way back along it, after a map.
	struct Bend;

	std::shared_ptr<Bend const> mBend;
	Ratio mOffset;
	Ratio mFactor = Ratio(1);
};

} // namespace SonaroHost::Otio
