#pragma once

#include "ShiftedParameter.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/Types.h"

#include <string>
#include <vector>

namespace SonaroHost::Sequence
{

// What an effect is promised.
struct EffectTerms
{
	unsigned mChannels = 0;
	unsigned mMaxBlockSize = 0;
	SN::FrameRate mFrameRate;
	CurveTime mTime;
};

// A host's effect within a chain of the engine: it hears its own layout where the engine's buffer is wider, for
// a conversion behind it; blocks no larger than agreed where a resampler reads more; and the time that its
// sound belongs to. Parameters of its own are found through it.
class EffectStage final : public SN::IAudioProcessor,
						  public SN::IParameterOwnerMixin,
						  public SN::IAudioRenderGraphNodeInfo
{
public:
	EffectStage(SN::InterfaceRef<SN::IAudioProcessor> const& inEffect, EffectTerms const& inTerms);

	SN::InterfaceRef<SN::IAudioProcessor> Clone(
		SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval) override;
	bool HasHistory() override { return mEffect->HasHistory(); }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const& inTime) override;
	void Preroll(SN::TickTime const& inTime, bool inReverse) override;
	void Reset() override { mEffect->Reset(); }
	void InitializeAudioFilter() override { mEffect->InitializeAudioFilter(); }
	void ShutdownAudioFilter() override { mEffect->ShutdownAudioFilter(); }
	SN::TickTime GetDelay() override { return mEffect->GetDelay(); }

	SN::TickTime GetNextInterestingTime(SN::TickTime const& inTime) override;
	void UpdateControls(SN::TickTime const& inTime) override;

	std::u16string GetNodeName() override { return u"EffectStage"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {mEffect}; }

protected:
	void* QueryMap(SN::Guid const& inIdentifier) override;

private:
	SN::InterfaceRef<SN::IAudioProcessor> mEffect;
	// Empty where the effect has none.
	SN::InterfaceRef<SN::IParameterOwnerMixin> mParameters;
	SN::InterfaceRef<SN::ILiveAudioParameterOwner> mLiveParameters;
	EffectTerms mTerms;
};

} // namespace SonaroHost::Sequence
