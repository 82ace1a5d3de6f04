#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"

namespace SN
{

// Hands audio to a host's meter and leaves it alone. Only a playback at the top level has a meter: in any
// other context nothing is called.
class AudioMeterRenderer final
	: public Implements<AudioMeterRenderer, IAudioProcessor, IAudioRenderGraphNodeInfo>,
	  public AudioRenderContextClient
{
public:
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioMeterSetter> const& inMeter, InterfaceRef<IAudioProcessor>* outProcessor);

	InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(TickTime const&, bool) override {}
	void Reset() override;
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }

	std::u16string GetNodeName() override { return u"AudioMeterRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	InterfaceRef<IAudioMeterSetter> mMeter;
};

} // namespace SN
