#include "AudioRender/Track/RenderAndDiscard.h"

#include "Sonaro/GeneratorPrefetch.h"

#include <algorithm>

namespace SN
{

void RenderAndDiscard(IAudioGenerator& ioGenerator, DiscardedRange const& inRange, TickTime& ioPosition,
	dsp::AudioBuffer& ioBuffer)
{
	for (unsigned remaining = inRange.mFrames; remaining > 0;)
	{
		unsigned const piece = std::min(remaining, std::max(inRange.mMaxBlockSize, 1u));
		TickTime next = ioPosition;
		next.AddFrames(inRange.mReverse ? -static_cast<long long>(piece) : piece, inRange.mFrameRate);
		if (inRange.mPrefetches)
		{
			PrefetchFromAudioGenerator(InterfaceRef<IAudioGenerator>::FromThis(&ioGenerator),
				{std::min(ioPosition, next), std::max(ioPosition, next)}, SynchronousPrefetch, 0);
		}
		ioBuffer.SetUseSize(piece);
		ioGenerator.GetAudioData(ioPosition, ioBuffer, inRange.mReverse);
		ioPosition = next;
		remaining -= piece;
	}
}

} // namespace SN
