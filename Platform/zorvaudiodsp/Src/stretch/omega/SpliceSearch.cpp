#include "stretch/omega/SpliceSearch.h"

#include "stretch/omega/SampleHistory.h"
#include "stretch/omega/SincTable.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace dsp::stretch::omega
{

namespace
{

// Wider than the baseline's registers, which then work in halves: the lanes, and so the order of additions, are the
// same on every processor.
using Lanes = float __attribute__((vector_size(32)));
constexpr unsigned kLanes = 8;
// How many neighbouring distances are compared at a time.
constexpr unsigned kDistances = 4;
constexpr int kFineReach = 6;
constexpr int kSincReach = 16;
// Of a place near what is wanted that is more similar than this, others are not looked for.
constexpr double kNearEnough = 0.9;

[[gnu::always_inline]] inline void Load(float const* inSamples, Lanes& outLanes)
{
	std::memcpy(&outLanes, inSamples, sizeof(outLanes));
}

[[gnu::always_inline]] inline double SumOf(Lanes const& inLanes)
{
	return ((static_cast<double>(inLanes[0]) + inLanes[4]) + (static_cast<double>(inLanes[1]) + inLanes[5])) +
		   ((static_cast<double>(inLanes[2]) + inLanes[6]) + (static_cast<double>(inLanes[3]) + inLanes[7]));
}

// The products of inFirst with inSecond, and with it shifted by 1, 2 and 3. inCount is a multiple of 8.
void Correlate(float const* inFirst, float const* inSecond, unsigned inCount, double* outSums)
{
	Lanes sums[kDistances]{};
	for (unsigned i = 0; i < inCount; i += kLanes)
	{
		Lanes first;
		Load(inFirst + i, first);
		for (unsigned k = 0; k < kDistances; ++k)
		{
			Lanes second;
			Load(inSecond + i + k, second);
			sums[k] += first * second;
		}
	}
	for (unsigned k = 0; k < kDistances; ++k)
	{
		outSums[k] = SumOf(sums[k]);
	}
}

double EnergyOf(float const* inSamples, unsigned inCount)
{
	double sums[kDistances];
	Correlate(inSamples, inSamples, inCount, sums);
	return sums[0];
}

double Normalise(double inProduct, double inFirstEnergy, double inSecondEnergy)
{
	double const scale = inFirstEnergy * std::max(inSecondEnergy, 0.0);
	return scale > 1e-20 ? inProduct / std::sqrt(scale) : 0.0;
}

// Calls outTake(i, similarity) for the places inSecond + i, 0 <= i < inNumPlaces.
template <class Take>
void CompareAll(
	float const* inFirst, float const* inSecond, int inNumPlaces, unsigned inWindow, Take const& outTake)
{
	double const firstEnergy = EnergyOf(inFirst, inWindow);
	double energy = EnergyOf(inSecond, inWindow);
	for (int place = 0; place < inNumPlaces; place += static_cast<int>(kDistances))
	{
		double products[kDistances];
		Correlate(inFirst, inSecond + place, inWindow, products);
		for (int k = 0; k < static_cast<int>(kDistances) && place + k < inNumPlaces; ++k)
		{
			outTake(place + k, Normalise(products[k], firstEnergy, energy));
			auto const leaving = static_cast<double>(inSecond[place + k]);
			auto const coming = static_cast<double>(inSecond[place + k + static_cast<int>(inWindow)]);
			energy += coming * coming - leaving * leaving;
		}
	}
}

// The place of the largest value around the middle one of 2 * kSincReach + 1 that are a sample apart, by Newton's
// method on the curve through them.
double FindPeak(double const* inValues)
{
	SincTable const& table = SincTable::ForPlaces();
	auto const valueAt = [&](double inPlace)
	{
		double sum = 0.0;
		double weights = 0.0;
		for (int i = -kSincReach; i <= kSincReach; ++i)
		{
			auto const weight = static_cast<double>(table.Get(i - inPlace));
			sum += weight * inValues[i + kSincReach];
			weights += weight;
		}
		return sum / weights;
	};
	constexpr double step = 0.5;
	double place = 0.0;
	for (int i = 0; i < 4; ++i)
	{
		double const left = valueAt(place - step);
		double const middle = valueAt(place);
		double const right = valueAt(place + step);
		double const curvature = left - 2.0 * middle + right;
		if (!(curvature < 0.0))
		{
			break;
		}
		place = std::clamp(place - 0.5 * step * (right - left) / curvature, -0.75, 0.75);
	}
	return place;
}

// The best places of the first step, best first.
struct Places
{
	std::array<std::int64_t, 4> mPlaces{};
	std::array<double, 4> mScores{-9.0, -9.0, -9.0, -9.0};

	void Take(std::int64_t inPlace, double inScore)
	{
		for (unsigned i = 0; i < mPlaces.size(); ++i)
		{
			if (inScore > mScores[i])
			{
				std::copy_backward(mPlaces.begin() + i, mPlaces.end() - 1, mPlaces.end());
				std::copy_backward(mScores.begin() + i, mScores.end() - 1, mScores.end());
				mPlaces[i] = inPlace;
				mScores[i] = inScore;
				return;
			}
		}
	}
};

std::int64_t DivideDown(std::int64_t inValue, std::int64_t inDivisor)
{
	return inValue >= 0 ? inValue / inDivisor : -((-inValue + inDivisor - 1) / inDivisor);
}

// Far off what is wanted, only what is very similar is worth it: of a low tone, a whole period.
double Weigh(double inSimilarity, bool inIsFar)
{
	return inIsFar ? 1.0 - 10.0 * (1.0 - inSimilarity) : inSimilarity;
}

// Takes local maxima of the similarity on the coarse copy, between two places of the stream, those off what is wanted a
// little lower. What is taken are distances at the lower rate.
void SearchCoarsely(SampleHistory const& inCoarse, SpliceRange const& inRange, std::int64_t inLowest,
	std::int64_t inHighest, bool inIsFar, Places& ioPlaces)
{
	std::int64_t const from = DivideDown(inRange.mFrom, inRange.mDecimation);
	std::int64_t const lowest = DivideDown(inLowest - inRange.mFrom, inRange.mDecimation);
	std::int64_t const highest = DivideDown(inHighest - inRange.mFrom, inRange.mDecimation) + 1;
	unsigned const window = inRange.mWindow / inRange.mDecimation / kLanes * kLanes;
	double const slope = 0.01 * inRange.mDecimation / std::max(1.0, static_cast<double>(inRange.mNear));
	std::int64_t const wanted = DivideDown(inRange.mWanted - inRange.mFrom, inRange.mDecimation);
	double before = -9.0;
	double last = -9.0;
	CompareAll(inRange.mCoarse ? inRange.mCoarse : inCoarse.At(0, from), inCoarse.At(0, from + lowest),
		static_cast<int>(highest - lowest + 1), window,
		[&](int inIndex, double inSimilarity)
		{
			auto const off = static_cast<double>(std::llabs(lowest + inIndex - wanted));
			double const score = Weigh(inSimilarity, inIsFar) - slope * off;
			if (last >= before && last > score)
			{
				ioPlaces.Take(lowest + inIndex - 1, last);
			}
			before = last;
			last = score;
		});
	if (last >= before)
	{
		ioPlaces.Take(highest, last);
	}
}

// Far off what is wanted only where nothing near it is alike.
Places FindCoarsely(SampleHistory const& inCoarse, SpliceRange const& inRange)
{
	Places places;
	std::int64_t const lowest =
		std::clamp(inRange.mWanted - inRange.mNear, inRange.mLowest, inRange.mHighest);
	std::int64_t const highest = std::clamp(inRange.mWanted + inRange.mNear, lowest, inRange.mHighest);
	SearchCoarsely(inCoarse, inRange, lowest, highest, false, places);
	if (places.mScores[0] > kNearEnough)
	{
		return places;
	}
	if (inRange.mLowest < lowest)
	{
		SearchCoarsely(inCoarse, inRange, inRange.mLowest, lowest, true, places);
	}
	if (highest < inRange.mHighest)
	{
		SearchCoarsely(inCoarse, inRange, highest, inRange.mHighest, true, places);
	}
	return places;
}

} // namespace

unsigned SpliceSearch::GetDecimation(double inSampleRate)
{
	return inSampleRate >= 40000.0 ? 4 : inSampleRate >= 16000.0 ? 2 : 1;
}

void SpliceSearch::Decimate(SampleHistory const& inSound, unsigned inDecimation, SampleHistory& ioCoarse)
{
	// Low-passes, from their middles on, which leave enough of what lies below a quarter of the lower rate.
	static constexpr float kTaps[3][5] = {
		{1.0f}, {0.5f, 0.25f}, {0.2221f, 0.1663f, 0.0863f, 0.0238f, -0.0005f}};
	float const* const taps = kTaps[inDecimation / 2];
	for (std::int64_t position = ioCoarse.GetEnd() * inDecimation; position + 8 <= inSound.GetEnd();
		 position += inDecimation)
	{
		ioCoarse.Extend(1);
		float const* const samples = inSound.At(0, position);
		float sum = taps[0] * samples[0];
		for (int k = 1; k < 5; ++k)
		{
			sum += taps[k] * (samples[-k] + samples[k]);
		}
		*ioCoarse.At(0, ioCoarse.GetEnd() - 1) = sum;
	}
}

double SpliceSearch::Compare(
	SampleHistory const& inSound, std::int64_t inFirst, std::int64_t inSecond, unsigned inWindow)
{
	double similarity = 0.0;
	CompareAll(inSound.At(0, inFirst), inSound.At(0, inSecond), 1, inWindow / kLanes * kLanes,
		[&](int, double inSimilarity) { similarity = inSimilarity; });
	return similarity;
}

SpliceMatch SpliceSearch::Find(SampleHistory const& inSound, SampleHistory const& inCoarse,
	SpliceRange const& inRange, unsigned inNumPlaces)
{
	Places const places = FindCoarsely(inCoarse, inRange);
	unsigned const window = inRange.mWindow / kLanes * kLanes;
	float const* const from = inRange.mSound ? inRange.mSound : inSound.At(0, inRange.mFrom);
	std::int64_t best = inRange.mWanted;
	double bestScore = -9.0;
	double const slope =
		0.01 / static_cast<double>(std::max<std::int64_t>(1, inRange.mHighest - inRange.mLowest));
	for (unsigned i = 0; i < inNumPlaces && places.mScores[i] > -2.0; ++i)
	{
		std::int64_t const first = inRange.mFrom + places.mPlaces[i] * inRange.mDecimation - kFineReach;
		CompareAll(from, inSound.At(0, first), 2 * kFineReach + 1, window,
			[&](int inIndex, double inSimilarity)
			{
				std::int64_t const place = first + inIndex;
				std::int64_t const off = std::llabs(place - inRange.mWanted);
				double const score =
					Weigh(inSimilarity, off > inRange.mNear) - slope * static_cast<double>(off);
				if (score > bestScore && place >= inRange.mLowest && place <= inRange.mHighest)
				{
					best = place;
					bestScore = score;
				}
			});
	}
	std::array<double, 2 * kSincReach + 1> values{};
	CompareAll(from, inSound.At(0, best - kSincReach), 2 * kSincReach + 1, window,
		[&](int inIndex, double inSimilarity) { values[static_cast<unsigned>(inIndex)] = inSimilarity; });
	SpliceMatch match;
	match.mSimilarity = values[kSincReach];
	match.mDistance = static_cast<double>(best - inRange.mFrom);
	if (match.mSimilarity > 0.5)
	{
		match.mDistance += FindPeak(values.data());
	}
	return match;
}

} // namespace dsp::stretch::omega
