#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A stage that works on a buffer in place. Called by the thread that owns the graph. None of its functions
// reports an error; exceptions pass through to the caller.
class SONARO_API IAudioProcessor : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioProcessor> kIdentifier{0xb5bb05fef7a7db1bull, 0xebbdf6bdf0ea1fadull};

	// A stage of the same settings for a graph of this rate, largest block and control interval (both
	// in samples).
	virtual InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) = 0;
	// True when the output at a time depends on what was processed before.
	virtual bool HasHistory() = 0;

	// Processes the UseSize samples of inBuffer, the block that starts at inTime in track time.
	virtual void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING = 0;
	// Prepares for a run from inTime, in track time, forward or in reverse.
	virtual void Preroll(TickTime const& inTime, bool inReverse) = 0;
	// Drops what a run has left, before the next one elsewhere; settings stay.
	virtual void Reset() = 0;
	// Starts the effect of the stage, where it has one; may allocate. Before the first Preroll.
	virtual void InitializeAudioFilter() = 0;
	// Stops it. It may be started again.
	virtual void ShutdownAudioFilter() = 0;

	// The latency that the stage adds, 0 or above; it does not change in a run.
	virtual TickTime GetDelay() SONARO_NONBLOCKING = 0;

	~IAudioProcessor() override = default;
};

} // namespace SN
