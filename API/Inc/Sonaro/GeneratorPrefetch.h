#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/PrefetchRange.h"
#include "Sonaro/PrefetchRequest.h"
#include "Sonaro/PrefetchType.h"
#include "Sonaro/Types.h"

#include <vector>

namespace SN
{

// Drives one prefetch through a graph: queues what can be read on the prefetch thread and, for
// SynchronousPrefetch, reads the rest on the calling thread, which returns when that is done. inTimeStamp:
// see AudioPrefetch::PrefetchAudio. Raises the null-pointer exception without a generator and while the
// engine's module is stopped.
SONARO_API void PrefetchFromAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
	PrefetchRange const& inRange, PrefetchType inType, unsigned long long inTimeStamp);

// Reads the requests in their order on the calling thread. An empty source raises the null-pointer
// exception.
SONARO_API void ProcessSynchronousPrefetchRequests(
	std::vector<SynchronousPrefetchRequest> const& inRequests, unsigned long long inTimeStamp);

} // namespace SN
