#pragma once

#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/Types.h"
#include "Vexilon/AudioChannelType.h"

namespace SonaroHost::Sequence
{

// The base of panners from one layout to another, of any size, that do not remember what was rendered before.
class LayoutPanner : public SN::Implements<LayoutPanner, SN::IAudioPanProcessor>
{
public:
	LayoutPanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput)
		: mInput(inInput),
		  mOutput(inOutput)
	{
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

protected:
	SN::AudioChannelLayout mInput;
	SN::AudioChannelLayout mOutput;
};

} // namespace SonaroHost::Sequence
