#include "RampConverter.h"

#include "RateTable.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Media/RateConverter.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

namespace SonaroHost
{

namespace
{

namespace accelerate = zorvaccelerate::utility;

constexpr double kFiltersPerOctave = 16.0;
// Steps of filters are multiples of a part of so many, so that converters share their tables.
constexpr std::int64_t kStepParts = 4096;
constexpr int kFadesPerSecond = 200;
// Beyond the outputs that there can be, in seconds.
constexpr std::int64_t kFarSeconds = std::int64_t{1} << 42;

Ratio GetFilterStep(std::size_t inFilter)
{
	double const step = zorvcore::math::Exp2(static_cast<double>(inFilter) / kFiltersPerOctave);
	return {std::llround(step * static_cast<double>(kStepParts)), kStepParts};
}

// The step below which the first filter alone is used: as far below 1 as the second one is above.
double GetLowestBlended()
{
	return 1.0 / GetFilterStep(1).ToDouble();
}

} // namespace

RampConverter::RampConverter(
	SpeedCurve const& inCurve, CurvePositions::Settings const& inPositions, RateQuality inQuality)
	: mPositions(inCurve, inPositions),
	  mLowestBlended(GetLowestBlended())
{
	if (mPositions.GetLargestStep() > static_cast<double>(RateConverter::kLargestStep))
	{
		throw HostError(HostError::Kind::kRequest, "audio cannot be read at " +
													   FormatNumber(mPositions.GetLargestStep()) +
													   " samples for each output sample; use 1000 at most");
	}
	AddFilters(inQuality);
	AddStops(inCurve, inPositions);
	mTaps = mFilters.back().mTable->GetTaps();
}

// All up to the two between which the largest step lies.
void RampConverter::AddFilters(RateQuality inQuality)
{
	double const largest = mPositions.GetLargestStep();
	auto const add = [&]
	{
		Ratio const step = GetFilterStep(mFilters.size());
		mFilters.push_back({step.ToDouble(), RateTable::GetForAnyPhase(step, inQuality)});
	};
	add();
	while (mFilters.back().mStep < largest)
	{
		add();
	}
	if (largest > mLowestBlended)
	{
		add();
	}
}

void RampConverter::AddStops(SpeedCurve const& inCurve, CurvePositions::Settings const& inPositions)
{
	Ratio const& rate = inPositions.mOutputRate;
	mFadeFrames = std::max<std::int64_t>((rate / Ratio(kFadesPerSecond)).Round(), 1);
	Ratio const far = Ratio(kFarSeconds) / rate;
	for (SpeedCurve::Span const& stop : inCurve.FindStops(far))
	{
		mStops.push_back({inPositions.mOrigin + (stop.mFirst * rate).Floor(),
			inPositions.mOrigin + (stop.mLast * rate).Floor() + 1});
	}
}

RampConverter::Blend RampConverter::FindBlend(double inStep) const
{
	// Below the step of a filter, the next one takes its place by and by.
	double const step = std::min(inStep, mPositions.GetLargestStep());
	if (step <= mLowestBlended)
	{
		return {};
	}
	auto const filter = std::ranges::lower_bound(mFilters, step, {}, &Filter::mStep);
	double const low = filter == mFilters.begin() ? mLowestBlended : std::prev(filter)->mStep;
	return {static_cast<std::size_t>(filter - mFilters.begin()),
		static_cast<float>((step - low) / (filter->mStep - low))};
}

SampleConverter::Span RampConverter::GetInput(std::int64_t inFirst, std::int64_t inCount) const
{
	auto const [first, end] = mPositions.GetSpan(inFirst, inCount);
	std::int64_t const half = mTaps / 2;
	return {first - half + 1, end + half};
}

std::int64_t RampConverter::CountInput(std::int64_t inOutputs) const
{
	return mTaps + 1 +
		   static_cast<std::int64_t>(std::ceil(static_cast<double>(inOutputs) * mPositions.GetLargestStep()));
}

std::int64_t RampConverter::CountOutputs(std::int64_t inFrames) const
{
	// One frame more may lie between the first and the last place.
	double const room = static_cast<double>(inFrames) - mTaps - 1.0;
	double const step = mPositions.GetLargestStep();
	constexpr double kMost = 1.0e9;
	return room < 0.0 || step == 0.0 ? 1 : 1 + static_cast<std::int64_t>(std::min(room / step, kMost));
}

void RampConverter::Convert(std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const
{
	if (inCount == 0)
	{
		return;
	}
	std::int64_t const start = GetInput(inFirst, inCount).mFirst;
	Group group;
	for (unsigned done = 0; done < inCount; done += group.mCount)
	{
		Gather(inFirst + done, inCount - done, group);
		Convert(group, start, done, inChannels);
	}
	FadeAtStops(inFirst, inCount, inChannels);
}

void RampConverter::Gather(std::int64_t inFirst, unsigned inMost, Group& outGroup) const
{
	outGroup.mCount = 0;
	for (unsigned i = 0; i < std::min(inMost, kGroup); ++i)
	{
		Blend const blend = FindBlend(std::abs(mPositions.GetStep(inFirst + i)));
		if (i == 0)
		{
			outGroup.mFilter = blend.mFilter;
		}
		else if (blend.mFilter != outGroup.mFilter)
		{
			break;
		}
		outGroup.mPlaces[i] = mPositions.Find(inFirst + i);
		outGroup.mShares[i] = blend.mShare;
		outGroup.mCount = i + 1;
	}
}

void RampConverter::Convert(
	Group const& inGroup, std::int64_t inStart, unsigned inIndex, std::span<Channel const> inChannels) const
{
	bool const isBlended = std::any_of(inGroup.mShares.begin(), inGroup.mShares.begin() + inGroup.mCount,
		[](float inShare) { return inShare != 0.0f; });
	std::array<accelerate::FilterPlace, kGroup> places;
	std::array<float, kGroup> others;
	for (unsigned filter = 0; filter < (isBlended ? 2U : 1U); ++filter)
	{
		RateTable const& table = *mFilters[inGroup.mFilter + filter].mTable;
		std::int64_t const before = table.GetTaps() / 2 - 1;
		for (unsigned i = 0; i < inGroup.mCount; ++i)
		{
			CurvePositions::Place const& place = inGroup.mPlaces[i];
			places[i] = table.Find(static_cast<std::int64_t>(place.mFraction >> 2), std::int64_t{1} << 62,
				static_cast<unsigned>(place.mWhole - before - inStart));
			places[i].mOutput = i;
		}
		for (Channel const& channel : inChannels)
		{
			float* const output = channel.mOutput + inIndex;
			table.Filter(
				{places.data(), inGroup.mCount}, channel.mInput, filter == 0 ? output : others.data());
			for (unsigned i = 0; filter == 1 && i < inGroup.mCount; ++i)
			{
				output[i] += inGroup.mShares[i] * (others[i] - output[i]);
			}
		}
	}
}

void RampConverter::FadeAtStops(
	std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const
{
	std::int64_t const end = inFirst + inCount;
	for (Stop const& stop : mStops)
	{
		std::int64_t const first = std::max(stop.mFirst - mFadeFrames, inFirst);
		std::int64_t const last = std::min(stop.mEnd + mFadeFrames, end);
		for (std::int64_t output = first; output < last; ++output)
		{
			std::int64_t const distance =
				std::max({stop.mFirst - output, output - stop.mEnd + 1, std::int64_t{0}});
			float const gain = static_cast<float>(distance) / static_cast<float>(mFadeFrames);
			for (Channel const& channel : inChannels)
			{
				channel.mOutput[output - inFirst] *= gain;
			}
		}
	}
}

} // namespace SonaroHost
