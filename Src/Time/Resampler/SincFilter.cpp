#include "Time/Resampler/SincFilter.h"

#include "Vexilon/Constants.h"
#include "zorvcore/math/Elementary.h"
#include "zorvcore/threads/RecursiveMutex.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace SN
{

namespace
{

constexpr float kKaiserBeta = 6.8f;

// The modified Bessel function of the first kind and order 0 by its power series, in single precision.
float BesselI0(float inY)
{
	constexpr int kMostTerms = 25;
	float term = 1.0f;
	float sum = 1.0f;
	for (int m = 1; m <= kMostTerms; ++m)
	{
		term = term * (inY / 2.0f) / static_cast<float>(m);
		float const square = term * term;
		sum += square;
		if (square < sum * 1e-8)
		{
			break;
		}
	}
	return sum;
}

// J. F. Kaiser's window at inIndex steps from the centre of a filter of inLength elements.
float KaiserWindow(int inIndex, int inLength)
{
	float const index = static_cast<float>(inIndex);
	float const length = static_cast<float>(inLength - 1);
	float const argument = std::max(1.0f - 4.0f * index * index / (length * length), 0.0f);
	float const root = static_cast<float>(kKaiserBeta * std::sqrt(static_cast<double>(argument)));
	static float const sNorm = BesselI0(kKaiserBeta);
	return BesselI0(root) / sNorm;
}

} // namespace

SincFilter::SincFilter(double inRatio, bool inHighQuality)
	: mOversampling(inHighQuality ? 2400 : 120),
	  mIncrement(static_cast<float>(mOversampling * inRatio)),
	  mIntegerStep(static_cast<int>(mIncrement))
{
	// Where the input has the higher rate, the filter cuts below the output's band.
	int const cutoffDivisor = std::max(mIntegerStep, mOversampling);
	float const lengthFactor = inHighQuality ? 10.0f : 1.0f;
	int const length = static_cast<int>(static_cast<float>(cutoffDivisor) * lengthFactor * 10.0f + 1.0f);
	mHalfTaps = (length / 2 - mOversampling) / mOversampling;
	mNumTaps = 2 * mHalfTaps + 2;
	StoreRows(Design(length, cutoffDivisor, mOversampling), (length - 1) / 2);
}

std::shared_ptr<SincFilter const> SincFilter::GetShared(double inRatio, bool inHighQuality)
{
	static zorvcore::threads::RecursiveMutex sMutex("SincFilter");
	static std::map<std::pair<double, bool>, std::weak_ptr<SincFilter const>> sPublished;

	zorvcore::threads::ScopedRecursiveLock const lock(sMutex, "SincFilter::GetShared");
	std::erase_if(sPublished, [](auto const& inEntry) { return inEntry.second.expired(); });
	std::weak_ptr<SincFilter const>& published = sPublished[{inRatio, inHighQuality}];
	std::shared_ptr<SincFilter const> filter = published.lock();
	if (!filter)
	{
		// The memory goes with the last resampler, not with the weak reference.
		filter = std::shared_ptr<SincFilter const>(new SincFilter(inRatio, inHighQuality));
		published = filter;
	}
	return filter;
}

std::vector<float> SincFilter::Design(int inLength, int inCutoffDivisor, int inOversampling)
{
	int const half = (inLength - 1) / 2;
	std::vector<float> table(static_cast<std::size_t>(inLength) + 1);
	float* const centre = table.data() + half;
	double const divisor = inCutoffDivisor;
	double const pi = VX::kPi;
	centre[0] = KaiserWindow(0, inLength);
	// The outermost elements stay zero.
	for (int i = 1; i < half; ++i)
	{
		double const sinc = zorvcore::math::Sin(pi * i / divisor) * divisor / (i * pi);
		centre[i] = static_cast<float>(KaiserWindow(i, inLength) * sinc);
		centre[-i] = centre[i];
	}
	// The stride starts one step short of an input sample, so that the gain at 0 Hz is not quite 1.
	float sum = centre[0];
	for (int j = inOversampling - 1; j <= half; j += inOversampling)
	{
		sum += centre[-j] + centre[j];
	}
	float const scale = static_cast<float>(1.0 / static_cast<double>(sum));
	for (float& element : table)
	{
		element *= scale;
	}
	centre[half + 1] = 0.0f;
	return table;
}

void SincFilter::StoreRows(std::vector<float> const& inTable, int inCentre)
{
	auto const numRows = static_cast<std::size_t>(mOversampling) + 1;
	mRows.resize(numRows * static_cast<std::size_t>(mNumTaps));
	float* row = mRows.data();
	for (int phase = -1; phase < mOversampling; ++phase)
	{
		for (int k = 0; k < mNumTaps; ++k)
		{
			*row++ = inTable[static_cast<std::size_t>(inCentre + (k - mHalfTaps) * mOversampling - phase)];
		}
	}
}

} // namespace SN
