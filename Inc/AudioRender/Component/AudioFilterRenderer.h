#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/ParameterOwnerMixin.h"
#include "Sonaro/IAudioFilter.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/IOfflineAudioProcessor.h"
#include "Sonaro/ProcessorSettings.h"
#include "zorvaudiodsp/AudioDelayBuffer.h"

namespace SN
{

// Runs a host's effect in a chain. Control 0 bypasses it, control i is its parameter i - 1. While it is bypassed,
// audio goes through a delay of its latency, so that it stays in step; the delay is fed only then, so the
// first samples after a switch are those that the last bypass has left in it.
//
// Parameters  Outside playback at the top level, those of an effect without history are set wherever controls are
//             sampled. All others are set at Preroll, and from then on by the controls of the host's
//             parameters; those of a clone get controls on the clone's effect.
// Errors      Without an effect, what does not pass it over raises the null-pointer exception. A machine
//             exception in the effect becomes an AudioFilterException; the renderer stays as it was.
class AudioFilterRenderer final : public Implements<AudioFilterRenderer, IAudioProcessor,
									  IOfflineAudioProcessor, IAudioRenderGraphNodeInfo, ParameterOwnerMixin>,
								  public AudioRenderContextClient
{
public:
	static constexpr Identifier<AudioFilterRenderer> kIdentifier{
		0x2152f30b92b51a3cull, 0x30c774f02372d7bcull};

	static int Create(AudioFilterSettings const& inSettings, InterfaceRef<IAudioProcessor>* outProcessor);

	InterfaceRef<IAudioProcessor> Clone(
		FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return mFilter->HasHistory(); }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inTime, bool inReverse) override;
	void Reset() override { ParameterOwnerMixin::Reset(); }
	void InitializeAudioFilter() override;
	void ShutdownAudioFilter() override;
	TickTime GetDelay() SONARO_NONBLOCKING override;

	void UpdateControls(TickTime const& inTime) SONARO_NONBLOCKING override;

	TickTime GetOfflineLatency() override { return mSecondFilter->GetOfflineLatency(); }
	InterfaceRef<IProcessedAudioStream> CreateProcessedStream(
		OfflineAudioReadCallback const& inCallback, unsigned inFlags, TickTime const& inDuration) override
	{
		return mSecondFilter->CreateProcessedStream(inCallback, inFlags, inDuration);
	}

	std::u16string GetNodeName() override { return u"AudioFilterRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	void InitFrom(AudioFilterSettings const& inSettings);
	void MakeDelay();
	void ReplaceControls();
	void Run(dsp::AudioBuffer& ioBuffer, TickTime const& inTime) SONARO_NONBLOCKING;
	void Delay(dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;

	InterfaceRef<IAudioFilter> mFilter;
	// Kept initialized beside the first, and asked for whole stretches; may be empty.
	InterfaceRef<IAudioFilter> mSecondFilter;
	// UpdateControls hands the values to the effect.
	bool mPushControls = false;
	bool mRealTime = false;
	// In place of the effect while that is bypassed.
	dsp::AudioDelayBuffer mDelayBuffer;
	unsigned mMaxFrames = 0;
	AudioChannelLayout mChannelLayout;
	FrameRate mRate;
};

} // namespace SN
