#pragma once

#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "Sonaro/IMuteAwareItem.h"
#include "Support/Fakes.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <memory>
#include <vector>

namespace SN::Testing
{

// An item on a track that is a FakeGenerator besides: samples come from a function of the item's own time.
// All calls go into one log, which its clones share.
class FakeItem final : public IAudioGenerator,
					   public IAudioGeneratorPrivate,
					   public IMuteAwareItem,
					   public AudioTrackRenderableItemMixin
{
public:
	static constexpr Identifier<FakeItem> kIdentifier{0x6b0f28c4d19e4a73ull, 0x8c25e07b3fa1d946ull};

	explicit FakeItem(unsigned inChannels, SampleFunction inFunction = PositionSample)
		: mNumChannels(inChannels),
		  mFunction(std::move(inFunction))
	{
	}

	// Of these frames at 48000 Hz, its own time 0 at inOrigin.
	static InterfaceRef<FakeItem> Make(unsigned inChannels, long long inStart, long long inEnd,
		long long inOrigin, SampleFunction const& inFunction = PositionSample)
	{
		auto const item = zorvcore::classref::MakeObject<FakeItem>(inChannels, inFunction);
		item->Init(
			TickTime(inStart, k48000Hz), TickTime(inEnd, k48000Hz), TickTime(inOrigin, k48000Hz), k48000Hz);
		return item;
	}

	InterfaceRef<IAudioGenerator> Clone() override
	{
		auto const clone = zorvcore::classref::MakeObject<FakeItem>(mNumChannels, mFunction);
		clone->CopyTimesFrom(*this);
		clone->mDelay = mDelay;
		clone->mCalls = mCalls;
		return clone;
	}
	bool HasHistory() override { return mHasHistory; }
	TickTime GetDelay() override { return mDelay; }
	void Preroll(TickTime const& inTime, bool inReverse) override { Log({"Preroll", inTime, 0, inReverse}); }
	void FillInitialDelay(
		TickTime const& inTime, TickTime const& inDelayTime, bool inReverse, bool inForced) override
	{
		Log({inForced ? "Fill, forced" : "Fill", inTime, inDelayTime.ToFrame64(k48000Hz), inReverse});
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType, PrefetchRequestAccumulator&) override
	{
		Log({"Prefetch", inRange.mStart, (inRange.mEnd - inRange.mStart).ToFrame64(k48000Hz), false});
	}
	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool inReverse) override
	{
		Log({"GetAudioData", inTime, inBuffer.GetUseSize(), inReverse});
		FillFrom(mFunction, mNumChannels, inTime, k48000Hz, inBuffer);
		if (inReverse)
		{
			inBuffer.Reverse();
		}
	}
	void Reset() override { Log({"Reset", {}, 0, false}); }
	void InitializeAudioFilters() override { Log({"InitializeAudioFilters", {}, 0, false}); }
	void ShutdownAudioFilters() override { Log({"ShutdownAudioFilters", {}, 0, false}); }
	unsigned GetNumChannels() override { return mNumChannels; }
	unsigned GetNumOutputChannels() override { return mNumChannels; }
	AudioChannelLayout GetAudioChannelLayout() override
	{
		return VX::CreateAudioChannelLayout(VX::kAudioChannelTypeAdaptive, static_cast<int>(mNumChannels));
	}
	FrameRate GetGeneratorFrameRate() override { return k48000Hz; }

	// Off where allocations count.
	bool mRecordsCalls = true;
	std::shared_ptr<std::vector<Call>> mCalls = std::make_shared<std::vector<Call>>();
	TickTime mDelay;
	bool mHasHistory = false;
	// Whether it answers for IMuteAwareItem.
	bool mIsMuteAware = false;

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* const found = zorvcore::classref::QueryInterfaces<IAudioGenerator, IAudioGeneratorPrivate,
			IAudioTrackRenderableItem, FakeItem>(this, inIdentifier);
		if (!found && mIsMuteAware && inIdentifier == IMuteAwareItem::kIdentifier)
		{
			return static_cast<IMuteAwareItem*>(this);
		}
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	void Log(Call const& inCall) const
	{
		if (mRecordsCalls)
		{
			mCalls->push_back(inCall);
		}
	}

	unsigned mNumChannels;
	SampleFunction mFunction;
};

} // namespace SN::Testing
