#include "Sonaro/AudioTrackRenderableItems.h"

#include "AudioRender/Track/SilentAudioTrackRenderableItem.h"

namespace SN
{

namespace
{

// Adds inItem after the list's last item, with silence between the two if there is a gap.
void AppendFlush(InterfaceRef<IAudioTrackRenderableItem> const& inItem, FrameRate const& inFrameRate,
	AudioTrackRenderableItemList& ioItems)
{
	if (!ioItems.empty() && ioItems.back()->GetEndTime() < inItem->GetStartTime())
	{
		ioItems.push_back(CreateSilentAudioTrackRenderableItem(
			ioItems.back()->GetEndTime(), inItem->GetStartTime(), inFrameRate));
	}
	ioItems.push_back(inItem);
}

} // namespace

InterfaceRef<IAudioTrackRenderableItem> CreateSilentAudioTrackRenderableItem(
	TickTime const& inStartTime, TickTime const& inEndTime, FrameRate const& inFrameRate)
{
	auto const item = zorvcore::classref::MakeObject<SilentAudioTrackRenderableItem>();
	item->Init(inStartTime, inEndTime, inStartTime, inFrameRate);
	return item;
}

bool IsSilentAudioTrackRenderableItem(InterfaceRef<IAudioTrackRenderableItem> const& inItem)
{
	return InterfaceRef<SilentAudioTrackRenderableItem>(inItem).IsValid();
}

AudioTrackRenderableItemListContinuity GetAudioTrackRenderableItemListContinuity(
	AudioTrackRenderableItemList const& inItems)
{
	for (std::size_t index = 1; index < inItems.size(); ++index)
	{
		TickTime const end = inItems[index - 1]->GetEndTime();
		TickTime const start = inItems[index]->GetStartTime();
		if (end != start)
		{
			return end < start ? Gap : Overlap;
		}
	}
	return Continuous;
}

AudioTrackRenderableItemList MakeContinuousAudioTrackRenderableItemList(
	AudioTrackRenderableItemList const& inItems, FrameRate const& inFrameRate)
{
	AudioTrackRenderableItemList result;
	result.reserve(inItems.size());
	for (InterfaceRef<IAudioTrackRenderableItem> const& item : inItems)
	{
		AppendFlush(item, inFrameRate, result);
	}
	return result;
}

void AppendAudioTrackRenderableItem(InterfaceRef<IAudioTrackRenderableItem> const& inItem,
	FrameRate const& inFrameRate, AudioTrackRenderableItemList& ioItems)
{
	if (inItem->GetEndTime() - inItem->GetStartTime() >= TickTime(1, inFrameRate))
	{
		AppendFlush(inItem, inFrameRate, ioItems);
	}
}

} // namespace SN
