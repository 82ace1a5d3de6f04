#pragma once

#include "Sonaro/Types.h"

namespace dsp
{
class AudioBuffer;
}

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

	// Fills the buffer from what was read ahead, without blocking, and writes silence for what is not
	// there. On the render thread.
	virtual int ReadPrefetchedAudio(TickTime const& inTime, dsp::AudioBuffer& inBuffer) = 0;

	virtual int GetPrefetchState() = 0;

	~IAsyncAudioSource() override = default;
};

} // namespace SN
