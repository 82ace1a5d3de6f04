#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A source that can be read ahead on another thread.
class SONARO_API IAsyncAudioSource : public virtual Unknown
{
public:
	static constexpr Identifier<IAsyncAudioSource> kIdentifier{0xc7e56cc2538fe316ull, 0xd0127f582296d0d0ull};

	// Reads the range into the source's own memory; may block. On the prefetch thread, or on the
	// caller's for a synchronous request. inTimeStamp is the high-precision time of the request.
	virtual void PrefetchAudioData(
		unsigned long long const& inTimeStamp, TickTime const& inTime, unsigned inNumSamples) = 0;

	// Fills the UseSize samples of the buffer from what was read ahead, from inTime on, and writes silence for
	// what is not there. On the render thread. A result code, which the engine does not look at.
	virtual int ReadPrefetchedAudio(
		TickTime const& inTime, dsp::AudioBuffer& inBuffer) SONARO_NONBLOCKING = 0;

	// A result code about reading ahead, kSuccess when it is in order; eNotImplemented where a source does not
	// keep one. For the host, on any thread: the engine does not ask.
	virtual int GetPrefetchState() = 0;

	~IAsyncAudioSource() override = default;
};

} // namespace SN
