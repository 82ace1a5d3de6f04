#pragma once

#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/Types.h"
#include "Vexilon/AudioChannelType.h"

namespace SonaroHost::Sequence
{

// The engine's fixed conversion between two layouts, as a pan processor: for layouts of any size, and without
// state, so that one serves any number of tracks and items.
class ConversionPanner final : public SN::Implements<ConversionPanner, SN::IAudioPanProcessor>
{
public:
	// Converts by the mixdown that is set when this object is made.
	ConversionPanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput);

	SN::InterfaceRef<SN::IAudioPanProcessor> Clone(SN::FrameRate const&, unsigned) override
	{
		return SN::InterfaceRef<SN::IAudioPanProcessor>::FromThis(this);
	}
	bool HasHistory() override { return false; }
	// As both types are alike, a node makes room for the wider of the two layouts.
	SN::AudioChannelType GetInputChannelType() override { return VX::kAudioChannelTypeAny; }
	SN::AudioChannelType GetOutputChannelType() override { return VX::kAudioChannelTypeAny; }
	SN::AudioChannelLayout GetInputAudioChannelLayout() override { return mInput; }
	SN::AudioChannelLayout GetOutputAudioChannelLayout() override { return mOutput; }
	unsigned GetNumInputChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mInput.size());
	}
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mOutput.size());
	}
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override { return false; }
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override {}
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		SN::TickTime const& inTime) SONARO_NONBLOCKING override;

private:
	SN::AudioChannelLayout mInput;
	SN::AudioChannelLayout mOutput;
	SN::AudioChannelMix::MixFunction mMix;
};

} // namespace SonaroHost::Sequence
