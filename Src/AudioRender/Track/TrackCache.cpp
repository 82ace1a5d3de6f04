#include "AudioRender/Track/TrackCache.h"

#include "zorvcore/utility/Hash.h"

#include <cstdint>

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
	zorvcore::utility::HashValueMixerState state;
	auto const ticks = static_cast<std::int64_t>(inTime.GetTicks());
	zorvcore::utility::UpdateHashState(state, inSalt.data(), inSalt.size());
	zorvcore::utility::UpdateHashState(state, &inNumSamples, sizeof(inNumSamples));
	zorvcore::utility::UpdateHashState(state, &ticks, sizeof(ticks));
	zorvcore::utility::UpdateHashState(state, &inReverse, sizeof(inReverse));
	Guid digest;
	zorvcore::utility::GetHashResult(state, digest);
	return digest;
}

} // namespace SN
