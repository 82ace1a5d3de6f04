#pragma once

#include "Sonaro/IAudioTrackRenderableItem.h"
#include "Sonaro/Types.h"

// Building and editing lists of items. None of these locks; they run on the thread that builds the
// graph, before a list is handed to a renderer. A null item raises the null-pointer exception at the
// moment it is touched.
namespace SN
{

enum AudioTrackRenderableItemListContinuity
{
	Continuous = 0,
	Gap = 1,
	Overlap = 2,
};

// An item that stands for nothing.
SONARO_API InterfaceRef<IAudioTrackRenderableItem> CreateSilentAudioTrackRenderableItem(
	TickTime const& inStartTime, TickTime const& inEndTime, FrameRate const& inFrameRate);

// Whether the item was made by the function above; false for a null reference.
SONARO_API bool IsSilentAudioTrackRenderableItem(InterfaceRef<IAudioTrackRenderableItem> const& inItem);

// The first pair of neighbours that is not flush decides.
SONARO_API AudioTrackRenderableItemListContinuity GetAudioTrackRenderableItemListContinuity(
	AudioTrackRenderableItemList const& inItems);

// The same items with silent ones in the gaps between them; overlaps stay.
SONARO_API AudioTrackRenderableItemList MakeContinuousAudioTrackRenderableItemList(
	AudioTrackRenderableItemList const& inItems, FrameRate const& inFrameRate);

// Adds the item, after silence if there is a gap. An item shorter than one frame is left out.
SONARO_API void AppendAudioTrackRenderableItem(InterfaceRef<IAudioTrackRenderableItem> const& inItem,
	FrameRate const& inFrameRate, AudioTrackRenderableItemList& ioItems);

// Lays each source item over the target, which is sorted and free of overlaps: what lies under it is
// cut, split or removed. Cutting calls Init on target items that others may share. A source item
// behind the target's end is dropped. Cost: proportional to the lengths of both lists.
SONARO_API void MergeAudioTrackRenderableItems(AudioTrackRenderableItemList const& inSourceItems,
	AudioTrackRenderableItemList& ioTargetItems, FrameRate const& inFrameRate);

} // namespace SN
