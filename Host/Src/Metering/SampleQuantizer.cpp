#include "SonaroHost/Metering/SampleQuantizer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

namespace
{

// The step and the two multipliers of SplitMix64, a counter whose values are scrambled.
constexpr std::uint64_t kGoldenStep = 0x9e3779b97f4a7c15;
constexpr std::uint64_t kFirstMultiplier = 0xbf58476d1ce4e5b9;
constexpr std::uint64_t kSecondMultiplier = 0x94d049bb133111eb;

std::uint64_t Scramble(std::uint64_t inCounter)
{
	std::uint64_t value = inCounter;
	value = (value ^ value >> 30) * kFirstMultiplier;
	value = (value ^ value >> 27) * kSecondMultiplier;
	return value ^ value >> 31;
}

} // namespace

SampleQuantizer::SampleQuantizer(int inBits, Dither inDither, unsigned inChannel)
	: mScale(std::ldexp(1.0, inBits - 1)),
	  mDither(inDither),
	  mFirstState(Scramble(inChannel + 1)),
	  mRandomState(mFirstState)
{
}

void SampleQuantizer::SkipTo(std::int64_t inSample)
{
	// Each sample takes one step of the counter.
	mRandomState = mFirstState + static_cast<std::uint64_t>(inSample) * kGoldenStep;
}

int SampleQuantizer::Quantize(float inSample)
{
	double const dither = mDither == Dither::kTriangular ? GetNextDither() : 0.0;
	double const value = static_cast<double>(inSample) * mScale;
	if (std::isnan(value))
	{
		++mClippedSamples;
		return 0;
	}
	if (value > mScale - 0.5 || value < -mScale - 0.5)
	{
		++mClippedSamples;
	}
	double const rounded = std::nearbyint(value + dither);
	return static_cast<int>(std::clamp(rounded, -mScale, mScale - 1.0));
}

double SampleQuantizer::GetNextDither()
{
	mRandomState += kGoldenStep;
	std::uint64_t const random = Scramble(mRandomState);
	auto const first = static_cast<double>(random >> 32);
	auto const second = static_cast<double>(random & 0xffffffff);
	return (first - second) / 4294967296.0;
}

} // namespace SonaroHost
