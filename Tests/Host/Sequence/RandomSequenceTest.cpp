// Graphs of random sequences against a renderer that knows neither blocks nor latencies, and against each other: what
// is heard at a frame is the same in an export, in any playback, forward and in reverse, after seeks and in loops.

#include "RandomSequence.h"
#include "MemoryMedia.h"
#include "NaiveSequence.h"
#include "SequenceShrinking.h"
#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/PrefetchRange.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Graph/GraphDrawing.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/Pull.h"
#include "Support/Trials.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <tuple>

namespace SonaroHost::Sequence::Testing::RandomSequenceTest
{
namespace
{

constexpr unsigned kBlockFrames = 4096;
// A render is single precision, the truth double.
constexpr double kTolerance = 4e-6;

using SN::Testing::BlockSizes;
using SN::Testing::BlocksOf;

using Sound = std::vector<std::vector<float>>;

// Of 1 to 4096 frames, short ones as often as long ones.
BlockSizes MixedBlocks(unsigned inSeed)
{
	return [random = std::mt19937(inSeed)]() mutable
	{
		unsigned const longest = 1u << (random() % 13);
		return 1 + random() % longest;
	};
}

// A part of a run on one graph. Sound and truth stand for the frames that were pulled, in playing order.
struct Part
{
	enum class Begin
	{
		kPreroll,
		kReset,
		kSeek,
	};

	Begin mBegin = Begin::kPreroll;
	bool mIsReverse = false;
	std::int64_t mFirst = 0;
	std::int64_t mFrames = 0;
	// With an end, playing goes round in it, and mFirst lies within it.
	std::int64_t mLoopFirst = 0;
	std::int64_t mLoopEnd = 0;
};

struct Rendering
{
	std::vector<Part> mParts;
	BlockSizes mBlocks = BlocksOf(kBlockFrames);
	bool mIsPlayback = false;
	// Only what has been read ahead for a block is there for it.
	bool mIsStrict = false;
	LiveEdits const* mEdits = nullptr;
};

// The frames of a part in playing order.
std::vector<std::int64_t> ListFrames(Part const& inPart)
{
	std::vector<std::int64_t> frames;
	std::int64_t frame = inPart.mIsReverse ? inPart.mFirst - 1 : inPart.mFirst;
	while (static_cast<std::int64_t>(frames.size()) < inPart.mFrames)
	{
		frames.push_back(frame);
		frame += inPart.mIsReverse ? -1 : 1;
		if (inPart.mLoopEnd > 0 && frame == (inPart.mIsReverse ? inPart.mLoopFirst - 1 : inPart.mLoopEnd))
		{
			frame = inPart.mIsReverse ? inPart.mLoopEnd - 1 : inPart.mLoopFirst;
		}
	}
	return frames;
}

// How many of them make one block, each a step from the one before.
std::int64_t GetRunLength(std::vector<std::int64_t> const& inFrames, std::size_t inFirst,
	std::int64_t inLongest, std::int64_t inStep)
{
	std::size_t end = inFirst + 1;
	while (end < inFrames.size() && static_cast<std::int64_t>(end - inFirst) < inLongest &&
		   inFrames[end] - inFrames[end - 1] == inStep)
	{
		++end;
	}
	return static_cast<std::int64_t>(end - inFirst);
}

// Plays a random sequence, or a smaller one that it was shrunk to.
class Player
{
public:
	Player(RandomSequence const& inRandom, Description const& inSequence, Rendering const& inRendering)
		: mRandom(inRandom),
		  mRendering(inRendering),
		  mContext(kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"),
			  inRendering.mIsPlayback ? &mPrefetcher : nullptr),
		  mGraph(inSequence, mContext.Get(), inRandom.mFrameRate,
			  inRendering.mIsPlayback ? &mPrefetcher : nullptr),
		  mBlock(mGraph.GetLayout().size(), kBlockFrames),
		  mSound(mGraph.GetLayout().size())
	{
	}

