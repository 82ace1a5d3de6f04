#include "SonaroHost/PeakColumn.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace SonaroHost
{

namespace
{

// Partial results side by side, as many as the widest vectors hold twice, so that no addition waits for
// the one before.
constexpr unsigned kLanes = 32;
// Samples after which the squares go over to doubles.
constexpr unsigned kRun = 1024;
static_assert(kRun % kLanes == 0);

struct Lanes
{
	std::array<float, kLanes> mMinimum;
	std::array<float, kLanes> mMaximum;
	std::array<float, kLanes> mSquares;
};

// What is not a number fails each comparison.
inline void AddSample(float inSample, float& ioMinimum, float& ioMaximum, float& ioSquares)
{
	ioMinimum = inSample < ioMinimum ? inSample : ioMinimum;
	ioMaximum = inSample > ioMaximum ? inSample : ioMaximum;
	float const number = inSample == inSample ? inSample : 0.0f;
	ioSquares += number * number;
}

// inCount is a multiple of kLanes.
void AddRun(float const* inSamples, unsigned inCount, Lanes& ioLanes)
{
	// A copy of which the compiler knows that the samples are no part.
	Lanes lanes = ioLanes;
	for (unsigned i = 0; i < inCount; i += kLanes)
	{
		for (unsigned lane = 0; lane < kLanes; ++lane)
		{
			AddSample(inSamples[i + lane], lanes.mMinimum[lane], lanes.mMaximum[lane], lanes.mSquares[lane]);
		}
	}
	ioLanes = lanes;
}

} // namespace

void PeakColumn::Add(float const* inSamples, unsigned inCount)
{
	Lanes lanes{};
	lanes.mMinimum.fill(mMinimum);
	lanes.mMaximum.fill(mMaximum);
	unsigned done = 0;
	for (unsigned const whole = inCount - inCount % kLanes; done < whole;)
	{
		unsigned const count = std::min(kRun, whole - done);
		lanes.mSquares.fill(0.0f);
		AddRun(inSamples + done, count, lanes);
		for (float const squares : lanes.mSquares)
		{
			mSquares += static_cast<double>(squares);
		}
		done += count;
	}
	float rest = 0.0f;
	for (; done < inCount; ++done)
	{
		AddSample(inSamples[done], lanes.mMinimum[0], lanes.mMaximum[0], rest);
	}
	mSquares += static_cast<double>(rest);
	mMinimum = *std::min_element(lanes.mMinimum.begin(), lanes.mMinimum.end());
	mMaximum = *std::max_element(lanes.mMaximum.begin(), lanes.mMaximum.end());
	mCount += inCount;
}

void PeakColumn::AddSilence(double inCount)
{
	if (inCount > 0.0)
	{
		mMinimum = std::min(mMinimum, 0.0f);
		mMaximum = std::max(mMaximum, 0.0f);
		mCount += inCount;
	}
}

void PeakColumn::Add(PeakColumn const& inOther, double inCount)
{
	mMinimum = std::min(mMinimum, inOther.mMinimum);
	mMaximum = std::max(mMaximum, inOther.mMaximum);
	mSquares += inOther.mSquares * (inCount / inOther.mCount);
	mCount += inCount;
}

float PeakColumn::GetRms() const
{
	return IsEmpty() ? 0.0f : static_cast<float>(std::sqrt(mSquares / mCount));
}

} // namespace SonaroHost
