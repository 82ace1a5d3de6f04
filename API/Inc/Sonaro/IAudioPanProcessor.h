#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A stage that converts one channel layout to another. Called by the thread that owns the graph. None of its
// functions reports an error; exceptions pass through to the caller.
class SONARO_API IAudioPanProcessor : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioPanProcessor> kIdentifier{0xac1d7ce86aa17bf5ull, 0xe88e2b2c69024db6ull};

	// A stage of the same settings, without what a run has left, for a graph of this rate and control interval
	// (in samples).
	virtual InterfaceRef<IAudioPanProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inControlInterval) = 0;
	// True when the output at a time depends on what was processed before.
	virtual bool HasHistory() = 0;
	// The kind of layout that goes in.
	virtual AudioChannelType GetInputChannelType() = 0;
	// The kind of layout that comes out.
	virtual AudioChannelType GetOutputChannelType() = 0;
	// The places of the channels that go in, as many as GetNumInputChannels says.
	virtual AudioChannelLayout GetInputAudioChannelLayout() = 0;
	// The places of the channels that come out, as many as GetNumOutputChannels says.
	virtual AudioChannelLayout GetOutputAudioChannelLayout() = 0;
	// How many channels of an input are read, 64 at most.
	virtual unsigned GetNumInputChannels() SONARO_NONBLOCKING = 0;
	// How many channels of an output are written, 64 at most.
	virtual unsigned GetNumOutputChannels() SONARO_NONBLOCKING = 0;

	// True when the stage would copy its input unchanged, so that a track may skip it. It may change from
	// block to block, as where a pan passes its centre.
	virtual bool DoesNotAlterAudio() SONARO_NONBLOCKING = 0;
	// Prepares for a run from inTime, in track time, forward or in reverse.
	virtual void Preroll(TickTime const& inTime, bool inReverse) = 0;
	// Drops what a run has left, before the next one elsewhere; settings stay.
	virtual void Reset() = 0;

	// Reads inInput, writes inOutput, for the block that starts at inTime in track time.
	virtual void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& inOutput,
		TickTime const& inTime) SONARO_NONBLOCKING = 0;

	~IAudioPanProcessor() override = default;
};

} // namespace SN
