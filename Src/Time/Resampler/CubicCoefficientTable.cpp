#include "Time/Resampler/CubicCoefficientTable.h"

#include "zorvcore/threads/RecursiveMutex.h"

namespace SN
{

CubicCoefficientTable::CubicCoefficientTable()
{
	mCoefficients.reserve(4 * (kSteps + 1));
	float x = 0.0f;
	for (unsigned k = 0; k < kSteps; ++k)
	{
		// The fourth power stands where the usual cubic through four points has the third: the weights
		// still sum to 1, but are not symmetric.
		float const x2 = x * x;
		float const x4 = x2 * x2;
		mCoefficients.push_back(x2 - 0.5f * x4 - 0.5f * x);
		mCoefficients.push_back(1.0f - 2.5f * x2 + 1.5f * x4);
		mCoefficients.push_back(2.0f * x2 + 0.5f * x - 1.5f * x4);
		mCoefficients.push_back(0.5f * x4 - 0.5f * x2);
		x += 0.0009765625f;
	}
	for (unsigned k = 0; k < 4; ++k)
	{
		mCoefficients.push_back(mCoefficients[k]);
	}
}

std::shared_ptr<CubicCoefficientTable const> CubicCoefficientTable::GetShared()
{
	static zorvcore::threads::RecursiveMutex sMutex("CubicCoefficientTable");
	static std::weak_ptr<CubicCoefficientTable const> sPublished;

	zorvcore::threads::ScopedRecursiveLock const lock(sMutex, "CubicCoefficientTable::GetShared");
	std::shared_ptr<CubicCoefficientTable const> table = sPublished.lock();
	if (!table)
	{
		// The memory goes with the last resampler, not with the weak reference.
		table = std::shared_ptr<CubicCoefficientTable const>(new CubicCoefficientTable);
		sPublished = table;
	}
	return table;
}

} // namespace SN
