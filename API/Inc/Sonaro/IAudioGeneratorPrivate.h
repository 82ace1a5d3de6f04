#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// What the graph needs to know of a generator while it is built.
class SONARO_API IAudioGeneratorPrivate : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioGeneratorPrivate> kIdentifier{
		0x2642e3906ab02d75ull, 0x92bf4a1fcd859088ull};

	// The channels that the node renders.
	virtual unsigned GetNumChannels() SONARO_NONBLOCKING = 0;
	// The channels that its output carries; the same for nodes without a conversion of their own.
	virtual unsigned GetNumOutputChannels() SONARO_NONBLOCKING = 0;
	// The places of the channels that the node renders, as many as GetNumChannels says.
	virtual AudioChannelLayout GetAudioChannelLayout() = 0;
	// The sample rate of the output.
	virtual FrameRate GetGeneratorFrameRate() = 0;
};

} // namespace SN
