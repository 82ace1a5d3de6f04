// Graphs of random sequences against a renderer that knows neither blocks nor latencies.

#include "RandomSequence.h"
#include "MemoryMedia.h"
#include "NaiveSequence.h"
#include "SequenceShrinking.h"
#include "SonaroHost/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/Pull.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <sstream>

namespace SonaroHost::Sequence::Testing
{
namespace
{

constexpr unsigned kBlockFrames = 4096;

using SN::Testing::BlockSizes;
using SN::Testing::BlocksOf;
using SN::Testing::RandomBlocks;

struct Rendering
{
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
	BlockSizes mBlocks = BlocksOf(kBlockFrames);
	bool mIsReverse = false;
	bool mIsPlayback = false;
	// With an end, a playback goes round from there to the start, until it has rendered as much as from mFirst
	// to mEnd.
	std::int64_t mLoopFirst = 0;
	std::int64_t mLoopEnd = 0;
};

using Sound = std::vector<std::vector<float>>;

struct Rendered
{
	Sound mSound;
	std::int64_t mWarmUpFrames = 0;
};

// The longest block at a frame of a loop: it ends where a track that runs ahead comes to the loop's end.
std::int64_t GetLongest(SequenceGraph const& inGraph, std::int64_t inLoopEnd, std::int64_t inFrame)
{
	std::int64_t const left = inLoopEnd - inFrame;
	std::int64_t longest = left;
	for (std::int64_t const ahead : inGraph.GetAheadFrames())
	{
		longest = left > ahead ? std::min(longest, left - ahead) : longest;
	}
	return longest;
}

void PullBlock(SequenceGraph const& inGraph, SN::TickTime const& inTime, bool inIsReverse,
	dsp::AudioBuffer& ioBlock, Sound& ioSound)
{
	inGraph.GetGenerator()->GetAudioData(inTime, ioBlock, inIsReverse);
	for (std::size_t channel = 0; channel < ioSound.size(); ++channel)
	{
		bool const isSilent = ioBlock.IsChannelSilent(channel);
		for (unsigned i = 0; i < ioBlock.GetUseSize(); ++i)
		{
			ioSound[channel].push_back(isSilent ? 0.0f : ioBlock.GetChannel(channel)[i]);
		}
	}
}

// In reverse, the sound is turned round again.
Rendered Render(Description const& inSequence, SN::FrameRate const& inFrameRate, Rendering inRendering)
{
	bool const isReverse = inRendering.mIsReverse;
	bool const isLooping = inRendering.mLoopEnd > 0;
	SN::Prefetcher prefetcher{SN::TickTime(inRendering.mLoopFirst, inFrameRate),
		SN::TickTime(inRendering.mLoopEnd, inFrameRate), isLooping, isReverse};
	RenderContextScope const context(kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"),
		inRendering.mIsPlayback ? &prefetcher : nullptr);
	SequenceGraph const graph(inSequence, context.Get(), inFrameRate);
	std::int64_t const warmUp = graph.GetWarmUpFrames();

	Rendered result{Sound(graph.GetLayout().size()), warmUp};
	dsp::AudioBuffer block(graph.GetLayout().size(), kBlockFrames);
	std::int64_t frame = isReverse ? inRendering.mEnd + warmUp : inRendering.mFirst - warmUp;
	graph.GetGenerator()->InitializeAudioFilters();
	graph.GetGenerator()->Preroll(SN::TickTime(frame, inFrameRate), isReverse);
	for (std::int64_t remaining = inRendering.mEnd - inRendering.mFirst + warmUp; remaining > 0;)
	{
		std::int64_t const longest = isLooping ? GetLongest(graph, inRendering.mLoopEnd, frame) : remaining;
		std::int64_t const count =
			std::min({static_cast<std::int64_t>(inRendering.mBlocks()), remaining, longest});
		remaining -= count;
		block.SetUseSize(static_cast<unsigned>(count));
		frame -= isReverse ? count : 0;
		PullBlock(graph, SN::TickTime(frame, inFrameRate), isReverse, block, result.mSound);
		frame += isReverse ? 0 : count;
		frame = isLooping && frame == inRendering.mLoopEnd ? inRendering.mLoopFirst : frame;
	}
	graph.GetGenerator()->ShutdownAudioFilters();
	for (std::vector<float>& channel : result.mSound)
	{
		channel.erase(channel.begin(), channel.begin() + warmUp);
		if (isReverse)
		{
			std::reverse(channel.begin(), channel.end());
		}
	}
	return result;
}

// The first place at which two sounds differ by more than is allowed, in words; empty when there is none.
// A sound of floats stands for the frames from inFirst on of the other one.
template <class Expected>
std::string FindDifference(
	Sound const& inSound, Expected const& inExpected, std::int64_t inFirst, double inTolerance)
{
	std::ostringstream text;
	text.precision(std::numeric_limits<float>::max_digits10);
	double largest = 1.0;
	for (auto const& channel : inExpected)
	{
		for (auto const sample : channel)
		{
			largest = std::max(largest, std::abs(static_cast<double>(sample)));
		}
	}
	for (std::size_t channel = 0; channel < inExpected.size(); ++channel)
	{
		for (std::size_t i = 0; i < inSound[channel].size(); ++i)
		{
			auto const expected =
				static_cast<double>(inExpected[channel][i + static_cast<std::size_t>(inFirst)]);
			auto const actual = static_cast<double>(inSound[channel][i]);
			// Written so that what is not a number fails it.
			if (!(std::abs(actual - expected) <= inTolerance * largest))
			{
				text << "channel " << channel << ", frame " << inFirst + static_cast<std::int64_t>(i) << ": "
					 << actual << " instead of " << expected;
				return text.str();
			}
		}
	}
	return {};
}

// Looks for differences, of which it gives the first one in words, in a description.
using Check = std::function<std::string(Description const&)>;

// On a failure, shows a smaller sequence that fails likewise.
void ExpectNoDifference(unsigned inSeed, RandomSequence const& inRandom, Check const& inCheck)
{
	bool hasThrown = false;
	auto const tryCheck = [&](Description const& inSequence)
	{
		try
		{
			hasThrown = false;
			return inCheck(inSequence);
		}
		catch (std::exception const& error)
		{
			hasThrown = true;
			return std::string(error.what());
		}
	};
	std::string const difference = tryCheck(*inRandom.mSequence);
	if (!difference.empty())
	{
		bool const throws = hasThrown;
		Description const small = Shrink(*inRandom.mSequence, [&](Description const& inSequence)
			{ return !tryCheck(inSequence).empty() && hasThrown == throws; });
		ADD_FAILURE() << "seed " << inSeed << ", " << difference << "\nand smaller, " << tryCheck(small)
					  << ":\n"
					  << Describe(small, inRandom.mFrameRate);
	}
}

// So many frames behind the last item as an effect that is not compensated would need.
std::int64_t GetFrames(Description const& inSequence, SN::FrameRate const& inFrameRate)
{
	constexpr std::int64_t kBeyond = 700;
	return GetNearestFrame(GetLength(inSequence), inFrameRate) + kBeyond;
}

void ExpectTruth(unsigned inSeed, RandomTraits const& inTraits, bool inIsPlayback = false)
{
	RandomSequence const random = MakeRandomSequence(inSeed, inTraits);
	auto const check = [&](Description const& inSequence)
	{
		std::int64_t const frames = GetFrames(inSequence, random.mFrameRate);
		// Every third one begins in the middle.
		std::int64_t const first = inSeed % 3 == 0 ? std::min<std::int64_t>(frames - 1, inSeed * 37) : 0;
		Rendered const rendered = Render(inSequence, random.mFrameRate,
			{first, frames, RandomBlocks(inSeed, kBlockFrames), false, inIsPlayback});
		Signal const truth =
			RenderNaively(inSequence, {frames, first - rendered.mWarmUpFrames, random.mFrameRate});
		return FindDifference(rendered.mSound, truth, first, random.mTolerance);
	};
	ExpectNoDifference(inSeed, random, check);
}

// Another run against one in large blocks, to the bit.
void ExpectSame(unsigned inSeed, RandomTraits const& inTraits, Rendering const& inOther)
{
	RandomSequence const random = MakeRandomSequence(inSeed, inTraits);
	auto const check = [&](Description const& inSequence)
	{
		Rendering plain;
		plain.mEnd = GetFrames(inSequence, random.mFrameRate);
		Rendering other = inOther;
		other.mEnd = plain.mEnd;
		return FindDifference(Render(inSequence, random.mFrameRate, other).mSound,
			Render(inSequence, random.mFrameRate, plain).mSound, 0,
			random.mHasExactFades ? 0.0 : random.mTolerance);
	};
	ExpectNoDifference(inSeed, random, check);
}

// Two and a half times round a part that is longer than any track runs ahead.
void ExpectLoop(unsigned inSeed)
{
	RandomSequence const random = MakeRandomSequence(inSeed, {.mItemLatency = false});
	auto const check = [&](Description const& inSequence)
	{
		Rendering plain;
		plain.mEnd = GetFrames(inSequence, random.mFrameRate) + 20000;
		Rendering loop{
			.mFirst = inSeed % 1000, .mBlocks = RandomBlocks(inSeed, kBlockFrames), .mIsPlayback = true};
		loop.mLoopFirst = loop.mFirst;
		loop.mLoopEnd = plain.mEnd - 100;
		std::int64_t const length = loop.mLoopEnd - loop.mLoopFirst;
		loop.mEnd = loop.mFirst + 2 * length + length / 2;
		Sound expected = Render(inSequence, random.mFrameRate, plain).mSound;
		for (std::vector<float>& channel : expected)
		{
			channel.resize(static_cast<std::size_t>(loop.mLoopEnd));
			while (static_cast<std::int64_t>(channel.size()) < loop.mEnd)
			{
				channel.push_back(channel[channel.size() - static_cast<std::size_t>(length)]);
			}
		}
		return FindDifference(Render(inSequence, random.mFrameRate, loop).mSound, expected, loop.mFirst,
			random.mHasExactFades ? 0.0 : random.mTolerance);
	};
	ExpectNoDifference(inSeed, random, check);
}

// A mono item of 1, 2, 3 and so on up to 8.
Item MakeCount(std::int64_t inStart, std::int64_t inEnd, std::int64_t inFirstFrame, double inSpeed = 1.0)
{
	auto const media = std::make_shared<MemoryMedia const>(
		48000.0, MemoryMedia::Samples{{1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f}});
	Item item;
	item.mStart = SN::TickTime(inStart, SN::Testing::k48000Hz);
	item.mEnd = SN::TickTime(inEnd, SN::Testing::k48000Hz);
	item.mContent = Clip{media, inFirstFrame, {}};
	item.mSpeed = inSpeed;
	return item;
}

Description MakeMono(std::vector<Item> inItems, Chain inChain = {})
{
	Description sequence;
	sequence.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	Track track;
	track.mLayout = sequence.mLayout;
	track.mItems = std::move(inItems);
	track.mChain = std::move(inChain);
	sequence.mTracks.push_back(std::move(track));
	return sequence;
}

Fader MakeGain(float inGain)
{
	return {AutomationParameter<float>::Create(inGain), {}};
}

TEST(NaiveSequence, SoundsAsWorkedOutByHand)
{
	SN::TickTime const two(2, SN::Testing::k48000Hz);
	Description crossfade = MakeMono({MakeCount(0, 4, 0), MakeCount(4, 8, 0)});
	crossfade.mTracks[0].mCrossfades.push_back({0, two, two});
	Item nest = MakeCount(1, 4, 0);
	nest.mContent = Nest{
		std::make_shared<Description const>(MakeMono({MakeCount(0, 4, 0)}, {{MakeGain(0.5f)}, {}})), two};
	Item late = MakeCount(0, 2, 0);
	late.mChain.mStages.push_back(Effect{"late", LatentEffect{700, 3.0f}});
	// Before and behind the fader, into a submix.
	Description sends = MakeMono({MakeCount(0, 3, 0)},
		{{Send{0, MakeGain(2.0f), {}}, MakeGain(0.25f), Send{0, MakeGain(4.0f), {}}}, {}});
	sends.mSubmixes.push_back(
		{"", zorvmediatypes::CreateStereoChannelLayout(), {{MakeGain(10.0f)}, {}}, {}, {}, {}});
	struct Case
	{
		char const* mName;
		Description mSequence;
		std::vector<double> mExpected;
	};
	Case const cases[] = {
		{"before its start", MakeMono({MakeCount(2, 6, -1)}), {0, 0, 0, 1, 2, 3, 0, 0}},
		{"backwards beyond its start", MakeMono({MakeCount(0, 4, 2, -1.0)}), {3, 2, 1, 0, 0, 0, 0, 0}},
		{"crossfade", crossfade, {1, 2, 3, 3, 3, 3, 3, 4}},
		{"nested", MakeMono({nest}), {0, 1.5, 2, 0, 0, 0, 0, 0}},
		{"late", MakeMono({late}), {3, 6, 0, 0, 0, 0, 0, 0}},
		{"sends", sends, {30.25, 60.5, 90.75, 0, 0, 0, 0, 0}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(RenderNaively(test.mSequence, {8, 0, SN::Testing::k48000Hz}), Signal{test.mExpected});
	}
}

TEST(RandomSequence, SoundsAsItsDescriptionSays)
{
	for (unsigned seed = 1; seed <= 500; ++seed)
	{
		ExpectTruth(seed, {});
	}
}

TEST(RandomSequence, FollowsCurves)
{
	for (unsigned seed = 1001; seed <= 1060; ++seed)
	{
		ExpectTruth(seed, {.mCurves = true});
	}
}

TEST(RandomSequence, AnyCutEqualsTheWhole)
{
	for (unsigned seed = 2001; seed <= 2060; ++seed)
	{
		RandomTraits const traits{.mCurves = seed % 2 == 0};
		ExpectSame(seed, traits, {.mBlocks = RandomBlocks(seed, seed % 4 == 0 ? 100 : kBlockFrames)});
	}
	for (unsigned seed = 2101; seed <= 2104; ++seed)
	{
		ExpectSame(seed, {.mCurves = seed % 2 == 0}, {.mBlocks = BlocksOf(1)});
	}
}

TEST(RandomSequence, PlaybackEqualsExport)
{
	for (unsigned seed = 3001; seed <= 3100; ++seed)
	{
		ExpectSame(seed, {}, {.mBlocks = RandomBlocks(seed, kBlockFrames), .mIsPlayback = true});
	}
	// Nested sequences that begin within an item whose effects are late.
	for (unsigned const seed : {11330u, 11526u, 11894u, 13254u, 15994u, 16204u})
	{
		ExpectSame(seed, {}, {.mBlocks = RandomBlocks(seed, kBlockFrames), .mIsPlayback = true});
	}
	for (unsigned seed = 3101; seed <= 3150; ++seed)
	{
		constexpr bool kIsPlayback = true;
		ExpectTruth(seed, {.mCurves = true}, kIsPlayback);
	}
}

TEST(RandomSequence, LoopsComeRoundWithoutASeam)
{
	for (unsigned seed = 6001; seed <= 6060; ++seed)
	{
		ExpectLoop(seed);
	}
}

TEST(RandomSequence, ReverseIsTheForwardOneTurnedRound)
{
	for (unsigned seed = 4001; seed <= 4100; ++seed)
	{
		ExpectSame(
			seed, {.mItemLatency = false}, {.mBlocks = RandomBlocks(seed, kBlockFrames), .mIsReverse = true});
	}
}

TEST(RandomSequence, ReversePlaybackIsTheForwardOneTurnedRound)
{
	std::vector<unsigned> seeds(100);
	std::iota(seeds.begin(), seeds.end(), 5001u);
	// A nested sequence with a fader, twice.
	seeds.push_back(10192);
	for (unsigned const seed : seeds)
	{
		ExpectSame(seed, {.mItemLatency = false},
			{.mBlocks = RandomBlocks(seed, kBlockFrames), .mIsReverse = true, .mIsPlayback = true});
	}
}

} // namespace
} // namespace SonaroHost::Sequence::Testing
