#pragma once

#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <string_view>

namespace SN
{

// The last block that a track has rendered, and which one that was: so many readers of one block cost one
// rendering. Init alone allocates.
class TrackCache
{
public:
	void Init(unsigned inNumChannels, unsigned inMaxSamples);

	// Has inRender fill the buffer, unless it holds this block already. inSalt: the name of the operation.
	template <class Render>
	void Generate(std::string_view inSalt, unsigned inNumSamples, TickTime const& inTime, bool inReverse,
		Render const& inRender)
	{
		Guid const key = HashRequest(inSalt, inNumSamples, inTime, inReverse);
		if (key == mKey)
		{
			return;
		}
		// The key is that of nothing until the whole block is there.
		mKey = Guid();
		mBuffer.SetUseSize(inNumSamples);
		mBuffer.Zero();
		inRender(mBuffer);
		mKey = key;
	}

	// Adds the block, if there is one.
	void MixInto(dsp::AudioBuffer& ioBuffer) const SONARO_NONBLOCKING;

	void Forget() { mKey = Guid(); }

private:
	static Guid HashRequest(std::string_view inSalt, unsigned inNumSamples, TickTime const& inTime,
		bool inReverse) SONARO_NONBLOCKING;

	dsp::AudioBuffer mBuffer;
	// The key of what mBuffer holds; null for nothing.
	Guid mKey;
};

} // namespace SN
