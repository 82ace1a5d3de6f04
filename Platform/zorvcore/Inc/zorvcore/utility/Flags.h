#pragma once

#include <concepts>

namespace zorvcore::utility
{

// A set of flags in the bits of an unsigned integer; flag i is bit i. Indices beyond the width are
// never set and are ignored by writes.
template <std::unsigned_integral T>
class Flags
{
public:
	constexpr Flags() = default;
	constexpr explicit Flags(T inMask)
		: mMask(inMask)
	{
	}

	static constexpr unsigned kCount = sizeof(T) * 8;

	static constexpr Flags All() { return Flags(static_cast<T>(~T(0))); }

	// The lowest inCount flags set; all of them from kCount on.
	static constexpr Flags First(unsigned long long inCount)
	{
		return inCount >= kCount ? All() : Flags(static_cast<T>((T(1) << inCount) - 1));
	}

	constexpr T GetMask() const { return mMask; }
	constexpr bool Test(unsigned long long inIndex) const
	{
		return inIndex < kCount && ((mMask >> inIndex) & T(1)) != 0;
	}
	constexpr void Set(unsigned long long inIndex) { mMask = static_cast<T>(mMask | Bit(inIndex)); }
	constexpr void Clear(unsigned long long inIndex) { mMask = static_cast<T>(mMask & ~Bit(inIndex)); }
	constexpr void Assign(unsigned long long inIndex, bool inValue)
	{
		inValue ? Set(inIndex) : Clear(inIndex);
	}
	constexpr bool Any() const { return mMask != 0; }

	friend constexpr Flags operator|(Flags inA, Flags inB)
	{
		return Flags(static_cast<T>(inA.mMask | inB.mMask));
	}
	friend constexpr Flags operator&(Flags inA, Flags inB)
	{
		return Flags(static_cast<T>(inA.mMask & inB.mMask));
	}
	friend constexpr Flags operator~(Flags inA) { return Flags(static_cast<T>(~inA.mMask)); }
	friend constexpr bool operator==(Flags, Flags) = default;
	constexpr Flags& operator|=(Flags inOther) { return *this = *this | inOther; }
	constexpr Flags& operator&=(Flags inOther) { return *this = *this & inOther; }

private:
	static constexpr T Bit(unsigned long long inIndex)
	{
		return inIndex < kCount ? static_cast<T>(T(1) << inIndex) : T(0);
	}

	T mMask = 0;
};

} // namespace zorvcore::utility
