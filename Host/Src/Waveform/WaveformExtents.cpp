#include "WaveformExtents.h"

#include <algorithm>

namespace SonaroHost
{

namespace
{

double FindY(float inSample, WaveformStyle const& inStyle, WaveformRoom const& inRoom)
{
	return inRoom.mTop +
		   inRoom.mHeight * (1.0 - ScaleAmplitude(static_cast<double>(inSample), inStyle)) / 2.0;
}

// At least a pixel high.
WaveformExtent FindExtent(
	float inMinimum, float inMaximum, WaveformStyle const& inStyle, WaveformRoom const& inRoom)
{
	WaveformExtent extent{FindY(inMaximum, inStyle, inRoom), FindY(inMinimum, inStyle, inRoom)};
	if (double const missing = 1.0 - (extent.mBottom - extent.mTop); missing > 0.0)
	{
		extent.mTop =
			std::clamp(extent.mTop - missing / 2.0, inRoom.mTop, inRoom.mTop + inRoom.mHeight - 1.0);
		extent.mBottom = extent.mTop + 1.0;
	}
	return extent;
}

Waveform::Column GetPixel(Waveform const& inWaveform, std::size_t inChannel, unsigned inX, unsigned inWidth)
{
	std::size_t const columns = inWaveform.GetNumColumns();
	std::size_t const first = columns * inX / inWidth;
	return Join(
		inWaveform, inChannel, inChannel + 1, first, std::max(first + 1, columns * (inX + 1) / inWidth));
}

} // namespace

std::vector<WaveformExtent> FindWave(Waveform const& inWaveform, std::size_t inChannel,
	WaveformStyle const& inStyle, WaveformRoom const& inRoom)
{
	std::vector<WaveformExtent> extents;
	WaveformExtent before;
	for (unsigned x = 0; x < inRoom.mWidth; ++x)
	{
		Waveform::Column const column = GetPixel(inWaveform, inChannel, x, inRoom.mWidth);
		WaveformExtent const own = FindExtent(column.mMinimum, column.mMaximum, inStyle, inRoom);
		WaveformExtent shown = own;
		if (x > 0)
		{
			shown.mTop = std::min(own.mTop, before.mBottom);
			shown.mBottom = std::max(own.mBottom, before.mTop);
		}
		extents.push_back(shown);
		before = own;
	}
	return extents;
}

std::vector<WaveformExtent> FindRms(Waveform const& inWaveform, std::size_t inChannel,
	WaveformStyle const& inStyle, WaveformRoom const& inRoom)
{
	std::vector<WaveformExtent> extents;
	for (unsigned x = 0; x < inRoom.mWidth; ++x)
	{
		Waveform::Column const column = GetPixel(inWaveform, inChannel, x, inRoom.mWidth);
		bool const isCrossing = column.mMinimum < 0.0f && column.mMaximum > 0.0f;
		extents.push_back(isCrossing ? FindExtent(std::max(-column.mRms, column.mMinimum),
										   std::min(column.mRms, column.mMaximum), inStyle, inRoom)
									 : WaveformExtent());
	}
	return extents;
}

} // namespace SonaroHost
