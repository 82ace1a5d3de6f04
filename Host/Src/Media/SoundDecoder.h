#pragma once

#include <cstdint>

namespace SonaroHost
{

// One pass over the sound of a file, as interleaved floats. It decodes forward; how exact a seek is depends on the
// codec, and is its user's business.
//
// Threads  One at a time.
class SoundDecoder
{
public:
	SoundDecoder() = default;
	virtual ~SoundDecoder() = default;
	SoundDecoder(SoundDecoder const&) = delete;
	SoundDecoder& operator=(SoundDecoder const&) = delete;

	virtual unsigned GetNumChannels() const noexcept = 0;

	// Whether samples are the same after a seek as in one decode from the start.
	virtual bool IsSeekExact() const noexcept = 0;

	// How many frames before the wanted one a seek goes.
	virtual std::int64_t GetPrerollFrames() const noexcept { return 0; }

	// The frame that is decoded next.
	virtual std::int64_t GetPosition() const noexcept = 0;

	// Decodes the next inFrames frames. Returns how many there were: fewer only at the end, or where
	// the file is damaged.
	virtual std::int64_t Read(float* outSamples, std::int64_t inFrames) = 0;

	virtual bool SeekTo(std::int64_t inFrame) = 0;
};

} // namespace SonaroHost
