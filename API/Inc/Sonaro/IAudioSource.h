#pragma once

#include "Sonaro/Types.h"

namespace VX
{
class BinaryData;
}

namespace SN
{

// Audio that belongs to the host: a file, a generator of test signals, a recording. A source may also
// answer for IAsyncAudioSource and IAudioSourceFile.
//
// Threads  The thread that owns the graph; ReadAudio on each thread that pulls a graph with the source in it,
//          at once where a host renders several.
class SONARO_API IAudioSource : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioSource> kIdentifier{0x98b68c27c5b919b9ull, 0x55b679a29ac1eec3ull};

	// Samples a second that the source counts by. The engine does not ask: a stream is given its rate.
	virtual FrameRate GetFrameRate() = 0;
	// The length; the engine asks IAudioSourceFile instead.
	virtual TickTime GetLength() = 0;

	// How many channels ReadAudio fills, 1 to 64. It does not change while a stream of the source lives.
	virtual unsigned GetNumChannels() SONARO_NONBLOCKING = 0;
	// Their places, as many as GetNumChannels says.
	virtual AudioChannelLayout GetAudioChannelLayout() = 0;

	// A name for people, for instance of the file.
	virtual ImmutableString GetName() = 0;

	// Fills the UseSize samples of inBuffer from inTime (0 or later) on, reading as long as it takes.
	// What lies beyond the end is silence; every channel is written or flagged. The engine passes empty
	// options and false.
	virtual void ReadAudio(
		VX::BinaryData const& inOptions, dsp::AudioBuffer& inBuffer, TickTime const& inTime, bool inFlag) = 0;
};

} // namespace SN
