// How often each nested sequence is reached by what goes through a whole graph: by calls that are counted, since
// what multiplies with every level is out of reach of any clock after a few dozen.

#include "MemoryMedia.h"
#include "Sonaro/PrefetchRange.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Sonaro/Prefetcher.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/Answers.h"
#include "Support/Pull.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace SonaroHost::Sequence::Testing::NestWalkTest
{
namespace
{

using SN::Testing::k48000Hz;

constexpr std::int64_t kFrames = 4000;

struct Calls
{
	int mStarts = 0;
	int mStops = 0;
	int mPrerolls = 0;
	int mResets = 0;
	int mHistories = 0;
	int mBlocks = 0;
	int mClones = 0;
};

// Leaves its sound alone and counts.
class CountingProcessor final : public SN::Testing::Answers<SN::IAudioProcessor>
{
public:
	explicit CountingProcessor(Calls& ioCalls)
		: mCalls(ioCalls)
	{
	}

	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		++mCalls.mClones;
		return zorvcore::classref::MakeObject<CountingProcessor>(mCalls);
	}
	bool HasHistory() override
	{
		++mCalls.mHistories;
		return false;
	}
	void ProcessAudioData(dsp::AudioBuffer&, SN::TickTime const&) override { ++mCalls.mBlocks; }
	void Preroll(SN::TickTime const&, bool) override { ++mCalls.mPrerolls; }
	void Reset() override { ++mCalls.mResets; }
	void InitializeAudioFilter() override { ++mCalls.mStarts; }
	void ShutdownAudioFilter() override { ++mCalls.mStops; }
	SN::TickTime GetDelay() override { return SN::kTimeZero; }

private:
	Calls& mCalls;
};

Item MakeItem(bool inHasFades)
{
	Item item;
	item.mEnd = {kFrames, k48000Hz};
	if (inHasFades)
	{
		item.mFadeIn.mLength = item.mFadeOut.mLength = {kFrames / 4, k48000Hz};
	}
	return item;
}

// A sequence of one item, that counts in its master, which each walk through a sequence meets once.
Description MakeSequence(Item inItem, Calls& ioCalls)
{
	Description description;
	description.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	Track& track = description.mTracks.emplace_back();
	track.mLayout = description.mLayout;
	track.mItems.push_back(std::move(inItem));
	description.mMaster.mStages.emplace_back(Effect{
		"counter", [&ioCalls](auto const&, SN::FrameRate const&, auto const&) {
			return SN::InterfaceRef<SN::IAudioProcessor>(
				zorvcore::classref::MakeObject<CountingProcessor>(ioCalls));
		}});
	return description;
}

// Sequences within each other, a clip in the innermost that may come late. The calls of each, from the innermost on.
Description MakeNests(bool inHasFades, std::int64_t inLatency, std::vector<Calls>& ioCalls)
{
	Item item = MakeItem(inHasFades);
	item.mContent = Clip{
		std::make_shared<MemoryMedia const>(48000, MemoryMedia::Samples{std::vector<float>(kFrames, 1.0f)}),
		0, {}};
	item.mChain.mStages.emplace_back(Effect{"late", LatentEffect{inLatency}});
	Description description = MakeSequence(item, ioCalls.front());
	for (std::size_t depth = 1; depth < ioCalls.size(); ++depth)
	{
		Item nest = MakeItem(inHasFades);
		nest.mContent = Nest{std::make_shared<Description const>(std::move(description)), {}};
		description = MakeSequence(nest, ioCalls[depth]);
	}
	return description;
}

// One walk of each kind through a graph, and what it reached.
void ExpectOneWalk(bool inHasFades, bool inIsPlayback, std::int64_t inLatency)
{
	constexpr std::size_t kDepth = 40;
	std::vector<Calls> calls(kDepth);
	Description const description = MakeNests(inHasFades, inLatency, calls);
	SN::Prefetcher prefetcher;
	RenderContextScope const context(
		256, SN::kTimeMax, SN::ImmutableString("test"), inIsPlayback ? &prefetcher : nullptr);
	SequenceGraph const graph(description, context.Get(), k48000Hz);
	SN::IAudioGenerator& generator = *graph.GetGenerator();
	// Each one was asked when it was built in.
	std::for_each(calls.begin(), calls.end(), [](Calls& ioCalls) { ioCalls.mHistories = 0; });

	std::vector<SN::AudioPrefetch::PrefetchRequest> requests;
	SN::PrefetchRequestAccumulator accumulator(
		SN::PrefetchRequestAccumulator::ExtendCapacity, nullptr, &requests);
	dsp::AudioBuffer block(1, 256);
	generator.HasHistory();
	generator.InitializeAudioFilters();
	generator.Preroll(SN::kTimeZero, false);
	generator.AccumulatePrefetchRequests(
		{SN::kTimeZero, SN::TickTime(200, k48000Hz)}, SN::AsynchronousPrefetch, accumulator);
	std::vector<Calls> const before = calls;
	generator.GetAudioData(SN::kTimeZero, block, false);
	std::vector<Calls> const after = calls;
	generator.Reset();
	generator.ShutdownAudioFilters();

	EXPECT_EQ(requests.size(), 1u);
	for (std::size_t depth = 0; depth < kDepth; ++depth)
	{
		SCOPED_TRACE(std::to_string(kDepth - 1 - depth) + " levels down");
		// What comes late has a history, and so nobody else is asked.
		EXPECT_EQ(calls[depth].mHistories, inLatency == 0 ? 1 : 0);
		EXPECT_EQ(calls[depth].mStarts, 1);
		EXPECT_EQ(calls[depth].mPrerolls, 1);
		EXPECT_EQ(calls[depth].mResets, 1);
		EXPECT_EQ(calls[depth].mStops, 1);
		EXPECT_EQ(after[depth].mBlocks - before[depth].mBlocks, 1);
	}
	// Once more, and a clone. There an item and each of its fades have content of their own, but the tracks
	// below are the same.
	generator.InitializeAudioFilters();
	generator.Clone()->InitializeAudioFilters();
	for (std::size_t depth = 0; depth < kDepth; ++depth)
	{
		bool const isOutermost = depth == kDepth - 1;
		EXPECT_EQ(calls[depth].mClones, 1);
		EXPECT_EQ(calls[depth].mStarts, 2 + (inHasFades && !isOutermost ? 3 : 1));
	}
}

TEST(NestWalk, ReachesEachNestOnce)
{
	for (bool const hasFades : {false, true})
	{
		for (bool const isPlayback : {false, true})
		{
			for (std::int64_t const latency : {0, 100})
			{
				SCOPED_TRACE(testing::Message() << (hasFades ? "with fades, " : "")
												<< (isPlayback ? "playback, " : "") << latency << " late");
				ExpectOneWalk(hasFades, isPlayback, latency);
			}
		}
	}
}

TEST(NestWalk, CountsTheChannelsOfEachPlaceThatANestStandsIn)
{
	Calls calls;
	Item clip = MakeItem(false);
	clip.mContent = Clip{};
	// A track and the master; then two places of all below, and again a track and the master.
	auto sequence = std::make_shared<Description const>(MakeSequence(clip, calls));
	std::uint64_t expected = 2;
	for (int level = 0; level < 100; ++level)
	{
		EXPECT_EQ(CountChannels(*sequence), std::min(expected, std::uint64_t{1} << 62));
		Item nest = MakeItem(false);
		nest.mContent = Nest{sequence, {}};
		Description outer = MakeSequence(nest, calls);
		outer.mTracks.front().mItems.push_back(nest);
		sequence = std::make_shared<Description const>(std::move(outer));
		expected = level < 60 ? 2 + 2 * expected : ~std::uint64_t{0};
	}
}

} // namespace
} // namespace SonaroHost::Sequence::Testing::NestWalkTest