	Sound Play()
	{
		mRandom.mLedger->mIsStrict = mRendering.mIsStrict;
		mGraph.GetGenerator()->InitializeAudioFilters();
		for (Part const& part : mRendering.mParts)
		{
			PlayPart(part);
		}
		mGraph.GetGenerator()->ShutdownAudioFilters();
		mRandom.mLedger->mIsStrict = false;
		return std::move(mSound);
	}

	// Brings all parameters to what they were before a frame, or begins with it.
	static void Edit(LiveEdits const& inEdits, std::int64_t inFrame)
	{
		auto const isDue = [inFrame](auto const& inEdit) { return inEdit.mFrame == inFrame; };
		auto const edit = [&](auto const& inAll, auto const& inSet)
		{
			for (auto const& [target, edits] : inAll)
			{
				if (auto const due = std::find_if(edits.begin(), edits.end(), isDue); due != edits.end())
				{
					inSet(*target, due->mValue);
				}
			}
		};
		edit(inEdits.mNumbers,
			[](auto& ioTarget, float inValue) {
				boost::static_pointer_cast<VX::ParamValue<float>>(ioTarget.GetStartValue())
					->SetValue(inValue);
			});
		edit(inEdits.mSwitches,
			[](auto& ioTarget, bool inValue) {
				boost::static_pointer_cast<VX::ParamValue<bool>>(ioTarget.GetStartValue())->SetValue(inValue);
			});
		edit(inEdits.mMutes, [](auto& ioTarget, int inValue) { ioTarget.Set(inValue); });
	}

private:
	SN::TickTime ToTime(std::int64_t inFrame) const { return {inFrame, mRandom.mFrameRate}; }

	void PlayPart(Part const& inPart)
	{
		SN::IAudioGenerator& generator = *mGraph.GetGenerator();
		mPrefetcher = {
			ToTime(inPart.mLoopFirst), ToTime(inPart.mLoopEnd), inPart.mLoopEnd > 0, inPart.mIsReverse};
		if (inPart.mBegin == Part::Begin::kReset)
		{
			generator.Reset();
		}
		if (inPart.mBegin != Part::Begin::kSeek)
		{
			generator.Preroll(ToTime(inPart.mFirst), inPart.mIsReverse);
		}
		std::vector<std::int64_t> const frames = ListFrames(inPart);
		for (std::size_t done = 0; done < frames.size();)
		{
			std::int64_t const longest = GetLongest(frames[done]);
			std::int64_t const count = GetRunLength(frames, done, longest, inPart.mIsReverse ? -1 : 1);
			done += static_cast<std::size_t>(count);
			PlayBlock(std::min(frames[done - static_cast<std::size_t>(count)], frames[done - 1]), count,
				inPart.mIsReverse);
		}
	}

	// Up to the next edit.
	std::int64_t GetLongest(std::int64_t inFrame)
	{
		std::int64_t longest = mRendering.mBlocks();
		if (mRendering.mEdits)
		{
			Edit(*mRendering.mEdits, inFrame);
			auto const limit = [&](auto const& inAll)
			{
				for (auto const& [target, edits] : inAll)
				{
					for (auto const& edit : edits)
					{
						longest = edit.mFrame > inFrame ? std::min(longest, edit.mFrame - inFrame) : longest;
					}
				}
			};
			limit(mRendering.mEdits->mNumbers);
			limit(mRendering.mEdits->mSwitches);
			limit(mRendering.mEdits->mMutes);
		}
		return longest;
	}

	void PlayBlock(std::int64_t inFrame, std::int64_t inCount, bool inIsReverse)
	{
		if (mRendering.mIsStrict)
		{
			ReadAhead({ToTime(inFrame), ToTime(inFrame + inCount)});
		}
		mBlock.SetUseSize(static_cast<unsigned>(inCount));
		mGraph.GetGenerator()->GetAudioData(ToTime(inFrame), mBlock, inIsReverse);
		for (std::size_t channel = 0; channel < mSound.size(); ++channel)
		{
			bool const isSilent = mBlock.IsChannelSilent(channel);
			for (unsigned i = 0; i < mBlock.GetUseSize(); ++i)
			{
				mSound[channel].push_back(isSilent ? 0.0f : mBlock.GetChannel(channel)[i]);
			}
		}
	}

