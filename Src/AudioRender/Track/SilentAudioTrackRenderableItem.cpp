#include "AudioRender/Track/SilentAudioTrackRenderableItem.h"

namespace SN
{

InterfaceRef<IAudioGenerator> SilentAudioTrackRenderableItem::Clone()
{
	auto const clone = zorvcore::classref::MakeObject<SilentAudioTrackRenderableItem>();
	clone->CopyTimesFrom(*this);
	return clone;
}

void* SilentAudioTrackRenderableItem::QueryMap(GUID const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioRenderGraphNodeInfo,
		IAudioTrackRenderableItem, SilentAudioTrackRenderableItem>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SN
