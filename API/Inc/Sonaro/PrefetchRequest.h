#pragma once

#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/Types.h"

namespace SN
{

// One read to be done on the caller's thread.
struct SynchronousPrefetchRequest
{
	InterfaceRef<IAsyncAudioSource> source;
	// The position to read from.
	TickTime time;
	unsigned numSamples = 0;
};

namespace AudioPrefetch
{

// One piece of work for the prefetch thread.
struct PrefetchRequest
{
	static constexpr int kKindRead = 0;
	static constexpr int kKindPrepare = 1;

	// kKindRead for samples, kKindPrepare for a source that is to be ready for them.
	int kind = kKindRead;
	InterfaceRef<IAsyncAudioSource> source;
	// The position to read from.
	TickTime time;
	unsigned numSamples = 0;
};

} // namespace AudioPrefetch

} // namespace SN
