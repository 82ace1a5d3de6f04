#pragma once

#include "Sonaro/IAudioWaveformBuffer.h"
#include "Sonaro/Types.h"

#include <memory>

namespace zorvcore::threads
{
class AsyncThreadedExecutor;
}

// The one background thread of the process on which waveforms are computed, below the priority of the
// process and of the prefetch. All functions: any thread, jobs of the queue too.
namespace SN::AudioWaveformQueue
{

// The executor, made anew when there is none; that also ends an abort. One that was taken before a Clear
// refuses what is queued to it afterwards.
SONARO_API std::shared_ptr<zorvcore::threads::AsyncThreadedExecutor> GetQueue();

// A new empty buffer.
SONARO_API InterfaceRef<IAudioWaveformBuffer> CreateAudioWaveformBuffer();

// Aborts: gives up the executor and waits until its jobs have ended. Those that wait their turn still
// run, paused or not, and find IsJobAborted. Called by one of its jobs, it does not wait, and the rest
// ends by itself.
SONARO_API void Clear();

// Holds jobs back that have not begun, or lets them go. Not remembered for a later executor, and of no
// effect without one.
SONARO_API void Pause(bool inPause);

// True from Clear until GetQueue makes the next executor.
SONARO_API bool IsAborted();

// What a job asks: whether the executor that it runs on was cleared, also when the next one is there
// already and IsAborted is false again, as after a prefetch that ended meanwhile. On other threads the
// same as IsAborted.
SONARO_API bool IsJobAborted();

// The same as Clear. The engine's module calls it when it stops.
SONARO_API void Shutdown();

} // namespace SN::AudioWaveformQueue
