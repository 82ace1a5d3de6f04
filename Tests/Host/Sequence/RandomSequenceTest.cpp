// Graphs of random sequences against a renderer that knows neither blocks nor latencies.

#include "RandomSequence.h"
#include "NaiveSequence.h"
#include "SequenceShrinking.h"
#include "SonaroHost/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <sstream>

namespace SonaroHost::Sequence::Testing
{
namespace
{

constexpr unsigned kBlockFrames = 4096;

// The length of each next block.
using BlockSizes = std::function<unsigned()>;

BlockSizes BlocksOf(unsigned inFrames)
{
	return [inFrames] { return inFrames; };
}

BlockSizes RandomBlocks(unsigned inSeed, unsigned inLargest)
{
	return [random = std::mt19937(inSeed), inLargest]() mutable
	{ return 1 + static_cast<unsigned>(random() % inLargest); };
}

struct Run
{
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
	BlockSizes mBlocks = BlocksOf(kBlockFrames);
	bool mIsReverse = false;
	bool mIsPlayback = false;
};

using Sound = std::vector<std::vector<float>>;

struct Rendered
{
	Sound mSound;
	std::int64_t mWarmUpFrames = 0;
};

// In reverse, the sound is turned round again.
Rendered Render(Description const& inSequence, SN::FrameRate const& inFrameRate, Run inRun)
{
	SN::Prefetcher prefetcher;
	RenderContextScope const context(
		kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"), inRun.mIsPlayback ? &prefetcher : nullptr);
	SequenceGraph const graph(inSequence, context.Get(), inFrameRate);
	auto const& generator = graph.GetGenerator();
	std::int64_t const first = inRun.mFirst - (inRun.mIsReverse ? 0 : graph.GetWarmUpFrames());
	std::int64_t const end = inRun.mEnd + (inRun.mIsReverse ? graph.GetWarmUpFrames() : 0);

	Rendered result{Sound(graph.GetLayout().size()), graph.GetWarmUpFrames()};
	dsp::AudioBuffer block(graph.GetLayout().size(), kBlockFrames);
	generator->InitializeAudioFilters();
	generator->Preroll(SN::TickTime(inRun.mIsReverse ? end : first, inFrameRate), inRun.mIsReverse);
	for (std::int64_t done = 0; done < end - first;)
	{
		std::int64_t const count = std::min<std::int64_t>(inRun.mBlocks(), end - first - done);
		block.SetUseSize(static_cast<unsigned>(count));
		std::int64_t const time = inRun.mIsReverse ? end - done - count : first + done;
		generator->GetAudioData(SN::TickTime(time, inFrameRate), block, inRun.mIsReverse);
		for (std::size_t channel = 0; channel < result.mSound.size(); ++channel)
		{
			bool const isSilent = block.IsChannelSilent(channel);
			for (std::int64_t i = 0; i < count; ++i)
			{
				result.mSound[channel].push_back(isSilent ? 0.0f : block.GetChannel(channel)[i]);
			}
		}
		done += count;
	}
	generator->ShutdownAudioFilters();
	for (std::vector<float>& channel : result.mSound)
	{
		channel.erase(channel.begin(), channel.begin() + graph.GetWarmUpFrames());
		if (inRun.mIsReverse)
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

void ExpectTruth(unsigned inSeed, RandomTraits const& inTraits)
{
	RandomSequence const random = MakeRandomSequence(inSeed, inTraits);
	auto const check = [&](Description const& inSequence)
	{
		std::int64_t const frames = GetFrames(inSequence, random.mFrameRate);
		// Every third one begins in the middle.
		std::int64_t const first = inSeed % 3 == 0 ? std::min<std::int64_t>(frames - 1, inSeed * 37) : 0;
		Rendered const rendered =
			Render(inSequence, random.mFrameRate, {first, frames, RandomBlocks(inSeed, kBlockFrames)});
		Signal const truth =
			RenderNaively(inSequence, {frames, first - rendered.mWarmUpFrames, random.mFrameRate});
		return FindDifference(rendered.mSound, truth, first, random.mTolerance);
	};
	ExpectNoDifference(inSeed, random, check);
}

// Another run against one in large blocks, to the bit.
void ExpectSame(unsigned inSeed, RandomTraits const& inTraits, Run const& inOther)
{
	RandomSequence const random = MakeRandomSequence(inSeed, inTraits);
	auto const check = [&](Description const& inSequence)
	{
		Run plain;
		plain.mEnd = GetFrames(inSequence, random.mFrameRate);
		Run other = inOther;
		other.mEnd = plain.mEnd;
		return FindDifference(Render(inSequence, random.mFrameRate, other).mSound,
			Render(inSequence, random.mFrameRate, plain).mSound, 0,
			random.mHasExactFades ? 0.0 : random.mTolerance);
	};
	ExpectNoDifference(inSeed, random, check);
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
	for (unsigned seed = 3001; seed <= 3060; ++seed)
	{
		ExpectSame(seed, {}, {.mBlocks = RandomBlocks(seed, kBlockFrames), .mIsPlayback = true});
	}
}

TEST(RandomSequence, ReverseIsTheForwardOneTurnedRound)
{
	for (unsigned seed = 4001; seed <= 4060; ++seed)
	{
		ExpectSame(
			seed, {.mItemLatency = false}, {.mBlocks = RandomBlocks(seed, kBlockFrames), .mIsReverse = true});
	}
}

} // namespace
} // namespace SonaroHost::Sequence::Testing
