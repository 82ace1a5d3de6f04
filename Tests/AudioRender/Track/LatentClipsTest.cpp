#include "AudioRender/Track/DelayedTrackItems.h"
#include "Sonaro/AudioTrackRenderableItems.h"
#include "Support/Engine.h"

namespace SN::LatentClipsTest
{

// An effect that gives its input so many samples late, with silence before.
class LatentEffect final : public Answers<IAudioProcessor>
{
public:
	explicit LatentEffect(unsigned inLatency)
		: mLatency(inLatency),
		  mPast(inLatency, 0.0f)
	{
	}

	InterfaceRef<IAudioProcessor> Clone(FrameRate const&, unsigned, unsigned) override
	{
		return MakeObject<LatentEffect>(mLatency);
	}
	bool HasHistory() override { return true; }
	void ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const&) override
	{
		float* const samples = inBuffer.GetChannel(0);
		bool const isSilent = inBuffer.IsChannelSilent(0);
		for (unsigned i = 0; i < inBuffer.GetUseSize(); ++i)
		{
			mPast.push_back(isSilent ? 0.0f : samples[i]);
			samples[i] = mPast.front();
			mPast.pop_front();
		}
		inBuffer.NoteChannelWrite(0, inBuffer.GetUseSize());
	}
	void Preroll(TickTime const&, bool) override {}
	void Reset() override { mPast.assign(mLatency, 0.0f); }
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	TickTime GetDelay() override { return At(mLatency); }

private:
	unsigned mLatency;
	std::deque<float> mPast;
};

constexpr long long kClipFrames = 8000;

// Three clips of which each has an effect of its latency, and reads as far ahead.
Generator MakeLatentTrack(Context const& inContext, std::vector<unsigned> const& inLatencies)
{
	AudioTrackRenderableItemList items;
	items.push_back(CreateSilentAudioTrackRenderableItem(At(-100), At(0), k48000Hz));
	long long start = 0;
	for (unsigned const latency : inLatencies)
	{
		InterfaceRef<IAudioTrackRenderableItem> const item(MakeItem(inContext, MakeObject<FakeGenerator>(1),
			{.mProcessors = {MakeObject<LatentEffect>(latency)}, .mOffset = At(latency)}));
		item->Init(At(start), At(start + kClipFrames), At(start), k48000Hz);
		items.push_back(item);
		start += kClipFrames;
	}
	items.push_back(CreateSilentAudioTrackRenderableItem(At(start), At(start + 100000), k48000Hz));
	return MakeClipTrack(inContext, items);
}

// Wherever playback begins, and in blocks of any length, each clip's sound stands at its own sample from
// the first one on, though it went through an effect that is late.
TEST(LatentClips, SoundAtTheirNominalSamples)
{
	struct Case
	{
		char const* mName;
		std::vector<unsigned> mLatencies;
	};
	Case const cases[] = {
		{"none", {0, 0, 0}},
		{"a sample", {1, 1, 1}},
		{"the last one alone", {0, 0, 700}},
		{"each another", {100, 1000, 33}},
		{"long", {5000, 5000, 5000}},
	};
	for (Case const& test : cases)
	{
		for (long long const start : {0ll, 1234ll, kClipFrames - 10, kClipFrames + 300})
		{
			for (unsigned const nesting : {0u, 1u})
			{
				SCOPED_TRACE(std::string(test.mName) + " from " + std::to_string(start) + ", depth " +
							 std::to_string(nesting));
				Prefetcher prefetcher;
				ScopedContext const context(512, &prefetcher);
				context.Nest(nesting);
				auto const track = MakeLatentTrack(context, test.mLatencies);
				track->Preroll(At(start), false);
				if (track->GetDelay() == kTimeZero)
				{
					auto const frames = static_cast<unsigned>(3 * kClipFrames - start);
					Samples const out =
						Pull(*track, {.mStartFrame = start, .mFrames = frames}, RandomBlocks(9, 512));
					for (unsigned i = 0; i < frames; ++i)
					{
						ASSERT_EQ(out[0][i], PositionSample(0, (start + i) % kClipFrames))
							<< "frame " << start + i;
					}
				}
				else
				{
					// A nested track cannot hide the delay of the clip that it is in: the sequence around it
					// asks so much earlier.
					EXPECT_EQ(nesting, 1u);
				}
			}
		}
	}
}

// Three items without gaps, the two that are played later with a latency of 40 frames: both are filled while the
// one before is played.
TEST(DelayedTrackItems, AreFilledOnTheWayInBothDirections)
{
	struct Step
	{
		long long mStart;
		// Frames by which each of the two is filled.
		long long mFirst;
		long long mSecond;
	};
	struct Case
	{
		bool mReverse;
		std::vector<Step> mSteps;
	};
	Case const cases[] = {
		{false, {{0, 0, 0}, {250, 0, 0}, {255, 5, 0}, {300, 10, 0}, {560, 10, 10}, {610, 0, 10}}},
		{true, {{900, 0, 0}, {650, 0, 0}, {645, 5, 0}, {600, 10, 0}, {340, 10, 10}, {290, 0, 10}}},
	};
	for (Case const& test : cases)
	{
		DelayedTrackItems::Items items;
		std::vector<InterfaceRef<FakeItem>> fakes;
		for (long long const start : {0, 300, 600})
		{
			fakes.push_back(FakeItem::Make(1, start, start + 300, start));
			items.push_back({fakes.back(), fakes.back()});
		}
		std::size_t const last = test.mReverse ? 0 : 2;
		fakes[1]->mDelay = At(40);
		fakes[last]->mDelay = At(40);
		DelayedTrackItems delayed;
		EXPECT_TRUE(delayed.Classify(items, {At(test.mReverse ? 900 : 0), test.mReverse, 0}).empty());
		for (Step const& step : test.mSteps)
		{
			SCOPED_TRACE(Message() << (test.mReverse ? "in reverse at " : "at ") << step.mStart);
			delayed.FillInitialDelay(At(step.mStart), At(10), test.mReverse, false);
			auto const getFilled = [](FakeItem& ioItem)
			{
				auto const calls = std::exchange(ioItem.mCalls, {});
				return calls.empty() ? 0 : calls.back().mAmount;
			};
			EXPECT_EQ(getFilled(*fakes[1]), step.mFirst);
			EXPECT_EQ(getFilled(*fakes[last]), step.mSecond);
		}
	}
}

} // namespace SN::LatentClipsTest
