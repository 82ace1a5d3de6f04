#pragma once

#include "GraphTools.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"
#include "Sonaro/ILiveAudioParameterOwner.h"

#include <vector>

namespace SonaroHost::Sequence
{

// The base of nodes that read from other generators and are never late themselves: what concerns all generators alike, it
// hands on to those that they read. A class overrides what it does otherwise.
class ReadingNode : public SN::Implements<ReadingNode, SN::IAudioGenerator, SN::ILiveAudioParameterOwner,
						SN::IAudioRenderGraphNodeInfo>
{
public:
	// inInputs: empty ones are left out.
	explicit ReadingNode(std::vector<Generator> inInputs);

	// True as soon as one of the inputs has one.
	bool HasHistory() override;
	SN::TickTime GetDelay() SONARO_NONBLOCKING override { return SN::kTimeZero; }
	void FillInitialDelay(SN::TickTime const&, SN::TickTime const&, bool, bool) SONARO_NONBLOCKING override {}
	void Reset() override;
	void InitializeAudioFilters() override;
	void ShutdownAudioFilters() override;
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override;

	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override
	{
		return {mInputs.begin(), mInputs.end()};
	}
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {}; }

protected:
	// A buffer of the same size, for a clone.
	static std::shared_ptr<dsp::AudioBuffer> MakeAlike(dsp::AudioBuffer const& inBuffer)
	{
		return std::make_shared<dsp::AudioBuffer>(inBuffer.GetNumChannels(), inBuffer.GetCapacity());
	}

private:
	std::vector<Generator> mInputs;
};

} // namespace SonaroHost::Sequence
