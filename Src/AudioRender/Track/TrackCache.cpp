#include "AudioRender/Track/TrackCache.h"

#include "zorvcore/utility/Hash.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace SN
{

void TrackCache::Init(unsigned inNumChannels, unsigned inMaxSamples)
{
	mBuffer.Init(inNumChannels, inMaxSamples);
	mBuffer.Zero();
}

void TrackCache::MixInto(dsp::AudioBuffer& ioBuffer) const
{
	if (mKey != Guid() && !mBuffer.IsSilent())
	{
		ioBuffer.Mix(mBuffer);
	}
}

Guid TrackCache::HashRequest(
	std::string_view inSalt, unsigned inNumSamples, TickTime const& inTime, bool inReverse)
{
	std::int64_t const ticks = inTime.GetTicks();
	std::byte request[sizeof(inNumSamples) + sizeof(ticks) + sizeof(inReverse)];
	std::memcpy(request, &inNumSamples, sizeof(inNumSamples));
	std::memcpy(request + sizeof(inNumSamples), &ticks, sizeof(ticks));
	std::memcpy(request + sizeof(inNumSamples) + sizeof(ticks), &inReverse, sizeof(inReverse));
	zorvcore::utility::HashValueMixerState state;
	zorvcore::utility::UpdateHashState(state, inSalt.data(), inSalt.size());
	zorvcore::utility::UpdateHashState(state, request, sizeof(request));
	Guid digest;
	zorvcore::utility::GetHashResult(state, digest);
	return digest;
}

} // namespace SN
