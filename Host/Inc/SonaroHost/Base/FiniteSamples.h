#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

// Looks for samples that are infinite or not a number.
namespace SonaroHost
{

// Collects samples; its form lets compilers look at several at a time.
class FiniteCheck
{
public:
	void Add(float inSample)
	{
		// The exponents of what is infinite or not a number have all their bits set; one more carries into the sign.
		mBits |= (std::bit_cast<std::uint32_t>(inSample) & 0x7FFFFFFF) + 0x00800000;
	}
	bool IsFinite() const { return (mBits & 0x80000000) == 0; }

private:
	std::uint32_t mBits = 0;
};

inline bool AreFinite(float const* inSamples, std::size_t inCount)
{
	FiniteCheck check;
	for (std::size_t i = 0; i < inCount; ++i)
	{
		check.Add(inSamples[i]);
	}
	return check.IsFinite();
}

// The index of the first one that is not finite; inCount for none.
inline std::size_t FindNotFinite(float const* inSamples, std::size_t inCount)
{
	for (std::size_t i = 0; i < inCount; ++i)
	{
		if (!AreFinite(inSamples + i, 1))
		{
			return i;
		}
	}
	return inCount;
}

} // namespace SonaroHost
