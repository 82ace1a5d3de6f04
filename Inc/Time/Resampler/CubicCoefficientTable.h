#pragma once

#include <memory>
#include <vector>

namespace SN
{

// The weights of four neighbouring samples at 1024 steps between the two in the middle. One table serves
// all cubic resamplers of the process and goes with the last of them.
//
// Threads   GetShared from any thread, under a lock. The table itself is never written again.
class CubicCoefficientTable
{
public:
	static constexpr unsigned kSteps = 1024;

	CubicCoefficientTable();

	static std::shared_ptr<CubicCoefficientTable const> GetShared();

	// The four weights of step k stand from 4 * k on. Step 1024 repeats step 0.
	float const* GetCoefficients() const { return mCoefficients.data(); }

private:
	std::vector<float> mCoefficients;
};

} // namespace SN
