#pragma once

#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"

namespace SN
{

// The item that stands for nothing: fills gaps. It silences the whole buffer that it is given, so the
// caller passes a view of exactly the length wanted.
class SilentAudioTrackRenderableItem final : public IAudioGenerator,
											 public IAudioRenderGraphNodeInfo,
											 public AudioTrackRenderableItemMixin
{
public:
	static constexpr Identifier<SilentAudioTrackRenderableItem> kIdentifier{
		0x388c92bc61698448ull, 0x33e55314765ff240ull};

	InterfaceRef<IAudioGenerator> Clone() override;
	bool HasHistory() override { return false; }
	TickTime GetDelay() override { return kTimeZero; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override;
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}

	std::u16string GetNodeName() override { return u"SilentAudioTrackRenderableItem"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }

protected:
	void* QueryMap(GUID const& inIdentifier) override;
};

} // namespace SN
