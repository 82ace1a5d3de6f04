#pragma once

#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Core/SilentGenerator.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"

namespace SN
{

// The item that stands for nothing: fills gaps. It silences the whole buffer that it is given, so the
// caller passes a view of exactly the length wanted.
class SilentAudioTrackRenderableItem final
	: public Implements<SilentAudioTrackRenderableItem, SilentGenerator, IAudioRenderGraphNodeInfo,
		  AudioTrackRenderableItemMixin>
{
public:
	static constexpr Identifier<SilentAudioTrackRenderableItem> kIdentifier{
		0x388c92bc61698448ull, 0x33e55314765ff240ull};

	InterfaceRef<IAudioGenerator> Clone() override
	{
		auto const clone = zorvcore::classref::MakeObject<SilentAudioTrackRenderableItem>();
		clone->CopyTimesFrom(*this);
		return clone;
	}

	std::u16string GetNodeName() override { return u"SilentAudioTrackRenderableItem"; }
	std::vector<InterfaceRef<UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<InterfaceRef<UnknownBase>> GetProcessorNodes() override { return {}; }
};

} // namespace SN
