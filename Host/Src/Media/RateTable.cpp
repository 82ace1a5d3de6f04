#include "RateTable.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <limits>
#include <map>
#include <mutex>
#include <numbers>

namespace SonaroHost
{

namespace
{

namespace accelerate = zorvaccelerate::utility;

// How a filter is designed, with frequencies as fractions of half the lower rate.
struct Design
{
	double mAttenuation;
	// Where the band ends that passes; the band that is stopped begins at 1. A hundredth of a decibel is lost only
	// somewhat beyond its end.
	double mPass;
	// Rows for each frame at a step of 1, where a cubic goes between them: the cubic is off by no more than
	// 0.01 / rows^4 of the largest coefficient.
	double mSteps;
};

constexpr Design kFullDesign{144.0, 0.9, 64.0};
constexpr Design kDraftDesign{104.0, 0.79, 32.0};

// The most numbers that a table of phases has.
constexpr std::int64_t kMostNumbers = std::int64_t{1} << 19;

// The modified Bessel function of the first kind and order 0, by its series.
double GetBessel(double inX)
{
	double const square = inX * inX / 4.0;
	double sum = 1.0;
	double term = 1.0;
	for (double k = 1.0; term > 1.0e-17 * sum; k += 1.0)
	{
		term *= square / (k * k);
		sum += term;
	}
	return sum;
}

} // namespace

// The filter by the distance from its middle.
class FilterShape
{
public:
	// inScale: the step between outputs, 1 at least.
	FilterShape(Design const& inDesign, double inScale)
		: mCutoff((1.0 + inDesign.mPass) / 2.0 / inScale),
		  mBeta(0.1102 * (inDesign.mAttenuation - 8.7))
	{
		// Kaiser's estimate of the length.
		double const transition = (1.0 - inDesign.mPass) / 2.0 / inScale;
		double const taps = (inDesign.mAttenuation - 7.95) / (14.36 * transition);
		mTaps = accelerate::kFilterTaps * static_cast<unsigned>(std::ceil(taps / accelerate::kFilterTaps));
		mTop = mCutoff / GetBessel(mBeta);
	}

	unsigned GetTaps() const { return mTaps; }

	// inDistance: in frames.
	double Get(double inDistance) const
	{
		double const place = 2.0 * inDistance / mTaps;
		if (std::abs(place) > 1.0)
		{
			return 0.0;
		}
		double const angle = std::numbers::pi * mCutoff * inDistance;
		double const sinc = angle == 0.0 ? 1.0 : zorvcore::math::Sin(angle) / angle;
		return mTop * sinc * GetBessel(mBeta * std::sqrt(1.0 - place * place));
	}

private:
	double mCutoff;
	double mBeta;
	// The value in the middle of the window, over that of its Bessel function.
	double mTop = 0.0;
	unsigned mTaps = 0;
};

struct RateTable::Key
{
	friend auto operator<=>(Key const&, Key const&) = default;

