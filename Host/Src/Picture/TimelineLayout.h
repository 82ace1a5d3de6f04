#pragma once

#include "Canvas.h"
#include "SonaroHost/Picture/TimelinePicture.h"

#include <cstddef>

namespace SonaroHost
{

// Where in a picture of a timeline things stand. The ruler and the markers below it are left out where they would take
// the room of the lanes, and the column of names where the picture is narrow.
class TimelineLayout
{
public:
	TimelineLayout(TimelinePicture const& inPicture, unsigned inWidth, unsigned inHeight);

	// The height of a picture in which lanes are as high as they should be, as far as a picture may be.
	static unsigned FindGoodHeight(TimelinePicture const& inPicture);

	double GetWidth() const { return mWidth; }
	double GetHeight() const { return mHeight; }
	// 0 without a column.
	double GetNamesWidth() const { return mNamesWidth; }
	// Without height where there is none. They reach from the column of names to the right.
	Box GetRuler() const { return {mNamesWidth, 0.0, mWidth - mNamesWidth, mRulerHeight}; }
	Box GetMarkers() const { return {mNamesWidth, mRulerHeight, mWidth - mNamesWidth, mMarkersHeight}; }
	// From the column of names to the right.
	Box GetLane(std::size_t inLane) const;
	// Where the waves of a lane are: below the names of its blocks, if there is room for them.
	Box GetWaves(std::size_t inLane) const;
	// The height of those names, or 0.
	double GetStripHeight(std::size_t inLane) const;
	double GetX(double inTime) const;

private:
	TimelinePicture const& mPicture;
	double mWidth;
	double mHeight;
	double mNamesWidth = 0.0;
	double mRulerHeight = 0.0;
	double mMarkersHeight = 0.0;
};

} // namespace SonaroHost
