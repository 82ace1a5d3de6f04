#include "AudioRender/Track/SilentAudioTrackRenderableItem.h"

namespace SN
{

InterfaceRef<IAudioGenerator> SilentAudioTrackRenderableItem::Clone()
{
	auto const clone = zorvcore::classref::MakeObject<SilentAudioTrackRenderableItem>();
	clone->CopyTimesFrom(*this);
	return clone;
}

} // namespace SN
