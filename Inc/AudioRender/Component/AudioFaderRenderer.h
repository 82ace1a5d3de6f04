#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/ParameterOwnerMixin.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "zorvaudiodsp/GainRamp.h"

namespace SN
{

// Scales audio by a linear gain, control 0, and silences it while a switch, control 1, is on. A new gain is
// reached over 5 ms; after a jump of the playhead it stands at once. Without delay compensation, as when
// scrubbing, it takes effect in steps.
class AudioFaderRenderer final
	: public Implements<AudioFaderRenderer, IAudioProcessor, IAudioRenderGraphNodeInfo, ParameterOwnerMixin>,
	  public AudioRenderContextClient
{
public:
	static constexpr Identifier<AudioFaderRenderer> kIdentifier{0x4e72d9a15f0c43b6ull, 0x8d1b7c60e3a94f25ull};

	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		Parameters const& inParams, InterfaceRef<IAudioProcessor>* outProcessor);

	InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inTime, bool) override { ParameterOwnerMixin::Preroll(inTime); }
	void Reset() override { ParameterOwnerMixin::Reset(); }
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }

	// The switch is on from time 0 to the end, so that nothing will ever pass.
	bool IsMuted() { return IsBypassConstant(); }

	std::u16string GetNodeName() override { return u"AudioFaderRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	dsp::GainRamp mGainRamp{48000.0f, 1.0f, 0.005f};
	// Where the next block begins when it follows the last one.
	TickTime mNextTime = kTimeMax;
};

} // namespace SN
