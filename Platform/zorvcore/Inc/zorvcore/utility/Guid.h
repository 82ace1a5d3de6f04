#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace zorvcore::utility
{

// A 128-bit value: identifies an interface or class, or carries a digest. The default is all zero.
struct Guid
{
	constexpr Guid() = default;
	constexpr Guid(std::uint64_t inHigh, std::uint64_t inLow)
		: mHigh(inHigh),
		  mLow(inLow)
	{
	}

	friend constexpr auto operator<=>(Guid const&, Guid const&) = default;

	std::uint64_t mHigh = 0;
	std::uint64_t mLow = 0;
};

} // namespace zorvcore::utility

template <>
struct std::hash<zorvcore::utility::Guid>
{
	std::size_t operator()(zorvcore::utility::Guid const& inGuid) const noexcept
	{
		return static_cast<std::size_t>(inGuid.mHigh ^ (inGuid.mLow * 0x9E3779B97F4A7C15ull));
	}
};

// The spelling of query operations.
using GUID = zorvcore::utility::Guid;
