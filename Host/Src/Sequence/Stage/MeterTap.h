#pragma once

#include "Playhead.h"
#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/Types.h"

namespace SonaroHost::Sequence
{

// Hands audio to a meter and leaves it alone, like the engine's own stage; unlike it in exports and nested sequences,
// too, and nothing of what is only rendered to fill histories.
class MeterTap final : public SN::Implements<MeterTap, SN::IAudioProcessor, SN::IAudioRenderGraphNodeInfo>
{
public:
	MeterTap(SN::InterfaceRef<SN::IAudioMeterSetter> const& inMeter, StageClock const& inClock);

	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override;
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override;
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	SN::TickTime GetDelay() SONARO_NONBLOCKING override { return SN::kTimeZero; }

	std::u16string GetNodeName() override { return u"MeterTap"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	SN::InterfaceRef<SN::IAudioMeterSetter> mMeter;
	StageClock mClock;
};

} // namespace SonaroHost::Sequence
