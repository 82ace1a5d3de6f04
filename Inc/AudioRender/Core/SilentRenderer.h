#pragma once

#include "AudioRender/Core/SilentGenerator.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ICachedAudioGenerator.h"

namespace SN
{

// A generator of silence in a given layout. It has no state, so a clone is the node itself, and it
// counts as 48000 Hz whatever the graph around it runs at.
class SilentRenderer final : public Implements<SilentRenderer, SilentGenerator, IAudioGeneratorPrivate,
								 ICachedAudioGenerator, IAudioRenderGraphNodeInfo>
{
public:
	static int Create(AudioChannelLayout const& inLayout, InterfaceRef<IAudioGenerator>* outGenerator)
	{
		*outGenerator = zorvcore::classref::MakeObject<SilentRenderer>(inLayout);
		return kSuccess;
	}

	explicit SilentRenderer(AudioChannelLayout const& inLayout)
		: mChannelLayout(inLayout)
	{
	}

	InterfaceRef<IAudioGenerator> Clone() override { return InterfaceRef<IAudioGenerator>::FromThis(this); }

	unsigned GetNumChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mChannelLayout.size());
	}
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override { return GetNumChannels(); }
	AudioChannelLayout GetAudioChannelLayout() override { return mChannelLayout; }
	FrameRate GetGeneratorFrameRate() override { return FrameRate(zorvmediatypes::kTicksPerSecond / 48000); }

	void GenerateAudio(unsigned, TickTime const&, bool) SONARO_NONBLOCKING override {}
	void MixCachedAudio(dsp::AudioBuffer&) SONARO_NONBLOCKING override {}

	std::u16string GetNodeName() override { return u"SilentRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	AudioChannelLayout mChannelLayout;
};

} // namespace SN
