#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Core/GeneratorWithInputs.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/TrackSettings.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

// Two generators, side by side in one buffer, and a processor that joins them: the channels of the first come first,
// those of the second after them, and the result is taken from the place of the first.
//
// Time      A generator's time is the node's, multiplied by its scale. The processor's is the node's.
// Controls  The processor's parameters are sampled once a request, at its start.
// Length    A first generator that runs short ends the request, and the buffer shows it.
// Latency   That of the first generator; neither the second nor the processor counts, nor do their
//           histories as far as the processor goes.
// Blocks    A request beyond the context's largest block asks for the same time again and again.
// Threads   One at a time; AccumulatePrefetchRequests may come from another.
class AudioMixRenderer final
	: public Implements<AudioMixRenderer, LiveGeneratorWithInputs, AudioTrackRenderableItemMixin>,
	  public AudioRenderContextClient
{
public:
	// Throws AudioMixRendererCreateFailure when a generator or the processor is missing.
	int InitFrom(AudioMixSettings const& inSettings);

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override;
	TickTime GetDelay() SONARO_NONBLOCKING override;
	void Preroll(TickTime const& inStartTime, bool inReverse) override;
	void FillInitialDelay(TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse,
		bool inForceCompletion) SONARO_NONBLOCKING override;
	void AccumulatePrefetchRequests(PrefetchRange const& inRange, PrefetchType inType,
		PrefetchRequestAccumulator& inAccumulator) override;
	void GetAudioData(
		TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse) SONARO_NONBLOCKING override;

	void CollectLiveParameters(LiveAudioParameterMap& outParameters) override;

	// Nothing is known unless both generators know it.
	unsigned GetNumChannels() SONARO_NONBLOCKING override;
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override;
	AudioChannelLayout GetAudioChannelLayout() override;
	FrameRate GetGeneratorFrameRate() override;

	std::u16string GetNodeName() override { return u"AudioMixRenderer"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override
	{
		return {mFirst.mGenerator, mSecond.mGenerator};
	}

protected:
	void VisitNodes(NodeVisitor& ioVisitor) override;

private:
	struct Input
	{
		InterfaceRef<IAudioGenerator> mGenerator;
		double mTimeScale = 1.0;
	};

	void SetNodes(
		Input const& inFirst, Input const& inSecond, InterfaceRef<IAudioProcessor> const& inProcessor);
	// Joins up to so many samples in mProcessorBuffer. Returns how many there are.
	unsigned RenderPass(TickTime const& inTime, unsigned inWanted, unsigned inChannels, bool inReverse);
	void PullInput(Input const& inInput, TickTime const& inTime, unsigned inFrames, bool inReverse);

	Input mFirst;
	Input mSecond;
	// The first generator's; empty unless the second has one too.
	InterfaceRef<IAudioGeneratorPrivate> mDescription;
	InterfaceRef<IAudioProcessor> mProcessor;
	// Empty for a processor without parameters.
	InterfaceRef<IParameterOwnerMixin> mProcessorControls;
	// What each generator fills in turn, and what the processor works on.
	dsp::AudioBuffer mGeneratorBuffer;
	dsp::AudioBuffer mProcessorBuffer;
	// Moves through the caller's buffer.
	dsp::AudioSubBuffer mOutputView;
};

} // namespace SN
