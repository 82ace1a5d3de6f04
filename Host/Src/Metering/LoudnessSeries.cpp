#include "SonaroHost/Metering/LoudnessSeries.h"

#include "LoudnessGate.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr std::size_t kStepsOfMoment = 4;
constexpr std::size_t kStepsOfShortTerm = 30;
// The gates of the loudness range: in LUFS, and as a part of the mean power.
constexpr double kAbsoluteRangeGate = -70.0;
constexpr double kRelativeRangeGate = 0.01;
constexpr double kLowPercentile = 0.1;
constexpr double kHighPercentile = 0.95;

// inSorted: not empty.
double GetPercentile(std::vector<double> const& inSorted, double inPart)
{
	return inSorted[static_cast<std::size_t>(std::lround(static_cast<double>(inSorted.size() - 1) * inPart))];
}

} // namespace

LoudnessSeries::LoudnessSeries(
	double inStepSeconds, std::vector<float> inPowers, Maximum inMomentary, Maximum inShortTerm)
	: mStepSeconds(inStepSeconds),
	  mPowers(std::move(inPowers)),
	  mMomentaryMaximum(inMomentary),
	  mShortTermMaximum(inShortTerm)
{
}

double LoudnessSeries::GetMomentary(std::size_t inStep) const
{
	return GetRecent(inStep, kStepsOfMoment);
}

double LoudnessSeries::GetShortTerm(std::size_t inStep) const
{
	return GetRecent(inStep, kStepsOfShortTerm);
}

double LoudnessSeries::GetRecent(std::size_t inStep, std::size_t inSteps) const
{
	if (inStep + 1 < inSteps)
	{
		return LoudnessReading::kSilent;
	}
	auto const end = mPowers.begin() + static_cast<std::ptrdiff_t>(inStep) + 1;
	return ToLoudness(
		std::accumulate(end - static_cast<std::ptrdiff_t>(inSteps), end, 0.0) / static_cast<double>(inSteps));
}

std::vector<double> LoudnessSeries::ListIntegrated(std::size_t inStride) const
{
	LoudnessGate gate(LoudnessMemory::kFixed);
	std::vector<double> list;
	for (std::size_t step = 0; step < mPowers.size(); ++step)
	{
		gate.Add(static_cast<double>(mPowers[step]));
		if ((step + 1) % inStride == 0 || step + 1 == mPowers.size())
		{
			list.push_back(gate.GetLoudness());
		}
	}
	return list;
}

std::optional<double> LoudnessSeries::GetRange() const
{
	std::vector<double> values;
	for (std::size_t step = 0; step < mPowers.size(); ++step)
	{
		if (double const loudness = GetShortTerm(step); loudness >= kAbsoluteRangeGate)
		{
			values.push_back(loudness);
		}
	}
	if (values.empty())
	{
		return std::nullopt;
	}
	double const power = std::accumulate(values.begin(), values.end(), 0.0,
		[](double inSum, double inLoudness) { return inSum + ToPower(inLoudness); });
	double const gate = ToLoudness(kRelativeRangeGate * power / static_cast<double>(values.size()));
	std::erase_if(values, [gate](double inLoudness) { return inLoudness < gate; });
	std::ranges::sort(values);
	return GetPercentile(values, kHighPercentile) - GetPercentile(values, kLowPercentile);
}

} // namespace SonaroHost
