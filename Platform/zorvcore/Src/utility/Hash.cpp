#include "zorvcore/utility/Hash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <new>

namespace zorvcore::utility
{

HashValueMixerState::HashValueMixerState() noexcept
{
	static_assert(sizeof(XXH3_state_t) == kStateSize && alignof(XXH3_state_t) <= 64);
	XXH3_128bits_reset(::new (mState) XXH3_state_t);
}

void UpdateHashState(HashValueMixerState& ioState, void const* inData, std::size_t inSize) noexcept
{
	if (inSize != 0)
	{
		XXH3_128bits_update(std::launder(reinterpret_cast<XXH3_state_t*>(ioState.mState)), inData, inSize);
	}
}

void GetHashResult(HashValueMixerState const& inState, Guid& outDigest) noexcept
{
	XXH128_hash_t const digest =
		XXH3_128bits_digest(std::launder(reinterpret_cast<XXH3_state_t const*>(inState.mState)));
	outDigest = Guid(digest.high64, digest.low64);
}

} // namespace zorvcore::utility
