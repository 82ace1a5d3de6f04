#pragma once

#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/Types.h"

#include <vector>

namespace SonaroHost::Sequence
{

// The base of stages that are never late and do not remember what was rendered before.
class PlainStage : public SN::Implements<PlainStage, SN::IAudioProcessor, SN::IAudioRenderGraphNodeInfo>
{
public:
	bool HasHistory() override { return false; }
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override {}
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	SN::TickTime GetDelay() SONARO_NONBLOCKING override { return SN::kTimeZero; }

	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {}; }
};

} // namespace SonaroHost::Sequence
