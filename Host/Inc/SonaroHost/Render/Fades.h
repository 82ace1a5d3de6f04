#pragma once

#include <cstdint>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Fades from silence at the start of a programme and to silence at its end, in frames; 0 for none.
struct Fades
{
	std::int64_t mIn = 0;
	std::int64_t mOut = 0;

	bool IsNone() const { return mIn == 0 && mOut == 0; }
};

// Fades a block in straight lines of amplitude, frame by frame, the first and last sample of the programme being silent
// where it fades there. Silent channels stay as they are.
// inFirst: the block's first frame, from 0 on, among inFrames of the programme.
void ApplyFades(dsp::AudioBuffer& ioBlock, Fades const& inFades, std::int64_t inFirst, std::int64_t inFrames);

} // namespace SonaroHost
