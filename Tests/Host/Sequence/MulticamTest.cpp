// Multicam items against a list of which angle is heard at each frame.

#include "Host/Refusal.h"
#include "MemoryMedia.h"
#include "Sequence/Stage/PlainStage.h"
#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/PrefetchRange.h"
#include "Sonaro/Prefetcher.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/Pull.h"
#include "Support/Trials.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace SonaroHost::Sequence::Testing::MulticamTest
{
namespace
{

using SN::Testing::At;
using SN::Testing::k48000Hz;
using SN::Testing::Samples;
using SonaroHost::Testing::GetRefusalOf;

constexpr std::int64_t kFrames = 4000;
constexpr unsigned kBlockFrames = 256;
constexpr int kByCuts = -1;

// Each sample says of which angle and frame it is; 0 is silence.
float Encode(std::size_t inAngle, std::int64_t inFrame)
{
	bool const isInside = inFrame >= 0 && inFrame < kFrames;
	return isInside ? static_cast<float>(static_cast<std::int64_t>(inAngle) * 8192 + inFrame + 1) : 0.0f;
}

Track MakeTrack(Item inItem, std::vector<Stage> inStages = {})
{
	Track track;
	track.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	track.mItems = {std::move(inItem)};
	track.mChain.mStages = std::move(inStages);
	return track;
}

Description MakeMono(Track inTrack)
{
	Description sequence;
	sequence.mLayout = inTrack.mLayout;
	sequence.mTracks = {std::move(inTrack)};
	return sequence;
}

std::shared_ptr<Description const> MakeAngle(std::size_t inAngle, std::vector<Stage> inStages = {},
	std::shared_ptr<PrefetchLedger> const& inLedger = {})
{
	MemoryMedia::Samples samples(1);
	for (std::int64_t frame = 0; frame < kFrames; ++frame)
	{
		samples[0].push_back(Encode(inAngle, frame));
	}
	Item item;
	item.mEnd = At(kFrames);
	item.mContent = Clip{std::make_shared<MemoryMedia const>(48000.0, std::move(samples), inLedger), 0, {}};
	return std::make_shared<Description const>(MakeMono(MakeTrack(item, std::move(inStages))));
}

Item MakeItem(Multicam inMulticam, std::int64_t inFirst = 0, std::int64_t inEnd = kFrames)
{
	Item item;
	item.mName = "scene";
	item.mStart = At(inFirst);
	item.mEnd = At(inEnd);
	item.mContent = std::move(inMulticam);
	return item;
}

Multicam::Cut MakeCut(std::int64_t inFrame, std::size_t inAngle, std::int64_t inFade = 0)
{
	return {At(inFrame), inAngle, {At(inFade), FadeShape::kLinear}};
}

// An angle, and the one that goes out within a crossfade, with the gains of both.
struct Heard
{
	std::size_t mAngle = 0;
	std::size_t mOutgoing = 0;
	float mGain = 1.0f;
	float mOutgoingGain = 0.0f;
};

// For each frame of the angles, and beyond them up to the last cut.
std::vector<Heard> ListHeard(Multicam const& inMulticam)
{
	constexpr std::int64_t kAll = kFrames + 1000;
	std::vector<Heard> heard(kAll, {inMulticam.mFirstAngle});
	std::vector<Fade> fades(kAll);
	for (Multicam::Cut const& cut : inMulticam.mCuts)
	{
		std::int64_t const first = std::max<std::int64_t>(cut.mTime.ToFrame64(k48000Hz), 0);
		for (std::int64_t frame = first; frame < kAll; ++frame)
		{
			heard[static_cast<std::size_t>(frame)].mAngle = cut.mAngle;
			fades[static_cast<std::size_t>(frame)] = cut.mFade;
		}
	}
	for (std::size_t first = 1, end = 1; first < heard.size(); first = end)
	{
		bool const isCut = heard[first].mAngle != heard[first - 1].mAngle;
		for (end = first + 1; end < heard.size() && heard[end].mAngle == heard[first].mAngle;)
		{
			++end;
		}
		std::int64_t const whole = isCut ? fades[first].mLength.ToFrame64(k48000Hz) : 0;
		auto const length = static_cast<std::int64_t>(end - first);
		// Past the end it would go on.
		std::int64_t const fade = end < heard.size() ? std::min(whole, length) : whole;
		for (std::int64_t done = 0; done < std::min(fade, length); ++done)
		{
			Heard& one = heard[first + static_cast<std::size_t>(done)];
			one.mOutgoing = heard[first - 1].mAngle;
			one.mGain = GetFadeGain(fades[first].mShape, done, fade);
			one.mOutgoingGain = GetFadeGain(fades[first].mShape, fade - done, fade);
		}
	}
	return heard;
}

float GetSample(Heard const& inHeard, std::int64_t inFrame)
{
	float const outgoing =
		inHeard.mOutgoingGain == 0.0f ? 0.0f : Encode(inHeard.mOutgoing, inFrame) * inHeard.mOutgoingGain;
	return Encode(inHeard.mAngle, inFrame) * inHeard.mGain + outgoing;
}

// A graph that is pulled by hand.
class Player
{
public:
	explicit Player(Description const& inSequence, bool inIsPlayback = false)
		: mContext(
			  kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"), inIsPlayback ? &mPrefetcher : nullptr),
		  mGraph(inSequence, mContext.Get(), k48000Hz, inIsPlayback ? &mPrefetcher : nullptr),
		  mBlock(1, kBlockFrames)
	{
		GetGenerator().InitializeAudioFilters();
	}
	~Player() { GetGenerator().ShutdownAudioFilters(); }
	Player(Player const&) = delete;
	Player& operator=(Player const&) = delete;

	SN::IAudioGenerator& GetGenerator() { return *mGraph.GetGenerator(); }
	GraphReport const& GetReport() const { return mGraph.GetReport(); }

	void Preroll(std::int64_t inFrame, bool inIsReverse)
	{
		mPrefetcher.mReverse = inIsReverse;
		GetGenerator().Preroll(At(inFrame), inIsReverse);
	}
	// In the order of time, whatever the direction.
	std::vector<float> Play(std::int64_t inFrame, unsigned inCount, bool inIsReverse = false)
	{
		mBlock.SetUseSize(inCount);
		GetGenerator().GetAudioData(At(inFrame), mBlock, inIsReverse);
		std::vector<float> sound(inCount, 0.0f);
		if (!mBlock.IsSilent())
		{
			std::copy_n(mBlock.GetChannel(0), inCount, sound.begin());
		}
		if (inIsReverse)
		{
			std::ranges::reverse(sound);
		}
		return sound;
	}
	// Only what is read ahead now is there for the next block.
	void ReadAhead(std::int64_t inFrame, std::int64_t inCount, PrefetchLedger& ioLedger)
	{
		++ioLedger.mBatch;
		SN::Testing::PrefetchRequests const requests = SN::Testing::RequestPrefetch(
			GetGenerator(), {At(inFrame), At(inFrame + inCount)}, SN::AsynchronousPrefetch);
		for (SN::AudioPrefetch::PrefetchRequest const& request : requests.mAsynchronous)
		{
			request.source->PrefetchAudioData(0, request.time, request.numSamples);
		}
	}

private:
	SN::Prefetcher mPrefetcher;
	RenderContextScope mContext;
	SequenceGraph mGraph;
	dsp::AudioBuffer mBlock;
};

class Random
{
public:
	explicit Random(unsigned inSeed)
		: mRandom(inSeed)
	{
	}
	std::int64_t Below(std::int64_t inEnd)
	{
		return static_cast<std::int64_t>(mRandom() % static_cast<std::uint64_t>(inEnd));
	}

private:
	std::mt19937_64 mRandom;
};

Multicam MakeRandom(Random& ioRandom, std::shared_ptr<PrefetchLedger> const& inLedger)
{
	Multicam multicam;
	auto const count = 1 + ioRandom.Below(5);
	for (std::int64_t angle = 0; angle < count; ++angle)
	{
		std::int64_t const late = ioRandom.Below(3) == 0 ? ioRandom.Below(700) : 0;
		multicam.mAngles.push_back(MakeAngle(
			static_cast<std::size_t>(angle), {Effect{"late", LatentEffect{late, 1.0f}, true}}, inLedger));
	}
	multicam.mFirstAngle = static_cast<std::size_t>(ioRandom.Below(count));
	multicam.mStart = At(ioRandom.Below(2) * ioRandom.Below(kFrames));
	bool const fades = ioRandom.Below(2) == 0;
	std::vector<std::int64_t> frames;
	for (std::int64_t left = ioRandom.Below(30); left > 0; --left)
	{
		frames.push_back(ioRandom.Below(kFrames + 400) - 200);
	}
	std::ranges::sort(frames);
	for (std::int64_t const frame : frames)
	{
		Multicam::Cut cut = MakeCut(frame, static_cast<std::size_t>(ioRandom.Below(count)),
			fades ? ioRandom.Below(2) * ioRandom.Below(300) : 0);
		cut.mFade.mShape = static_cast<FadeShape>(ioRandom.Below(3));
		multicam.mCuts.push_back(cut);
	}
	return multicam;
}

struct Scene
{
	Multicam mMulticam;
	std::int64_t mFirst = 0;
	bool mIsBackwards = false;
	std::vector<Heard> mHeard;

	// What the sequence gives at a frame. inSwitched: the angle that is switched to.
	float GetSampleAt(std::int64_t inFrame, int inSwitched) const
	{
		std::int64_t const start = mMulticam.mStart.ToFrame64(k48000Hz);
		std::int64_t const frame = mIsBackwards ? start - (inFrame - mFirst) : start + inFrame - mFirst;
		if (inFrame < mFirst || inFrame >= mFirst + kFrames || frame < 0 || frame >= kFrames)
		{
			return 0.0f;
		}
		if (inSwitched >= 0)
		{
			auto const angle = static_cast<std::size_t>(inSwitched);
			return angle < mMulticam.mAngles.size() ? Encode(angle, frame) : 0.0f;
		}
		return GetSample(mHeard[static_cast<std::size_t>(frame)], frame);
	}
};

void PlayRandomly(Player& ioPlayer, Scene const& inScene, Random& ioRandom, PrefetchLedger& ioLedger)
{
	constexpr std::int64_t kEnd = kFrames + 300;
	AngleSwitch const& toggle = inScene.mMulticam.mSwitch;
	auto const angles = static_cast<std::int64_t>(inScene.mMulticam.mAngles.size());
	for (int part = 0; part < 3; ++part)
	{
		bool const isReverse = ioRandom.Below(2) == 0;
		std::int64_t frame = ioRandom.Below(kEnd);
		ioPlayer.Preroll(frame, isReverse);
		std::int64_t const longest = std::int64_t{1} << ioRandom.Below(9);
		for (int block = 0; block < 40; ++block)
		{
			std::int64_t const count = 1 + ioRandom.Below(longest);
			frame -= isReverse ? count : 0;
			if (toggle && ioRandom.Below(4) == 0)
			{
				toggle->Set(static_cast<int>(ioRandom.Below(angles + 2)) - 1);
			}
			int const switched = toggle ? toggle->Get() : kByCuts;
			if (ioLedger.mIsStrict)
			{
				ioPlayer.ReadAhead(frame, count, ioLedger);
			}
			std::vector<float> const sound = ioPlayer.Play(frame, static_cast<unsigned>(count), isReverse);
			for (std::int64_t i = 0; i < count; ++i)
			{
				ASSERT_EQ(sound[static_cast<std::size_t>(i)], inScene.GetSampleAt(frame + i, switched))
					<< "frame " << frame + i << (isReverse ? " in reverse" : "");
			}
			frame += isReverse ? 0 : count;
		}
	}
}

TEST(Multicam, PlaysRandomCutsAndSwitchesToTheSample)
{
	for (unsigned seed = 0; seed < SN::Testing::GetNumTrials(1000); ++seed)
	{
		SCOPED_TRACE(testing::Message() << "seed " << seed);
		Random random(seed);
		auto const ledger = std::make_shared<PrefetchLedger>();
		bool const isPlayback = random.Below(2) == 0;
		Scene scene{MakeRandom(random, ledger), random.Below(300), random.Below(3) == 0, {}};
		scene.mHeard = ListHeard(scene.mMulticam);
		if (isPlayback)
		{
			scene.mMulticam.mSwitch = std::make_shared<AngleSwitch::element_type>(kByCuts);
		}
		Item item = MakeItem(scene.mMulticam, scene.mFirst, scene.mFirst + kFrames);
		item.mSpeed = scene.mIsBackwards ? -1.0 : 1.0;
		Player player(MakeMono(MakeTrack(item)), isPlayback);
		ledger->mIsStrict = isPlayback;
		PlayRandomly(player, scene, random, *ledger);
		ASSERT_FALSE(HasFatalFailure());
	}
}

// Counts what it processes: the sample that it gives is the number of samples before it.
class Counter final : public SN::Implements<Counter, PlainStage>
{
public:
	Counter(std::shared_ptr<std::int64_t> inCount, bool inHasHistory)
		: mCount(std::move(inCount)),
		  mHasHistory(inHasHistory)
	{
	}
	bool HasHistory() override { return mHasHistory; }
	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		return zorvcore::classref::MakeObject<Counter>(std::make_shared<std::int64_t>(*mCount), mHasHistory);
	}
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&) SONARO_NONBLOCKING override
	{
		for (unsigned i = 0; i < ioBuffer.GetUseSize(); ++i)
		{
			ioBuffer.GetChannel(0)[i] = static_cast<float>((*mCount)++);
		}
		ioBuffer.NoteChannelWrite(0, ioBuffer.GetUseSize());
	}
	std::u16string GetNodeName() override { return u"Counter"; }

private:
	std::shared_ptr<std::int64_t> mCount;
	bool mHasHistory;
};

Effect MakeCounter(std::shared_ptr<std::int64_t> const& inCount, bool inHasHistory)
{
	return {"counter", [=](auto const&, auto const&, auto const&)
		{ return zorvcore::classref::MakeObject<Counter>(inCount, inHasHistory); }};
}

// Angles that are not heard cost nothing, and those that have to remember run on.
TEST(Multicam, RendersWhatIsHeardAndWhatRemembers)
{
	std::shared_ptr<std::int64_t> const counts[] = {std::make_shared<std::int64_t>(0),
		std::make_shared<std::int64_t>(0), std::make_shared<std::int64_t>(0)};
	Multicam multicam;
	multicam.mAngles = {MakeAngle(0, {MakeCounter(counts[0], false)}),
		MakeAngle(1, {MakeCounter(counts[1], false)}), MakeAngle(2, {MakeCounter(counts[2], true)})};
	multicam.mCuts = {MakeCut(1000, 1, 200), MakeCut(1500, 0), MakeCut(1600, 2)};
	Player player(MakeMono(MakeTrack(MakeItem(multicam))));
	player.Preroll(0, false);
	EXPECT_EQ(player.GetReport().mWhyInOneRun.find("the effect 'counter'"), 0u);
	std::vector<float> sound;
	for (std::int64_t frame = 0; frame < 2000; frame += 250)
	{
		std::vector<float> const block = player.Play(frame, 250);
		sound.insert(sound.end(), block.begin(), block.end());
	}
	EXPECT_EQ(*counts[0], 1000 + 200 + 100);
	EXPECT_EQ(*counts[1], 500);
	EXPECT_EQ(*counts[2], 2000);
	EXPECT_EQ(sound[999], 999.0f);
	EXPECT_EQ(sound[1000], 1000.0f) << "a fade begins with the old angle alone";
	EXPECT_EQ(sound[1200], 200.0f);
	EXPECT_EQ(sound[1600], 1600.0f);
}

// In exports and within nested sequences the angle stays what it was when the graph was made, and clones keep theirs.
TEST(Multicam, SwitchesInTheOutermostSequenceOfAPlaybackAlone)
{
	Multicam multicam;
	multicam.mAngles = {MakeAngle(0), MakeAngle(1), MakeAngle(2)};
	multicam.mSwitch = std::make_shared<AngleSwitch::element_type>(1);
	Description const flat = MakeMono(MakeTrack(MakeItem(multicam)));
	Item nest = MakeItem({});
	nest.mContent = Nest{std::make_shared<Description const>(flat), SN::kTimeZero};
	Player exported(flat);
	Player live(flat, true);
	Player nested(MakeMono(MakeTrack(nest)), true);
	SN::InterfaceRef<SN::IAudioGenerator> const clone = live.GetGenerator().Clone();
	multicam.mSwitch->Set(2);
	for (auto const& [player, angle] :
		{std::pair{&exported, 1u}, std::pair{&live, 2u}, std::pair{&nested, 1u}})
	{
		player->Preroll(0, false);
		EXPECT_EQ(player->Play(0, 10)[5], Encode(angle, 5));
	}
	clone->Preroll(At(0), false);
	EXPECT_EQ(SN::Testing::PullWhole(*clone, {0, 10})[0][5], Encode(1, 5));
}

// Each block is of one angle, whichever it is, while another thread switches and a third one reads ahead.
TEST(Multicam, IsSwitchedFromOtherThreads)
{
	Multicam multicam;
	multicam.mAngles = {MakeAngle(0), MakeAngle(1), MakeAngle(2)};
	multicam.mSwitch = std::make_shared<AngleSwitch::element_type>(0);
	Player player(MakeMono(MakeTrack(MakeItem(multicam))), true);
	player.Preroll(0, false);
	std::atomic<bool> isDone = false;
	std::atomic<int> switches = 0;
	auto const repeat = [&](auto const& inWork)
	{
		return std::thread(
			[&isDone, inWork]
			{
				while (!isDone)
				{
					inWork();
				}
			});
	};
	std::thread person = repeat([&] { multicam.mSwitch->Set(switches++ % 3); });
	std::thread reader = repeat(
		[&] {
			SN::Testing::RequestPrefetch(player.GetGenerator(), {At(0), At(200)}, SN::AsynchronousPrefetch);
		});
	bool hasHeard[3] = {};
	for (int round = 0; round < 1000000 && !(hasHeard[0] && hasHeard[1] && hasHeard[2]); ++round)
	{
		std::int64_t const frame = round % 30 * 100;
		std::vector<float> const sound = player.Play(frame, 100);
		auto const angle = static_cast<std::size_t>(sound[0]) / 8192;
		ASSERT_LT(angle, 3u);
		hasHeard[angle] = true;
		ASSERT_EQ(sound[99], Encode(angle, frame + 99));
	}
	isDone = true;
	person.join();
	reader.join();
	EXPECT_TRUE(hasHeard[0] && hasHeard[1] && hasHeard[2]) << switches << " switches";
}

TEST(Multicam, RefusesWhatContradictsItself)
{
	Multicam good;
	good.mAngles = {MakeAngle(0), MakeAngle(1)};
	std::pair<char const*, std::function<void(Multicam&)>> const cases[] = {
		{"angle index 0 is out of range: there are 0, counted from 0", [](auto& io) { io.mAngles.clear(); }},
		{"one of its angles has no sequence", [](auto& io) { io.mAngles[1] = nullptr; }},
		{"angle index 2 is out of range: there are 2, counted from 0", [](auto& io) { io.mFirstAngle = 2; }},
		{"angle index 3 is out of range", [](auto& io) { io.mCuts = {MakeCut(5, 3)}; }},
		{"its cuts are not in the order of time",
			[](auto& io) {
				io.mCuts = {MakeCut(5, 1), MakeCut(4, 0)};
			}},
		{"a fade of its cuts is shorter than 0", [](auto& io) { io.mCuts = {MakeCut(5, 1, -1)}; }},
		{"its angles have different layouts; use the widest one for all",
			[](auto& io)
			{
				Description wide = *io.mAngles[1];
				wide.mLayout = zorvmediatypes::CreateStereoChannelLayout();
				io.mAngles[1] = std::make_shared<Description const>(wide);
			}},
	};
	for (auto const& [message, spoil] : cases)
	{
		Multicam bad = good;
		spoil(bad);
		EXPECT_NE(GetRefusalOf([&] { Player(MakeMono(MakeTrack(MakeItem(bad)))); }, HostError::Kind::kRequest)
					  .find(message),
			std::string::npos)
			<< message;
	}
}

} // namespace
} // namespace SonaroHost::Sequence::Testing::MulticamTest
