#pragma once

#include "CurveIntegral.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace SonaroHost
{

// A polynomial of degree 4 over whole numbers, in integers of 256 bits, 192 of them after the point: its values are the
// same bits everywhere, and right to 2^-50 for numbers up to 2^35. Values and intermediate results stay below 2^62.
class FixedPolynomial
{
public:
	static constexpr std::size_t kCoefficients = 5;

	// A number in two parts, the second one in parts of 2^64.
	struct Value
	{
		std::int64_t mWhole = 0;
		std::uint64_t mFraction = 0;
	};

	// inCoefficients: that of x^k at k.
	explicit FixedPolynomial(std::array<Exact, kCoefficients> const& inCoefficients);

	Value operator()(std::int64_t inX) const;

private:
	// In two's complement, the lowest part first.
	using Number = std::array<std::uint64_t, 4>;

	static Number MakeNumber(Exact const& inNumber);
	static Number MultiplyAdd(Number const& inA, std::int64_t inX, Number const& inB);

	std::array<Number, kCoefficients> mCoefficients{};
	// The highest one that is not 0.
	std::size_t mDegree = 0;
};

} // namespace SonaroHost