	void ReadAhead(SN::PrefetchRange const& inRange)
	{
		++mRandom.mLedger->mBatch;
		mRequests.clear();
		SN::PrefetchRequestAccumulator accumulator(
			SN::PrefetchRequestAccumulator::ExtendCapacity, nullptr, &mRequests);
		mGraph.GetGenerator()->AccumulatePrefetchRequests(inRange, SN::AsynchronousPrefetch, accumulator);
		for (SN::AudioPrefetch::PrefetchRequest const& request : mRequests)
		{
			request.source->PrefetchAudioData(0, request.time, request.numSamples);
		}
	}

	RandomSequence const& mRandom;
	Rendering mRendering;
	SN::Prefetcher mPrefetcher;
	RenderContextScope mContext;
	SequenceGraph mGraph;
	dsp::AudioBuffer mBlock;
	Sound mSound;
	std::vector<SN::AudioPrefetch::PrefetchRequest> mRequests;
};

// The first place at which a sound differs by more than is allowed from another one at the frames that it stands for,
// in words; empty when there is none.
template <class Expected>
std::string FindDifference(Sound const& inSound, Expected const& inExpected,
	std::vector<std::int64_t> const& inFrames, double inTolerance)
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
		for (std::size_t i = 0; i < inFrames.size(); ++i)
		{
			auto const expected =
				static_cast<double>(inExpected[channel][static_cast<std::size_t>(inFrames[i])]);
			auto const actual = static_cast<double>(inSound[channel][i]);
			// Written so that what is not a number fails it.
			if (!(std::abs(actual - expected) <= inTolerance * largest))
			{
				text << "channel " << channel << ", frame " << inFrames[i] << ", pulled as " << i << ": "
					 << actual << " instead of " << expected;
				return text.str();
			}
		}
	}
	return {};
}

std::string DescribeGraph(Description const& inSequence, SN::FrameRate const& inFrameRate)
{
	RenderContextScope const context(kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"));
	SequenceGraph const graph(inSequence, context.Get(), inFrameRate);
	return Describe(graph.GetReport()) + GraphDrawing(graph.GetGenerator(), inFrameRate).ToDot("smaller");
}

// Looks for differences, of which it gives the first one in words, in a description.
using Check = std::function<std::string(Description const&)>;

// On a failure, shows a smaller sequence that fails likewise.
void ExpectNoDifference(
	unsigned inSeed, RandomSequence const& inRandom, char const* inWay, Check const& inCheck)
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
		ADD_FAILURE() << "seed " << inSeed << ", " << inWay << ", " << difference << "\nand smaller, "
					  << tryCheck(small) << ":\n"
					  << (throws ? "no graph" : DescribeGraph(small, inRandom.mFrameRate));
	}
}

// So many frames behind the last item as an effect that is not compensated would need.
std::int64_t GetFrames(Description const& inSequence, SN::FrameRate const& inFrameRate)
{
	constexpr std::int64_t kBeyond = 700;
	return GetNearestFrame(GetLength(inSequence), inFrameRate) + kBeyond;
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
	std::tuple<char const*, Description, std::vector<double>> const cases[] = {
		{"before its start", MakeMono({MakeCount(2, 6, -1)}), {0, 0, 0, 1, 2, 3, 0, 0}},
		{"backwards beyond its start", MakeMono({MakeCount(0, 4, 2, -1.0)}), {3, 2, 1, 0, 0, 0, 0, 0}},
		{"crossfade", crossfade, {1, 2, 3, 3, 3, 3, 3, 4}},
		{"nested", MakeMono({nest}), {0, 1.5, 2, 0, 0, 0, 0, 0}},
		{"late", MakeMono({late}), {3, 6, 0, 0, 0, 0, 0, 0}},
		{"sends", sends, {30.25, 60.5, 90.75, 0, 0, 0, 0, 0}},
	};
	for (auto const& [name, sequence, expected] : cases)
	{
		SCOPED_TRACE(name);
		EXPECT_EQ(RenderNaively(sequence, {8, SN::Testing::k48000Hz}), Signal{expected});
	}
}

