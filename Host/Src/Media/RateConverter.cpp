#include "SonaroHost/Media/RateConverter.h"

#include "Base/WideNumber.h"
#include "RateTable.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvaccelerate/Resampling.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>

namespace SonaroHost
{

namespace
{

namespace accelerate = zorvaccelerate::utility;

// Outputs that are made at a time.
constexpr unsigned kGroup = 64;

// Phases of positions up to this many are counted apart; it leaves room for the products of positions.
constexpr std::int64_t kMostPhases = std::int64_t{1} << 62;
constexpr std::int64_t kFinest = std::int64_t{1} << 30;

Ratio CheckStep(Ratio const& inStep)
{
	Ratio const largest(RateConverter::kLargestStep);
	if (inStep == Ratio() || inStep > largest || inStep < -largest)
	{
		throw HostError(
			HostError::Kind::kRequest, "audio cannot be read at " + std::to_string(inStep.ToDouble()) +
										   " samples for each output sample; use 1000 at most, and not 0");
	}
	return inStep;
}

// An offset whose denominator fits in with that of the step.
Ratio LimitOffset(Ratio const& inOffset, std::int64_t inStepDenominator)
{
	std::int64_t const common = std::gcd(inOffset.GetDenominator(), inStepDenominator);
	if (inOffset.GetDenominator() / common <= kMostPhases / inStepDenominator)
	{
		return inOffset;
	}
	std::int64_t const finest = std::max(kFinest, inStepDenominator);
	return {(inOffset * Ratio(finest)).Round(), finest};
}

} // namespace

RateConverter::RateConverter(Ratio const& inStep, Position const& inFirst, RateQuality inQuality)
{
	Ratio const step = CheckStep(inStep);
	Ratio const whole(inFirst.mOffset.Floor());
	Ratio const offset = LimitOffset(inFirst.mOffset - whole, step.GetDenominator());
	mFrame = inFirst.mFrame + whole.GetNumerator();
	mPhases = std::lcm(step.GetDenominator(), offset.GetDenominator());
	mStart = Wide{offset.GetNumerator()} * (mPhases / offset.GetDenominator());
	mStride = Wide{step.GetNumerator()} * (mPhases / step.GetDenominator());
	mPeriod = step.GetDenominator();
	mPeriodFrames = step.GetNumerator();
	mTable = RateTable::Get(step, mPhases, inQuality);
}

unsigned RateConverter::GetTaps() const
{
	return mTable->GetTaps();
}

RateConverter::Place RateConverter::Find(std::int64_t inOutput) const
{
	Wide const position = mStart + mStride * inOutput;
	Wide const frame = FloorDivide(position, mPhases);
	return {mFrame + static_cast<std::int64_t>(frame), static_cast<std::int64_t>(position - frame * mPhases)};
}

RateConverter::Span RateConverter::GetInput(std::int64_t inFirst, std::int64_t inCount) const
{
	std::int64_t const a = Find(inFirst).mFrame;
	std::int64_t const b = Find(inFirst + inCount - 1).mFrame;
	std::int64_t const half = GetTaps() / 2;
	return {std::min(a, b) - half + 1, std::max(a, b) + half + 1};
}

std::int64_t RateConverter::CountInput(std::int64_t inOutputs) const
{
	auto const [first, end] = GetInput(0, inOutputs);
	// One frame more may lie between the first and the last position of others.
	return end - first + 1;
}

std::int64_t RateConverter::CountOutputs(std::int64_t inFrames) const
{
	// One frame more may lie between the first and the last position, wherever these begin.
	Wide const room = Wide{inFrames - GetTaps()} - 1;
	Wide const stride = mStride < 0 ? -mStride : mStride;
	Wide const outputs = room < 0 ? 1 : 1 + room * mPhases / stride;
	return static_cast<std::int64_t>(std::min<Wide>(outputs, kMostPhases));
}

void RateConverter::Convert(std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const
{
	if (inCount == 0)
	{
		return;
	}
	std::int64_t const base = GetInput(inFirst, inCount).mFirst + GetTaps() / 2 - 1;
	Wide const strideFrames = FloorDivide(mStride, mPhases);
	auto const phases = static_cast<std::int64_t>(mStride - strideFrames * mPhases);
	Place place = Find(inFirst);
	std::array<accelerate::FilterPlace, kGroup> places;
	unsigned filled = 0;
	auto const filter = [&]
	{
		for (Channel const& channel : inChannels)
		{
			mTable->Filter({places.data(), filled}, channel.mInput, channel.mOutput);
		}
		filled = 0;
	};
	// Phase by phase, so that the coefficients of one stay at hand.
	for (std::int64_t first = 0; first < std::min<std::int64_t>(mPeriod, inCount); ++first)
	{
		accelerate::FilterPlace next =
			mTable->Find(place.mPhase, mPhases, static_cast<unsigned>(place.mFrame - base));
		for (std::int64_t output = first; output < inCount; output += mPeriod)
		{
			next.mOutput = static_cast<unsigned>(output);
			places[filled++] = next;
			next.mSample += static_cast<unsigned>(mPeriodFrames);
			if (filled == kGroup)
			{
				filter();
			}
		}
		place.mFrame += static_cast<std::int64_t>(strideFrames);
		place.mPhase += phases;
		if (place.mPhase >= mPhases)
		{
			place.mPhase -= mPhases;
			++place.mFrame;
		}
	}
	filter();
}

} // namespace SonaroHost
