#include "SonaroHost/Render/Fades.h"

#include "Sequence/Stage/FrameGains.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroHost
{

namespace
{

// The line of a fade, so many frames from its silent end.
double GetLine(std::int64_t inDistance, std::int64_t inLength)
{
	return inDistance < inLength ? static_cast<double>(inDistance) / static_cast<double>(inLength) : 1.0;
}

} // namespace

void ApplyFades(dsp::AudioBuffer& ioBlock, Fades const& inFades, std::int64_t inFirst, std::int64_t inFrames)
{
	// Gains are worked out for so many frames at once.
	constexpr unsigned kPiece = 256;
	std::int64_t const last = inFrames - 1;
	unsigned const frames = ioBlock.GetUseSize();
	for (unsigned done = 0; done < frames; done += kPiece)
	{
		unsigned const count = std::min(kPiece, frames - done);
		std::int64_t const first = inFirst + done;
		if (first >= inFades.mIn && last - (first + count - 1) >= inFades.mOut)
		{
			continue;
		}
		float gains[kPiece];
		for (unsigned i = 0; i < count; ++i)
		{
			gains[i] = static_cast<float>(
				std::min(GetLine(first + i, inFades.mIn), GetLine(last - first - i, inFades.mOut)));
		}
		ApplyGains(ioBlock, done, count, gains);
	}
}

} // namespace SonaroHost
