#include "zorvcore/utility/Hash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>
#include <new>

namespace zorvcore::utility
{

namespace
{

// Up to so many bytes, the algorithm has a short way for inputs that are there as a whole.
constexpr std::size_t kMostKept = XXH3_MIDSIZE_MAX;
// Stands for a longer input, of which there is a running state.
constexpr std::size_t kIsRunning = kMostKept + 1;

XXH3_state_t* GetRunning(std::byte* ioState)
{
	return std::launder(reinterpret_cast<XXH3_state_t*>(ioState));
}

XXH3_state_t const* GetRunning(std::byte const* inState)
{
	return std::launder(reinterpret_cast<XXH3_state_t const*>(inState));
}

} // namespace

void UpdateHashState(HashValueMixerState& ioState, void const* inData, std::size_t inSize) noexcept
{
	static_assert(sizeof(XXH3_state_t) == HashValueMixerState::kStateSize && alignof(XXH3_state_t) <= 64);
	if (inSize == 0)
	{
		return;
	}
	if (ioState.mKept != kIsRunning)
	{
		if (inSize <= kMostKept - ioState.mKept)
		{
			std::memcpy(ioState.mState + ioState.mKept, inData, inSize);
			ioState.mKept += inSize;
			return;
		}
		std::byte kept[kMostKept];
		std::memcpy(kept, ioState.mState, ioState.mKept);
		XXH3_state_t* const running = ::new (ioState.mState) XXH3_state_t;
		XXH3_128bits_reset(running);
		XXH3_128bits_update(running, kept, ioState.mKept);
		ioState.mKept = kIsRunning;
	}
	XXH3_128bits_update(GetRunning(ioState.mState), inData, inSize);
}

void GetHashResult(HashValueMixerState const& inState, Guid& outDigest) noexcept
{
	XXH128_hash_t const digest = inState.mKept == kIsRunning ? XXH3_128bits_digest(GetRunning(inState.mState))
															 : XXH3_128bits(inState.mState, inState.mKept);
	outDigest = Guid(digest.high64, digest.low64);
}

} // namespace zorvcore::utility
