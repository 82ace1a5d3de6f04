#include "Sonaro/PrefetchRequestAccumulator.h"

namespace SN
{

PrefetchRequestAccumulator::PrefetchRequestAccumulator(CapacityMode inMode,
	std::vector<SynchronousPrefetchRequest>* inSynchronousRequests,
	std::vector<AudioPrefetch::PrefetchRequest>* inAsynchronousRequests)
	: mCapacityMode(inMode),
	  mSynchronousRequests(inSynchronousRequests),
	  mAsynchronousRequests(inAsynchronousRequests)
{
}

void PrefetchRequestAccumulator::AddPrefetchRequest(PrefetchType inType,
	InterfaceRef<IAsyncAudioSource> const& inSource, TickTime inTime, unsigned inNumSamples)
{
	using AudioPrefetch::PrefetchRequest;
	if (inType == SynchronousPrefetch)
	{
		if (HasRoom(mSynchronousRequests))
		{
			mSynchronousRequests->push_back({inSource, inTime, inNumSamples});
		}
	}
	else if (HasRoom(mAsynchronousRequests))
	{
		int const kind =
			inType == AsynchronousPrefetch ? PrefetchRequest::kKindRead : PrefetchRequest::kKindPrepare;
		mAsynchronousRequests->push_back({kind, inSource, inTime, inNumSamples});
	}
}

template <class Request>
bool PrefetchRequestAccumulator::HasRoom(std::vector<Request> const* inRequests)
{
	if (!inRequests)
	{
		return false;
	}
	if (inRequests->size() < inRequests->capacity() || mCapacityMode == ExtendCapacity)
	{
		return true;
	}
	mDroppedRequests = true;
	return false;
}

} // namespace SN
