#include "Sonaro/GeneratorPrefetch.h"

#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/PrefetchRequestAccumulator.h"

namespace SN
{

void PrefetchFromAudioGenerator(InterfaceRef<IAudioGenerator> const& inGenerator,
	PrefetchRange const& inRange, PrefetchType inType, unsigned long long inTimeStamp)
{
	std::vector<SynchronousPrefetchRequest> synchronous;
	std::vector<AudioPrefetch::PrefetchRequest> asynchronous;
	PrefetchRequestAccumulator accumulator(PrefetchRequestAccumulator::ExtendCapacity,
		inType == SynchronousPrefetch ? &synchronous : nullptr, &asynchronous);
	inGenerator->AccumulatePrefetchRequests(inRange, inType, accumulator);
	AudioPrefetch::PrefetchAudio(AudioPrefetch::PlaybackPriority, asynchronous, inTimeStamp, {});
	ProcessSynchronousPrefetchRequests(synchronous, inTimeStamp);
}

void ProcessSynchronousPrefetchRequests(
	std::vector<SynchronousPrefetchRequest> const& inRequests, unsigned long long inTimeStamp)
{
	for (SynchronousPrefetchRequest const& request : inRequests)
	{
		request.source->PrefetchAudioData(inTimeStamp, request.time, request.numSamples);
	}
}

} // namespace SN
