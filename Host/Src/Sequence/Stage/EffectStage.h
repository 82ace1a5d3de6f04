#pragma once

#include "Playhead.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Sequence/EffectHealth.h"
#include "zorvaudiodsp/AudioDelayBuffer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// What an effect is promised.
struct EffectTerms
{
	unsigned mChannels = 0;
	unsigned mMaxBlockSize = 0;
	StageClock mClock;
	std::int64_t mLatency = 0;
	// Learns of faults and of latencies.
	std::shared_ptr<EffectHealth> mHealth = {};
	// The frames of the sound at which parameters jump, in their order.
	std::vector<std::int64_t> mJumps = {};
};

// A host's effect within a chain of the engine: it hears its own layout where the engine's buffer is wider, for a
// conversion after it; blocks no larger than agreed where a resampler reads more; and the time that its sound belongs
// to.
//
// Parameters  Those of its own are sampled at every 64th frame of the sound and where they jump, wherever a block
//             begins, and held from there to the next of these in either direction.
// Faults      An effect that crashes, raises an exception or gives what is not a number is not heard any more: its sound
//             passes by it, as late as it was. What comes in infinite or not a number is silenced before.
// Latency     That of the effect when the stage is made; its health learns of a larger one.
class EffectStage final : public SN::Implements<EffectStage, SN::IAudioProcessor,
							  SN::ILiveAudioParameterOwner, SN::IAudioRenderGraphNodeInfo>
{
public:
	EffectStage(SN::InterfaceRef<SN::IAudioProcessor> const& inEffect, EffectTerms const& inTerms);

	SN::InterfaceRef<SN::IAudioProcessor> Clone(
		SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return mEffect->HasHistory(); }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(SN::TickTime const& inTime, bool inReverse) override;
	void Reset() override { mEffect->Reset(); }
	void InitializeAudioFilter() override { mEffect->InitializeAudioFilter(); }
	void ShutdownAudioFilter() override { mEffect->ShutdownAudioFilter(); }
	SN::TickTime GetDelay() SONARO_NONBLOCKING override { return mPlannedDelay; }
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override;

	std::u16string GetNodeName() override { return u"EffectStage"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {mEffect}; }

private:
	// How many frames of a run the effect may hear at once, its parameters sampled for them.
	std::int64_t Prepare(FrameRun const& inRun);
	// A run without a jump within.
	void Process(dsp::AudioBuffer& ioBlock, FrameRun const& inRun) SONARO_NONBLOCKING;
	void CheckInput(dsp::AudioBuffer& ioBlock, FrameRun const& inRun) SONARO_NONBLOCKING;
	void NoteLatency() SONARO_NONBLOCKING;
	// The effect gives up; inFrame: that of the sound which is heard first of what is wrong.
	void TakeFault(EffectFault::Kind inKind, std::int64_t inFrame, dsp::AudioBuffer& outBlock);
	void NoteFault(EffectFault::Kind inKind, std::int64_t inFrame);

	SN::InterfaceRef<SN::IAudioProcessor> mEffect;
	// Empty where the effect has none.
	SN::InterfaceRef<SN::IParameterOwnerMixin> mParameters;
	SN::InterfaceRef<SN::ILiveAudioParameterOwner> mLiveParameters;
	EffectTerms mTerms;
	SN::TickTime mPlannedDelay;
	bool mHasFault = false;
	// In place of an effect that has a fault and is late.
	dsp::AudioDelayBuffer mDelay;
};

} // namespace SonaroHost::Sequence
