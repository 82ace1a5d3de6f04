#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A track whose block can be rendered ahead of the point where it is mixed.
class SONARO_API ICachedAudioGenerator : public virtual Unknown
{
public:
	static constexpr Identifier<ICachedAudioGenerator> kIdentifier{
		0xbccc6cc7928616efull, 0xf89f03609a403c19ull};

	// Renders the block into the node's own buffer; a repeated request for the same block does nothing. One for
	// 0 samples forgets the last block, so that the same one is rendered again.
	virtual void GenerateAudio(
		unsigned inNumSamples, TickTime const& inTime, bool inReverse) SONARO_NONBLOCKING = 0;

	// Adds the rendered block to inOutBuffer; nothing when there is none or it is silent.
	virtual void MixCachedAudio(dsp::AudioBuffer& inOutBuffer) SONARO_NONBLOCKING = 0;
};

} // namespace SN
