#pragma once

namespace SN
{

// What a prefetch request is to do.
enum PrefetchType
{
	// Read now, on the caller's thread.
	SynchronousPrefetch = 0,
	// Read on the prefetch thread.
	AsynchronousPrefetch = 1,
	// Prepare on the prefetch thread, without reading.
	AsynchronousPrepareForPrefetch = 2,
};

} // namespace SN
