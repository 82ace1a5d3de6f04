#include "zorvaccelerate/Metering.h"

#include "zorvaccelerate/MeteringVariants.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

namespace zorvaccelerate::utility
{

namespace
{

using Float4 = float __attribute__((vector_size(16)));
using Float8 = float __attribute__((vector_size(32)));

// More than a point can be off by rounding, relative to the sum of the magnitudes of its taps times the largest sample.
constexpr float kRounding = 1.0e-5f;

// Pairs of taps of the points at quarters.
constexpr unsigned kQuarterPairs = 6;
constexpr unsigned kMiddlePairs = InterpolationTaps::kMiddlePairs;

// The samples in front of a point that it depends on, in whole vectors of any width.
constexpr int GetReach(unsigned inPairs)
{
	return inPairs == kQuarterPairs ? 16 : 32;
}

// Which element of two vectors, in a row, an exchange between four by four elements puts at inIndex: of each, the lower
// (0) or the higher (1) half, in turns of inRun elements.
constexpr int GetExchanged(int inWidth, int inIndex, int inHalf, int inRun)
{
	int const block = inIndex / 4 * 4;
	int const place = inIndex % 4;
	bool const isSecond = place / inRun % 2 == 1;
	int const source = inRun == 1 ? place / 2 : place % 2;
	return block + source + 2 * inHalf + (isSecond ? inWidth : 0);
}

} // namespace

} // namespace zorvaccelerate::utility

#define KERNEL_FILE "MeteringKernels.inc"
#include "CompileForEachLevel.inc"

namespace zorvaccelerate::utility
{

std::vector<MeteringVariant> RunnableMeteringVariants()
{
	return sChoice.GetRunnable();
}

float CopyPlausible(unsigned inCount, float const* inInput, float* outOutput)
{
	return sChoice->mCopyPlausible(inCount, inInput, outOutput);
}

void FilterLanes(unsigned inCount, unsigned inLanes, float const* const* inInputs, LaneFilter const& inFilter,
	LaneStates& ioStates, float* outFiltered)
{
	sChoice->mFilterLanes(inCount, inLanes, inInputs, inFilter, ioStates, outFiltered);
}

float FindInterpolatedPeak(
	unsigned inCount, float const* inSamples, InterpolationTaps const& inTaps, float inPeak)
{
	return sChoice->mFindInterpolatedPeak(inCount, inSamples, inTaps, inPeak);
}

} // namespace zorvaccelerate::utility