	RateQuality mQuality;
	// The step, 1 at least: a shorter one needs the same filter.
	Ratio mScale;
	// 0 where rows stand at a fixed distance.
	std::int64_t mPhases;
};

std::shared_ptr<RateTable const> RateTable::Get(
	Ratio const& inStep, std::int64_t inPhases, RateQuality inQuality)
{
	static std::mutex sMutex;
	static std::map<Key, std::weak_ptr<RateTable const>> sTables;

	Key key{inQuality, std::max({inStep, -inStep, Ratio(1)}), inPhases};
	Design const& design = inQuality == RateQuality::kFull ? kFullDesign : kDraftDesign;
	if (inPhases > kMostNumbers / FilterShape(design, key.mScale.ToDouble()).GetTaps())
	{
		key.mPhases = 0;
	}
	std::lock_guard const lock(sMutex);
	std::erase_if(sTables, [](auto const& inEntry) { return inEntry.second.expired(); });
	std::weak_ptr<RateTable const>& known = sTables[key];
	std::shared_ptr<RateTable const> table = known.lock();
	if (!table)
	{
		table.reset(new RateTable(key));
		known = table;
	}
	return table;
}

std::shared_ptr<RateTable const> RateTable::GetForAnyPhase(Ratio const& inStep, RateQuality inQuality)
{
	return Get(inStep, std::numeric_limits<std::int64_t>::max(), inQuality);
}

RateTable::RateTable(Key const& inKey)
	: mPhases(inKey.mPhases)
{
	Design const& design = inKey.mQuality == RateQuality::kFull ? kFullDesign : kDraftDesign;
	double const scale = inKey.mScale.ToDouble();
	FilterShape const shape(design, scale);
	mTaps = shape.GetTaps();
	mSteps = static_cast<unsigned>(std::ceil(design.mSteps / scale));
	std::int64_t const rows = mPhases != 0 ? mPhases : std::int64_t{4} * mSteps;
	mNumbers.reset(accelerate::Malloc_Float(static_cast<unsigned>(rows * mTaps)));
	if (mPhases != 0)
	{
		FillPhases(shape);
	}
	else
	{
		FillSteps(shape);
	}
}

void RateTable::FillPhases(FilterShape const& inShape)
{
	unsigned const half = mTaps / 2;
	double const last = half - 1.0;
	for (std::int64_t phase = 0; phase <= mPhases / 2; ++phase)
	{
		double const fraction = static_cast<double>(phase) / static_cast<double>(mPhases);
		float* const row = mNumbers.get() + phase * mTaps;
		for (unsigned tap = 0; tap < mTaps; ++tap)
		{
			row[tap] = static_cast<float>(inShape.Get(fraction + (last - tap)));
		}
		// As far in front of a frame as this one is after it.
		if (phase != 0 && 2 * phase != mPhases)
		{
			std::reverse_copy(row, row + mTaps, mNumbers.get() + (mPhases - phase) * mTaps);
		}
	}
}

void RateTable::FillSteps(FilterShape const& inShape)
{
	unsigned const half = mTaps / 2;
	double const last = half - 1.0;
	for (unsigned step = 0; step < mSteps; ++step)
	{
		float* const row = mNumbers.get() + std::size_t{4} * step * mTaps;
		for (unsigned tap = 0; tap < mTaps; ++tap)
		{
			double v[4];
			for (unsigned third = 0; third < 4; ++third)
			{
				v[third] = inShape.Get((step + third / 3.0) / mSteps + (last - tap));
			}
			double const lists[] = {v[0], (18.0 * v[1] - 11.0 * v[0] - 9.0 * v[2] + 2.0 * v[3]) / 2.0,
				(18.0 * v[0] - 45.0 * v[1] + 36.0 * v[2] - 9.0 * v[3]) / 2.0,
				(v[3] - v[0] + 3.0 * (v[1] - v[2])) * 4.5};
			for (unsigned list = 0; list < 4; ++list)
			{
				row[list * mTaps + tap] = static_cast<float>(lists[list]);
			}
		}
	}
}

accelerate::FilterPlace RateTable::FindBetween(
	std::int64_t inPhase, std::int64_t inPhases, unsigned inSample) const
{
	double const place = static_cast<double>(inPhase) / static_cast<double>(inPhases) * mSteps;
	unsigned const step = std::min(static_cast<unsigned>(place), mSteps - 1);
	return {4 * step * mTaps, inSample, 0, static_cast<float>(place - step)};
}

void RateTable::Filter(
	std::span<accelerate::FilterPlace const> inPlaces, float const* inInput, float* outOutputs) const
{
	auto const filter = mPhases != 0 ? &accelerate::FilterPlaces : &accelerate::FilterBetweenRows;
	filter(
		static_cast<unsigned>(inPlaces.size()), inPlaces.data(), mTaps, mNumbers.get(), inInput, outOutputs);
}

} // namespace SonaroHost
