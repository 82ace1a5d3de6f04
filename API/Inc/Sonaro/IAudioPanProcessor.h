#pragma once

#include "Sonaro/Types.h"

namespace dsp
{
class AudioBuffer;
}

namespace SN
{

// A stage that converts one channel layout to another. Pulled by the thread that owns the graph.
class SONARO_API IAudioPanProcessor : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioPanProcessor> kIdentifier{0xac1d7ce86aa17bf5ull, 0xe88e2b2c69024db6ull};

	virtual InterfaceRef<IAudioPanProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inControlInterval) = 0;
	virtual bool HasHistory() = 0;
	virtual AudioChannelType GetInputChannelType() = 0;
	virtual AudioChannelType GetOutputChannelType() = 0;
	virtual AudioChannelLayout GetInputAudioChannelLayout() = 0;
	virtual AudioChannelLayout GetOutputAudioChannelLayout() = 0;
	virtual unsigned GetNumInputChannels() = 0;
	virtual unsigned GetNumOutputChannels() = 0;

	// True when the stage would copy its input unchanged, so that a track may skip it.
	virtual bool DoesNotAlterAudio() = 0;
	virtual void Preroll(TickTime const& inTime, bool inReverse) = 0;
	virtual void Reset() = 0;

	// Reads inInput, writes inOutput, for the block that starts at inTime in track time.
	virtual void ProcessAudioData(
		dsp::AudioBuffer const& inInput, dsp::AudioBuffer& inOutput, TickTime const& inTime) = 0;

	~IAudioPanProcessor() override = default;
};

} // namespace SN
