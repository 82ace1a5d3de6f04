#pragma once

#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "Sonaro/IMuteAwareItem.h"
#include "Support/Fakes.h"

namespace SN::Testing
{

// An item on a track that is a FakeGenerator besides; its clones share its record, in which amounts are frames.
class FakeItem final : public FakeGenerator, public IMuteAwareItem, public AudioTrackRenderableItemMixin
{
public:
	static constexpr Identifier<FakeItem> kIdentifier{0x6b0f28c4d19e4a73ull, 0x8c25e07b3fa1d946ull};

	using FakeGenerator::FakeGenerator;

	// Of these frames at 48000 Hz, its own time 0 at inOrigin.
	static InterfaceRef<FakeItem> Make(unsigned inChannels, long long inStart, long long inEnd,
		long long inOrigin, SampleFunction const& inFunction = PositionSample)
	{
		auto const item = zorvcore::classref::MakeObject<FakeItem>(inChannels, inFunction);
		item->Init(At(inStart), At(inEnd), At(inOrigin), k48000Hz);
		return item;
	}

	InterfaceRef<IAudioGenerator> Clone() override
	{
		auto const clone = zorvcore::classref::MakeObject<FakeItem>(mNumChannels, mFunction, k48000Hz, mLog);
		clone->CopyTimesFrom(*this);
		clone->mDelay = mDelay;
		return clone;
	}
	void FillInitialDelay(
		TickTime const& inTime, TickTime const& inDelayTime, bool inReverse, bool inForced) override
	{
		Record({inForced ? "Fill, forced" : "Fill", inTime, inDelayTime.ToFrame64(k48000Hz), inReverse});
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType, PrefetchRequestAccumulator&) override
	{
		Record({"Prefetch", inRange.mStart, (inRange.mEnd - inRange.mStart).ToFrame64(k48000Hz), false});
	}

	// Whether it answers for IMuteAwareItem.
	bool mIsMuteAware = false;

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found =
			zorvcore::classref::QueryInterfaces<IAudioTrackRenderableItem, FakeItem>(this, inIdentifier);
		if (!found && mIsMuteAware && inIdentifier == IMuteAwareItem::kIdentifier)
		{
			return static_cast<IMuteAwareItem*>(this);
		}
		return found ? found : FakeGenerator::QueryMap(inIdentifier);
	}
};

} // namespace SN::Testing
