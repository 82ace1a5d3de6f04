#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/ParameterOwnerMixin.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ICachedAudioGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

// Taps a track towards a submix: the audio goes on unchanged, and a copy, panned and scaled by a linear
// gain, control 0, is collected until the destination mixes it in and so ends the block. Control 1 turns
// the send off. What is collected beyond the context's largest block is lost.
//
// The destination finds its senders in the render context, under the target. Source and destination are
// pulled in this order on one thread.
class AudioSendRenderer final : public Implements<AudioSendRenderer, IAudioProcessor, ICachedAudioGenerator,
									IAudioRenderGraphNodeInfo, ParameterOwnerMixin>,
								public AudioRenderContextClient
{
public:
	static constexpr Identifier<AudioSendRenderer> kIdentifier{0xa6d38e5b92f04c17ull, 0xb50e1f7843ca6d92ull};

	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		InterfaceRef<UnknownBase> const& inSendTarget, Parameters const& inParams,
		InterfaceRef<IAudioPanProcessor> const& inPanner, InterfaceRef<IAudioProcessor>* outProcessor);

	// Enters the copy in the context's map of clones, where its destination's clone looks for it.
	InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inTime, bool inReverse) override;
	void Reset() override;
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	TickTime GetDelay() SONARO_NONBLOCKING override { return kTimeZero; }

	void GenerateAudio(unsigned, TickTime const&, bool) SONARO_NONBLOCKING override {}
	void MixCachedAudio(dsp::AudioBuffer& inBuffer) SONARO_NONBLOCKING override;

	std::u16string GetNodeName() override { return u"AudioSendRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	void MakeBuffers(unsigned inMaxBlockSize);

	InterfaceRef<IAudioPanProcessor> mPanner;
	dsp::AudioBuffer mSendBuffer;
	// Where the next samples go, and all the room after them.
	dsp::AudioSubBuffer mWriteView;
};

} // namespace SN
