#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"

namespace SN
{

// Reroutes the channels of a buffer in place, at full level: each output is the sum of the inputs that the
// routing sends to it, and what nothing reaches is silent. A routing of every channel to itself leaves
// the channels where they are and clears those above the highest one that it names.
class AudioChannelMatrixRenderer final
	: public Implements<AudioChannelMatrixRenderer, IAudioProcessor, IAudioRenderGraphNodeInfo>,
	  public AudioRenderContextClient
{
public:
	// eInvalidArgument also for a routing beyond the 64 channels of a buffer.
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelMatrix const& inMatrix, InterfaceRef<IAudioProcessor>* outProcessor);

	InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(TickTime const&, bool) override {}
	void Reset() override {}
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }

	std::u16string GetNodeName() override { return u"AudioChannelMatrixRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelMatrix const& inMatrix);
	void Route(dsp::AudioBuffer& ioBuffer) const;

	AudioChannelMatrix mMatrix;
	bool mIdentity = true;
	// The highest output channel plus 1.
	unsigned long long mChannelCount = 0;
};

} // namespace SN
