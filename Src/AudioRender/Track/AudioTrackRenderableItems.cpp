#include "Sonaro/AudioTrackRenderableItems.h"

#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Core/SilentGenerator.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"

namespace SN
{

namespace
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
