#include "Time/Scaler/ScalerSampleCounts.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace SN::ScalerSampleCounts
{

namespace
{

constexpr std::int64_t kStep = 512;
// The head start of the first block, slowed down and speeded up, with and without the step that every block has.
constexpr std::int64_t kSlowLead = 8704;
constexpr std::int64_t kFastLead = 25088;
constexpr std::int64_t kSlowHeadStart = kSlowLead - 2 * kStep;
constexpr std::int64_t kFastHeadStart = kFastLead - 2 * kStep;

// Whole steps. What is not a number, or too large for a count, becomes one that is.
std::int64_t ToSteps(double inCount)
{
	constexpr double kLargest = 1ll << 40;
	return inCount > 0.0 ? static_cast<std::int64_t>(std::min(inCount, kLargest)) & ~(kStep - 1) : 0;
}

unsigned ToCount(std::int64_t inCount)
{
	return static_cast<unsigned>(std::clamp<std::int64_t>(inCount, 0, std::numeric_limits<unsigned>::max()));
}

std::int64_t GetLead(double inRatio)
{
	return inRatio > 1.0 ? kSlowLead : kFastLead;
}

} // namespace

unsigned CountOutput(unsigned inNumInput, double inRatio, bool inIsFirstBlock)
{
	std::int64_t const outputs = ToSteps(inRatio * inNumInput);
	if (!inIsFirstBlock)
	{
		return ToCount(outputs + kStep);
	}
	std::int64_t const headStart = inRatio > 1.0 ? kSlowHeadStart : kFastHeadStart;
	return inNumInput < headStart + kStep ? 0 : ToCount(outputs - headStart);
}

unsigned CountInput(unsigned inNumOutput, double inRatio, bool inIsFirstBlock, unsigned inSurplus)
{
	std::int64_t const inputs = ToSteps(inNumOutput / inRatio);
	if (inIsFirstBlock)
	{
		return ToCount(inputs + GetLead(inRatio));
	}
	return inSurplus < inNumOutput ? ToCount(inputs + kStep) : 0;
}

unsigned CountMostInput(unsigned inNumOutput, double inRatio)
{
	std::int64_t const inputs = inRatio == 0.0 ? 0 : ToSteps(inNumOutput / inRatio);
	return ToCount(inputs + GetLead(inRatio));
}

} // namespace SN::ScalerSampleCounts
