#pragma once

#include "Sonaro/Types.h"

namespace dsp
{
class AudioBuffer;
}

namespace SN
{

// A stage that works on a buffer in place. Pulled by the thread that owns the graph.
class SONARO_API IAudioProcessor : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioProcessor> kIdentifier{0xb5bb05fef7a7db1bull, 0xebbdf6bdf0ea1fadull};

	// A stage of the same settings for a graph of this rate, largest block and control interval (both
	// in samples).
	virtual InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) = 0;
	virtual bool HasHistory() = 0;

	// Processes the UseSize samples of inBuffer, the block that starts at inTime in track time.
	virtual void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) = 0;
	virtual void Preroll(TickTime const& inTime, bool inReverse) = 0;
	virtual void Reset() = 0;
	virtual void InitializeAudioFilter() = 0;
	virtual void ShutdownAudioFilter() = 0;

	// The latency that the stage adds.
	virtual TickTime GetDelay() = 0;

	~IAudioProcessor() override = default;
};

} // namespace SN
