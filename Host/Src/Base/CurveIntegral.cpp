#include "CurveIntegral.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace SonaroHost
{

namespace
{

using Key = SpeedKey;
using boost::multiprecision::cpp_int;

cpp_int const& GetLargestWhole()
{
	static cpp_int const sLargest = std::numeric_limits<std::int64_t>::max();
	return sLargest;
}

bool Fits(cpp_int const& inNumber)
{
	return inNumber <= GetLargestWhole() && inNumber >= -GetLargestWhole();
}

// The nearest whole number, halves up.
cpp_int RoundQuotient(cpp_int const& inNumerator, cpp_int const& inDenominator)
{
	cpp_int const doubled = 2 * inNumerator + inDenominator;
	cpp_int const divisor = 2 * inDenominator;
	cpp_int const quotient = doubled / divisor;
	return quotient * divisor > doubled ? cpp_int(quotient - 1) : quotient;
}

// The way from a key on, after a time that lies before the next key.
Exact IntegrateFrom(Key const& inKey, Key const& inNext, Exact const& inPassed)
{
	Exact const speed = ToExact(inKey.mSpeed);
	Exact const length = ToExact(inNext.mTime) - ToExact(inKey.mTime);
	Exact const rise = ToExact(inNext.mSpeed) - speed;
	Exact const place = inPassed / length;
	switch (inKey.mInterpolation)
	{
	case Interpolation::kLinear:
		return inPassed * (speed + rise * place / 2);
	case Interpolation::kSmooth:
		return inPassed * (speed + rise * place * place * (1 - place / 2));
	default:
		return inPassed * speed;
	}
}

// As above, from the first key's position on, which is 0.
std::vector<Exact> IntegrateFromFirst(std::vector<Key> const& inKeys)
{
	std::vector<Exact> positions(1);
	for (std::size_t i = 1; i < inKeys.size(); ++i)
	{
		Exact const length = ToExact(inKeys[i].mTime) - ToExact(inKeys[i - 1].mTime);
		positions.push_back(positions.back() + IntegrateFrom(inKeys[i - 1], inKeys[i], length));
	}
	return positions;
}

Exact IntegrateFromFirst(
	std::vector<Key> const& inKeys, std::vector<Exact> const& inPositions, Ratio const& inTime)
{
	auto const next = std::ranges::upper_bound(inKeys, inTime, {}, &Key::mTime);
	if (next == inKeys.begin() || next == inKeys.end())
	{
		bool const isBefore = next == inKeys.begin();
		Key const& edge = isBefore ? inKeys.front() : inKeys.back();
		Exact const& position = isBefore ? inPositions.front() : inPositions.back();
		return position + (ToExact(inTime) - ToExact(edge.mTime)) * ToExact(edge.mSpeed);
	}
	Key const& key = *std::prev(next);
	return inPositions[static_cast<std::size_t>(next - inKeys.begin()) - 1] +
		   IntegrateFrom(key, *next, ToExact(inTime) - ToExact(key.mTime));
}

} // namespace

Exact ToExact(Ratio const& inRatio)
{
	return {cpp_int(inRatio.GetNumerator()), cpp_int(inRatio.GetDenominator())};
}

Ratio RoundToRatio(Exact const& inNumber)
{
	cpp_int const numerator = boost::multiprecision::numerator(inNumber);
	cpp_int const denominator = boost::multiprecision::denominator(inNumber);
	if (Fits(numerator) && Fits(denominator))
	{
		return {static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator)};
	}
	constexpr int kFinestBits = 44;
	for (int bits = kFinestBits; bits >= 0; --bits)
	{
		cpp_int const rounded = RoundQuotient(numerator << static_cast<unsigned>(bits), denominator);
		if (Fits(rounded))
		{
			return {static_cast<std::int64_t>(rounded), std::int64_t{1} << bits};
		}
	}
	constexpr std::int64_t kSaturated = std::int64_t{1} << 62;
	return Ratio(numerator < 0 ? -kSaturated : kSaturated);
}

std::vector<Exact> IntegrateToKeys(std::vector<Key> const& inKeys)
{
	std::vector<Exact> positions = IntegrateFromFirst(inKeys);
	Exact const start = IntegrateFromFirst(inKeys, positions, Ratio());
	for (Exact& position : positions)
	{
		position -= start;
	}
	return positions;
}

Exact Integrate(std::vector<Key> const& inKeys, Ratio const& inTime)
{
	std::vector<Exact> const positions = IntegrateFromFirst(inKeys);
	return IntegrateFromFirst(inKeys, positions, inTime) - IntegrateFromFirst(inKeys, positions, Ratio());
}

} // namespace SonaroHost
