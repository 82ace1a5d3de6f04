#include "zorvaccelerate/Fourier.h"

#include "FourierTable.h"
#include "zorvaccelerate/FourierVariants.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>
#include <utility>

#define KERNEL_FILE "FourierKernels.inc"
#include "CompileForEachLevel.inc"
#include "zorvcore/math/Elementary.h"

namespace zorvaccelerate::utility
{

namespace
{

float* FillTurns(unsigned inPoints, unsigned inStride, float* outTurns)
{
	bool const isShared = inStride >= kSharedStride;
	unsigned const count = CountTurns(inPoints, inStride) / 6;
	for (unsigned i = 0; i < count; ++i)
	{
		double const part = isShared ? i : i / inStride;
		for (unsigned turn = 0; turn < 3; ++turn)
		{
			double const angle = 2.0 * std::numbers::pi * (turn + 1) * part * inStride / inPoints;
			std::size_t const cosine = isShared ? 6 * i + 2 * turn : 2 * turn * count + i;
			outTurns[cosine] = static_cast<float>(zorvcore::math::Cos(angle));
			outTurns[cosine + (isShared ? 1 : count)] = static_cast<float>(-zorvcore::math::Sin(angle));
		}
	}
	return outTurns + 6 * count;
}

} // namespace

std::vector<FourierVariant> RunnableFourierVariants()
{
	return sChoice.GetRunnable();
}

unsigned CountFourierTable(unsigned inSize)
{
	unsigned count = inSize / 2;
	for (unsigned stride = 1; stride < inSize / 2; stride *= 4)
	{
		count += CountTurns(inSize / 2, stride);
	}
	return count;
}

void FillFourierTable(unsigned inSize, float* outTable)
{
	unsigned const points = inSize / 2;
	float* table = outTable;
	for (unsigned stride = 1; stride < points; stride *= 4)
	{
		table = FillTurns(points, stride, table);
	}
	unsigned const quarter = inSize / 4;
	for (unsigned k = 0; k < quarter; ++k)
	{
		double const angle = 2.0 * std::numbers::pi * k / inSize;
		table[k] = static_cast<float>(zorvcore::math::Cos(angle));
		table[quarter + k] = static_cast<float>(zorvcore::math::Sin(angle));
	}
}

void TransformForward(FourierPlan const& inPlan, float* ioData)
{
	sChoice->mForward(inPlan, ioData);
}

void TransformInverse(FourierPlan const& inPlan, float* ioData)
{
	sChoice->mInverse(inPlan, ioData);
}

} // namespace zorvaccelerate::utility
