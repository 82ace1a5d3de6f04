#pragma once

#include "Sonaro/PrefetchRequest.h"
#include "Sonaro/PrefetchType.h"
#include "Sonaro/Types.h"

#include <vector>

namespace SN
{

// Sorts the requests of one walk of a graph into two lists that the caller owns.
//
// Lists    Either may be null: requests of that kind are then lost, and that is no drop.
// Room     A list's capacity is the vector's own: with FixedCapacity the caller reserves beforehand, a
//          full list drops the request, and nothing allocates.
// Threads  One, for one walk.
class SONARO_API PrefetchRequestAccumulator
{
public:
	enum CapacityMode
	{
		FixedCapacity = 0,
		ExtendCapacity = 1,
	};

	PrefetchRequestAccumulator(CapacityMode inMode,
		std::vector<SynchronousPrefetchRequest>* inSynchronousRequests,
		std::vector<AudioPrefetch::PrefetchRequest>* inAsynchronousRequests);

	// Adds to the synchronous list for SynchronousPrefetch, to the other for every other type: kind
	// "read" for AsynchronousPrefetch, "prepare" for the rest.
	void AddPrefetchRequest(PrefetchType inType, InterfaceRef<IAsyncAudioSource> const& inSource,
		TickTime inTime, unsigned inNumSamples);

	// True once any request found its list full; never false again.
	bool DroppedPrefetchRequests() const { return mDroppedRequests; }

private:
	// Whether another request may be added to inRequests; records a drop if not.
	template <class Request>
	bool HasRoom(std::vector<Request> const* inRequests);

	CapacityMode mCapacityMode;
	std::vector<SynchronousPrefetchRequest>* mSynchronousRequests;
	std::vector<AudioPrefetch::PrefetchRequest>* mAsynchronousRequests;
	bool mDroppedRequests = false;
};

} // namespace SN
