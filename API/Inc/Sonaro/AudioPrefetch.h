#pragma once

#include "Sonaro/IAudioPrefetchNotify.h"
#include "Sonaro/PrefetchRequest.h"
#include "Sonaro/Types.h"

#include <vector>

namespace SN
{

// What a source of audio that can be read ahead offers besides, when it can get ready without reading.
class SONARO_API IPreparableAudioSource : public virtual Unknown
{
public:
	static constexpr Identifier<IPreparableAudioSource> kIdentifier{
		0xbbcfb582915647e9ull, 0xa6529c61169e2021ull};

	// On the prefetch thread; may block. The range is about to be read.
	virtual void PrepareForPrefetch(TickTime const& inTime, unsigned inNumSamples) = 0;

	~IPreparableAudioSource() override = default;
};

// Reads audio ahead of the render, on one background thread for the whole process. It runs as long as
// the engine's module does.
//
// Order     Playback goes before waveforms, batch by batch; within a priority, first come first served.
// Overload  A batch's age at its end, as a percentage of the prefetch interval, is the disk load. Above
//           the load in the debug database's "Sonaro.Prefetch.DiskOverloadThreshold", 110 by default, a
//           batch is given up instead of being read.
// Threads   Any. None of these calls waits for a read.
namespace AudioPrefetch
{

// Any other value counts as WaveformPriority.
enum PrefetchPriority : int
{
	PlaybackPriority = 0,
	WaveformPriority = 1,
};

// Queues a batch. inTimeStamp: when the batch was wanted, in stamps of zorvcore's HighPrecisionTime, also
// handed to the sources; 0 keeps the batch out of the load measure. inNotify may be empty; it hears of an
// empty batch too. Raises the null-pointer exception while the engine's module is stopped.
SONARO_API void PrefetchAudio(PrefetchPriority inPriority, std::vector<PrefetchRequest> const& inRequests,
	unsigned long long const& inTimeStamp, InterfaceRef<IAudioPrefetchNotify> inNotify);

// Gives up every batch of the priority that was queued so far; the one that is being read ends behind
// the request at hand. Each is still notified. Raises as PrefetchAudio does.
SONARO_API void CancelAllPendingPrefetchRequests(PrefetchPriority inPriority);

// The span of time that the host asks for at once; 0 stands for two seconds, which it also is at first.
SONARO_API void NotifyPrefetchIntervalChanged(TickTime const& inInterval);

// Forgets the disk load and what WasPrefetchBehind would tell, unless a cancel is still under way.
SONARO_API void Reset();

// Whether a batch was given up for overload, or ended two intervals or more after its time stamp, since
// the last call.
SONARO_API bool WasPrefetchBehind();

} // namespace AudioPrefetch

} // namespace SN