// What a seed plays of a sequence of so many frames.
class Choice
{
public:
	Choice(unsigned inSeed, std::int64_t inFrames)
		: mRandom(inSeed),
		  mFrames(inFrames)
	{
	}

	Part PickPart(bool inMayLoop)
	{
		Part part;
		std::int64_t const first = Below(mFrames);
		std::int64_t const end = first + 1 + Below(mFrames - first);
		part.mIsReverse = Below(2) == 1;
		part.mFirst = part.mIsReverse ? end : first;
		part.mFrames = end - first;
		part.mBegin = static_cast<Part::Begin>(Below(3));
		if (inMayLoop && Below(2) == 0)
		{
			std::int64_t const longest =
				std::min<std::int64_t>(mFrames - first, std::int64_t{1} << Below(16));
			part.mLoopFirst = first;
			part.mLoopEnd = first + 1 + Below(longest);
			part.mFirst = first + Below(part.mLoopEnd - first) + (part.mIsReverse ? 1 : 0);
			part.mFrames = std::min<std::int64_t>(3 * (part.mLoopEnd - first) + 100, 12000);
		}
		return part;
	}

private:
	std::int64_t Below(std::int64_t inEnd)
	{
		return static_cast<std::int64_t>(mRandom() % static_cast<std::uint64_t>(inEnd));
	}

	std::mt19937_64 mRandom;
	std::int64_t mFrames;
};

struct Kind
{
	char const* mName;
	bool mIsPlayback;
	bool mIsStrict;
	bool mMayLoop;
	int mParts;
};

// Against the whole, to the bit. One part is the whole in one direction.
constexpr Kind kKinds[] = {
	{"export", false, false, false, 1},
	{"strict playback", true, true, false, 1},
	{"export, seeks", false, false, false, 3},
	{"playback, seeks and loops", true, false, true, 3},
	{"strict playback, seeks and loops", true, true, true, 3},
};

Rendering MakeRendering(Kind const& inKind, unsigned inSeed, std::int64_t inFrames)
{
	Rendering rendering;
	rendering.mBlocks = MixedBlocks(inSeed);
	rendering.mIsPlayback = inKind.mIsPlayback;
	rendering.mIsStrict = inKind.mIsStrict;
	if (inKind.mParts == 1)
	{
		bool const isReverse = inSeed % 2 == 1;
		rendering.mParts = {
			{.mIsReverse = isReverse, .mFirst = isReverse ? inFrames : 0, .mFrames = inFrames}};
		return rendering;
	}
	Choice choice(inSeed, inFrames);
	for (int count = 0; count < inKind.mParts; ++count)
	{
		rendering.mParts.push_back(choice.PickPart(inKind.mMayLoop));
	}
	rendering.mParts.front().mBegin = Part::Begin::kPreroll;
	return rendering;
}

std::vector<std::int64_t> ListFrames(Rendering const& inRendering)
{
	std::vector<std::int64_t> frames;
	for (Part const& part : inRendering.mParts)
	{
		std::vector<std::int64_t> const more = ListFrames(part);
		frames.insert(frames.end(), more.begin(), more.end());
	}
	return frames;
}

