#pragma once

#include "Support/SameBits.h"

#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

// What the tests of kernels share.
namespace zorvaccelerate::utility
{

inline constexpr unsigned kGuard = 16;
inline constexpr float kGuardValue = -77.25f;

// What breaks arithmetic that is only nearly right, among ordinary values.
inline float AwkwardValue(std::mt19937& ioRandom)
{
	using Limits = std::numeric_limits<float>;
	switch (ioRandom() % 10)
	{
	case 0:
		return 0.0f;
	case 1:
		return -0.0f;
	case 2:
		return Limits::denorm_min() * static_cast<float>(1 + ioRandom() % 100);
	case 3:
		return ioRandom() % 2 == 0 ? Limits::infinity() : -Limits::infinity();
	case 4:
		return Limits::quiet_NaN();
	case 5:
		return Limits::max();
	default:
		return std::ldexp(
			static_cast<float>(ioRandom() % 2000001) - 1000000.0f, static_cast<int>(ioRandom() % 30) - 35);
	}
}

// An array at an offset from an aligned address, between guards that nobody may touch.
class GuardedArray
{
public:
	GuardedArray(unsigned inCount, unsigned inOffset, std::mt19937& ioRandom)
		: mCount(inCount),
		  mOffset(inOffset),
		  mMemory(Malloc_Float(kGuard + inOffset + inCount + kGuard))
	{
		std::fill_n(mMemory, GetSize(), kGuardValue);
		for (unsigned i = 0; i < inCount; ++i)
		{
			Data()[i] = AwkwardValue(ioRandom);
		}
	}
	~GuardedArray() { Free(mMemory); }
	GuardedArray(GuardedArray const&) = delete;
	GuardedArray& operator=(GuardedArray const&) = delete;

	float* Data() { return mMemory + kGuard + mOffset; }
	std::vector<float> Values() { return {Data(), Data() + mCount}; }
	bool GuardsAreWhole() const
	{
		for (unsigned i = 0; i < GetSize(); ++i)
		{
			bool const inside = i >= kGuard + mOffset && i < kGuard + mOffset + mCount;
			if (!inside && mMemory[i] != kGuardValue)
			{
				return false;
			}
		}
		return true;
	}

private:
	unsigned GetSize() const { return kGuard + mOffset + mCount + kGuard; }

	unsigned mCount;
	unsigned mOffset;
	float* mMemory;
};

// Volatile keeps each step's rounding apart, whatever the compiler would like to do.
inline float Rounded(float inValue)
{
	float volatile const value = inValue;
	return value;
}

} // namespace zorvaccelerate::utility
