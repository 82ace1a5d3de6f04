#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/utility/Guid.h"

#include <cstddef>

namespace zorvcore::utility
{

// The running state of a 128-bit digest of a byte sequence (XXH3, seed 0). How the bytes are cut into
// updates does not matter. It lives by value and never allocates, and copies go on independently: fit for
// the render path.
class ZORV_API HashValueMixerState
{
public:
	HashValueMixerState() noexcept {}

private:
	friend ZORV_API void UpdateHashState(
		HashValueMixerState& ioState, void const* inData, std::size_t inSize) noexcept;
	friend ZORV_API void GetHashResult(HashValueMixerState const& inState, Guid& outDigest) noexcept;

	static constexpr std::size_t kStateSize = 576;

	// The bytes themselves while they are few, then the algorithm's running state.
	alignas(64) std::byte mState[kStateSize];
	// How many these are; one number above the few for a running state.
	std::size_t mKept = 0;
};

// Appends inSize bytes; inData may be null when there are none.
ZORV_API void UpdateHashState(HashValueMixerState& ioState, void const* inData, std::size_t inSize) noexcept;

// The digest of all bytes so far. The state may be updated further.
ZORV_API void GetHashResult(HashValueMixerState const& inState, Guid& outDigest) noexcept;

} // namespace zorvcore::utility