// In words.
std::string Describe(Rendering const& inRendering)
{
	std::ostringstream text;
	for (Part const& part : inRendering.mParts)
	{
		text << (part.mBegin == Part::Begin::kPreroll    ? "preroll"
					: part.mBegin == Part::Begin::kReset ? "reset"
														 : "seek")
			 << " to " << part.mFirst << (part.mIsReverse ? ", back " : ", ") << part.mFrames;
		if (part.mLoopEnd > 0)
		{
			text << " round [" << part.mLoopFirst << ", " << part.mLoopEnd << ")";
		}
		text << "; ";
	}
	return text.str();
}

// One way of playing a random sequence.
std::string FindDifference(
	RandomSequence const& inRandom, Description const& inSequence, Kind const& inKind, unsigned inSeed)
{
	std::int64_t const frames = GetFrames(inSequence, inRandom.mFrameRate);
	Sound const whole = Player(inRandom, inSequence, {{{.mFrames = frames}}}).Play();
	Rendering const rendering = MakeRendering(inKind, inSeed, frames);
	std::string const difference =
		FindDifference(Player(inRandom, inSequence, rendering).Play(), whole, ListFrames(rendering), 0.0);
	return difference.empty() ? difference : Describe(rendering) + difference;
}

// The whole against the truth, with edits in a playback.
std::string FindUntruth(
	RandomSequence const& inRandom, Description const& inSequence, LiveEdits const* inEdits, unsigned inSeed)
{
	std::int64_t const frames = GetFrames(inSequence, inRandom.mFrameRate);
	Rendering rendering{{{.mFrames = frames}}, MixedBlocks(inSeed)};
	rendering.mIsPlayback = rendering.mIsStrict = inEdits != nullptr;
	rendering.mEdits = inEdits;
	if (inEdits)
	{
		Player::Edit(*inEdits, 0);
	}
	Sound const sound = Player(inRandom, inSequence, rendering).Play();
	if (inEdits)
	{
		Player::Edit(*inEdits, 0);
	}
	Signal const truth = RenderNaively(inSequence, {frames, inRandom.mFrameRate, inEdits});
	return FindDifference(sound, truth, ListFrames(rendering), kTolerance);
}

void ExpectSeed(unsigned inSeed, bool inTriesAll)
{
	RandomSequence const random = MakeRandomSequence(inSeed);
	ExpectNoDifference(inSeed, random, "export against the truth",
		[&](Description const& inSequence) { return FindUntruth(random, inSequence, nullptr, inSeed); });
	unsigned turn = 0;
	auto const isDue = [&] { return inTriesAll || turn++ == inSeed % (std::size(kKinds) + 1); };
	if (isDue())
	{
		ExpectNoDifference(inSeed, random, "edits against the truth",
			[&](Description const& inSequence)
			{ return FindUntruth(random, inSequence, &random.mEdits, inSeed); });
	}
	for (Kind const& kind : kKinds)
	{
		if (isDue())
		{
			ExpectNoDifference(inSeed, random, kind.mName,
				[&](Description const& inSequence)
				{ return FindDifference(random, inSequence, kind, inSeed); });
		}
	}
}

// A number of the environment.
unsigned GetSetting(char const* inName, unsigned inDefault)
{
	char const* const text = std::getenv(inName);
	return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : inDefault;
}

// SONARO_SEQUENCE_SEEDS of them from SONARO_FIRST_SEED on, each in every way, where these are set.
TEST(RandomSequence, PlaysAsDescribedInEveryWay)
{
	unsigned const seeds = GetSetting("SONARO_SEQUENCE_SEEDS", SN::Testing::GetNumTrials(96));
	unsigned const first = GetSetting("SONARO_FIRST_SEED", 1);
	bool const triesAll = std::getenv("SONARO_SEQUENCE_SEEDS") != nullptr;
	for (unsigned seed = first; seed < first + seeds; ++seed)
	{
		ExpectSeed(seed, triesAll);
	}
	// Loops that come back to where an item was left while it was only settling.
	for (unsigned const seed : {798u, 5131u, 5202u, 5527u})
	{
		ExpectSeed(seed, true);
	}
}

} // namespace
} // namespace SonaroHost::Sequence::Testing::RandomSequenceTest
