#include "TimelineLayout.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

namespace
{

constexpr double kRulerHeight = 22.0;
constexpr double kMarkersHeight = 16.0;
constexpr double kNamesWidth = 170.0;
// A narrower picture has no column of names.
constexpr double kLeastWidthWithNames = 320.0;
// Of the picture's width.
constexpr double kMostNamesShare = 0.25;
constexpr unsigned kHighestLane = 80;
constexpr unsigned kLowestLane = 28;
// Lanes share it until they are the lowest ones.
constexpr unsigned kAllLanes = 1280;
// Below it, names of blocks would leave too little of the waves.
constexpr double kLeastHeightWithStrip = 26.0;
// Below it, lanes need the room of the ruler.
constexpr double kLeastHeightWithRuler = 8.0;

double FindMarkersHeight(TimelinePicture const& inPicture)
{
	return inPicture.mMarkers.empty() ? 0.0 : kMarkersHeight;
}

} // namespace

TimelineLayout::TimelineLayout(TimelinePicture const& inPicture, unsigned inWidth, unsigned inHeight)
	: mPicture(inPicture),
	  mWidth(inWidth),
	  mHeight(inHeight)
{
	if (mWidth >= kLeastWidthWithNames)
	{
		mNamesWidth = std::floor(std::min(kNamesWidth, mWidth * kMostNamesShare));
	}
	double const head = kRulerHeight + FindMarkersHeight(inPicture);
	if (mHeight - head >= kLeastHeightWithRuler * static_cast<double>(inPicture.mLanes.size()))
	{
		mRulerHeight = kRulerHeight;
		mMarkersHeight = FindMarkersHeight(inPicture);
	}
}

unsigned TimelineLayout::FindGoodHeight(TimelinePicture const& inPicture)
{
	constexpr std::size_t kMostLanes = 1 << 16;
	auto const lanes = static_cast<unsigned>(std::clamp<std::size_t>(inPicture.mLanes.size(), 1, kMostLanes));
	return static_cast<unsigned>(kRulerHeight + FindMarkersHeight(inPicture)) +
		   lanes * std::clamp(kAllLanes / lanes, kLowestLane, kHighestLane);
}

Box TimelineLayout::GetLane(std::size_t inLane) const
{
	double const head = mRulerHeight + mMarkersHeight;
	auto const findTop = [&](std::size_t inIndex)
	{
		return head + std::floor((mHeight - head) * static_cast<double>(inIndex) /
								 static_cast<double>(mPicture.mLanes.size()));
	};
	double const top = findTop(inLane);
	return {mNamesWidth, top, mWidth - mNamesWidth, findTop(inLane + 1) - top};
}

double TimelineLayout::GetStripHeight(std::size_t inLane) const
{
	constexpr double kHigh = 14.0;
	constexpr double kLow = 12.0;
	double const height = GetLane(inLane).mHeight;
	bool const hasStrip = !mPicture.mLanes[inLane].mBlocks.empty() && height >= kLeastHeightWithStrip;
	return !hasStrip ? 0.0 : height >= 2.0 * kLeastHeightWithStrip ? kHigh : kLow;
}

Box TimelineLayout::GetWaves(std::size_t inLane) const
{
	// What keeps the waves of neighbours apart, where there is room for it.
	double const margin = GetLane(inLane).mHeight >= kLeastHeightWithRuler ? 1.0 : 0.0;
	Box box = GetLane(inLane);
	double const head = margin + GetStripHeight(inLane);
	box.mY += head;
	box.mHeight = std::max(1.0, box.mHeight - head - margin);
	return box;
}

double TimelineLayout::GetX(double inTime) const
{
	return mNamesWidth + (mWidth - mNamesWidth) * inTime / mPicture.mLength;
}

} // namespace SonaroHost
