// What reaches a device, against what a render writes: wherever playing starts, in loops, in reverse, at other speeds,
// after any number of seeks, and when things go wrong.

#include "Deck.h"
#include "Host/Refusal.h"
#include "Host/Sequence/RandomSequence.h"
#include "Playback/Device/DeviceWatch.h"
#include "SonaroHost/Media/RateConverter.h"
#include "SonaroHost/Playback/NullDevice.h"
#include "Support/Trials.h"
#include "zorvcore/config/InitializerRegistrar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <thread>

namespace SonaroHost::Playback::Testing::PlaybackTest
{
namespace
{

using SN::Testing::GetNumTrials;
using SonaroHost::Testing::GetRefusalOf;

// What is heard from a place on: frames of an export in the order of playing, and silence beyond its ends.
struct Way
{
	std::int64_t mPlace = 0;
	bool mIsReverse = false;
	std::int64_t mLoopFirst = 0;
	std::int64_t mLoopEnd = 0;
};

Frames Follow(Frames const& inExport, std::size_t inChannels, Way const& inWay, std::int64_t inFrames)
{
	auto const length = static_cast<std::int64_t>(inExport.size() / inChannels);
	Frames heard;
	std::int64_t place = inWay.mPlace;
	for (std::int64_t done = 0; done < inFrames; ++done)
	{
		std::int64_t const frame = inWay.mIsReverse ? place - 1 : place;
		for (std::size_t channel = 0; channel < inChannels; ++channel)
		{
			bool const isWithin = frame >= 0 && frame < length;
			heard.push_back(
				isWithin ? inExport[static_cast<std::size_t>(frame) * inChannels + channel] : 0.0f);
		}
		place += inWay.mIsReverse ? -1 : 1;
		if (inWay.mLoopEnd > 0 && place == (inWay.mIsReverse ? inWay.mLoopFirst : inWay.mLoopEnd))
		{
			place = inWay.mIsReverse ? inWay.mLoopEnd : inWay.mLoopFirst;
		}
	}
	return heard;
}

// The first frame at which two sounds part; nothing when they are the same.
testing::AssertionResult Same(Frames const& inHeard, Frames const& inExpected, std::size_t inChannels)
{
	if (inHeard.size() != inExpected.size())
	{
		return testing::AssertionFailure() << inHeard.size() << " samples instead of " << inExpected.size();
	}
	auto const [heard, expected] = std::mismatch(inHeard.begin(), inHeard.end(), inExpected.begin());
	if (heard == inHeard.end())
	{
		return testing::AssertionSuccess();
	}
	return testing::AssertionFailure()
		   << "frame " << (heard - inHeard.begin()) / static_cast<long>(inChannels) << " is " << *heard
		   << " instead of " << *expected;
}

class RandomWays
{
public:
	explicit RandomWays(unsigned inSeed)
		: mRandom(inSeed)
	{
	}

	std::int64_t Below(std::int64_t inEnd)
	{
		return inEnd > 0 ? static_cast<std::int64_t>(mRandom() % static_cast<std::uint64_t>(inEnd)) : 0;
	}

	// In a loop as often as not, which begins anywhere, also after the place.
	Way Pick(std::int64_t inFrames)
	{
		Way way{Below(inFrames), Below(2) == 1};
		if (Below(2) == 1)
		{
			way.mLoopFirst = Below(inFrames - 1);
			way.mLoopEnd = way.mLoopFirst + 1 + Below(Below(3) == 0 ? 50 : inFrames - way.mLoopFirst);
			way.mLoopEnd = std::min(way.mLoopEnd, inFrames);
			bool const isAhead = way.mIsReverse ? way.mPlace > way.mLoopFirst : way.mPlace < way.mLoopEnd;
			way.mPlace = isAhead ? way.mPlace : way.mIsReverse ? way.mLoopEnd : way.mLoopFirst;
		}
		return way;
	}

private:
	std::mt19937_64 mRandom;
};

void Start(Playback& ioPlayback, Way const& inWay)
{
	ioPlayback.Seek(inWay.mPlace);
	ioPlayback.SetSpeed(inWay.mIsReverse ? -1.0 : 1.0);
	ioPlayback.SetLoop(inWay.mLoopEnd > 0 ? std::optional(ProgrammeRange{
												inWay.mLoopFirst, inWay.mLoopEnd - inWay.mLoopFirst})
										  : std::nullopt);
	ioPlayback.Play();
}

TEST(Playback, IsWhatAnExportWritesWhereverItStartsAndGoesRound)
{
	constexpr unsigned kWays = 6;
	bool hasSound = false;
	for (unsigned seed = 1; seed <= GetNumTrials(24); ++seed)
	{
		auto const made = Sequence::Testing::MakeRandomSequence(seed);
		Programme const programme = MakeProgramme(
			made.mSequence, static_cast<int>(std::lround(made.mFrameRate.GetSamplesPerSecond())));
		Frames const whole = Export(programme);
		std::size_t const channels = programme.GetLayout().size();
		Deck deck(programme);
		RandomWays random(seed);
		for (unsigned i = 0; i < kWays; ++i)
		{
			Way const way = random.Pick(programme.mFrames);
			SCOPED_TRACE(testing::Message()
						 << "seed " << seed << ", from " << way.mPlace << (way.mIsReverse ? " backwards" : "")
						 << ", loop " << way.mLoopFirst << " to " << way.mLoopEnd);
			Start(*deck, way);
			std::int64_t const frames = 128 * (1 + random.Below(150));
			Frames const heard = deck.Pull(frames);
			ASSERT_TRUE(Same(heard, Follow(whole, channels, way, frames), channels));
			hasSound =
				hasSound || std::any_of(heard.begin(), heard.end(), [](float in) { return in != 0.0f; });
			deck.Rest();
		}
		EXPECT_EQ(deck->GetState().mMisses, 0u);
	}
	EXPECT_TRUE(hasSound);
}

// Takes apart what is heard of a programme that counts its frames from 1 on: exact runs, each with a fade after it where
// it is broken off.
class Counted
{
public:
	explicit Counted(Frames inFrames)
		: mFrames(std::move(inFrames))
	{
	}

	// The places from which runs begin. Fails where anything else is heard.
	std::vector<std::int64_t> ListStarts(std::int64_t inLoopFirst, std::int64_t inLoopEnd)
	{
		std::vector<std::int64_t> starts;
		for (std::size_t at = 0; at < mFrames.size();)
		{
			if (mFrames[at] == 0.0f)
			{
				++at;
				continue;
			}
			auto count = static_cast<std::int64_t>(mFrames[at]);
			starts.push_back(count - 1);
			while (at < mFrames.size() && mFrames[at] == static_cast<float>(count))
			{
				count = count == inLoopEnd ? inLoopFirst + 1 : count + 1;
				++at;
			}
			at = SkipFade(at, count, inLoopFirst, inLoopEnd);
		}
		return starts;
	}

private:
	static constexpr std::size_t kFade = 96;

	std::size_t SkipFade(
		std::size_t inAt, std::int64_t inCount, std::int64_t inLoopFirst, std::int64_t inLoopEnd) const
	{
		std::int64_t count = inCount;
		for (std::size_t i = 0; i < kFade && inAt + i < mFrames.size(); ++i)
		{
			float const gain = static_cast<float>(kFade - i) / static_cast<float>(kFade + 1);
			float const expected = count > kLength ? 0.0f : static_cast<float>(count) * gain;
			EXPECT_EQ(mFrames[inAt + i], expected) << "frame " << inAt + i << ", step " << i << " of a fade";
			count = count == inLoopEnd ? inLoopFirst + 1 : count + 1;
		}
		return inAt + kFade;
	}

public:
	static constexpr std::int64_t kLength = 2'000'000;

private:
	Frames mFrames;
};

TEST(Playback, EachOfAThousandSeeksBeginsExactlyAndFadesOutWhatItBreaksOff)
{
	Deck deck(MakeCountingProgramme(Counted::kLength));
	RandomWays random(7);
	constexpr std::int64_t kLoopFirst = 700'000;
	constexpr std::int64_t kLoopEnd = 700'501;
	deck->SetLoop(ProgrammeRange{kLoopFirst, kLoopEnd - kLoopFirst});
	std::vector<std::int64_t> sought{0};
	deck->Play();
	Frames heard = deck.Pull(256);
	for (unsigned i = 0; i < GetNumTrials(1000); ++i)
	{
		// Before the loop, so that some run into it.
		std::int64_t const place =
			random.Below(2) == 0 ? kLoopFirst - random.Below(600) : random.Below(kLoopFirst);
		sought.push_back(place);
		deck->Seek(place);
		if (random.Below(4) == 0)
		{
			deck->Stop();
			deck->Play();
		}
		Frames const more = deck.Pull(128 * (4 + random.Below(10)));
		heard.insert(heard.end(), more.begin(), more.end());
	}
	EXPECT_EQ(Counted(heard).ListStarts(kLoopFirst, kLoopEnd), sought);
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(Playback, GoesOnWhereItWasStoppedAndEndsWithTheProgramme)
{
	constexpr std::int64_t kFrames = 3000;
	Deck deck(MakeCountingProgramme(kFrames));
	deck->Play();
	Frames heard = deck.Pull(1280);
	deck->Stop();
	// Before what was stopped is heard to its end.
	deck->Play();
	EXPECT_TRUE(deck->GetState().mIsPlaying);
	Frames rest = deck.Pull(1664);
	// Its last frames are in the ring.
	ASSERT_TRUE(deck->WaitUntilFilled(std::chrono::seconds(60)));
	EXPECT_TRUE(deck->GetState().mIsPlaying);
	Frames const last = deck.Pull(4096);
	rest.insert(rest.end(), last.begin(), last.end());
	heard.insert(heard.end(), rest.begin(), rest.end());
	EXPECT_FALSE(deck->GetState().mIsPlaying);
	EXPECT_EQ(deck->GetState().mFrame, kFrames);
	float next = 1.0f;
	for (float const frame : heard)
	{
		next += frame == next ? 1.0f : 0.0f;
	}
	EXPECT_EQ(next, static_cast<float>(kFrames + 1)) << "each frame is heard, in order";

	deck->Play();
	EXPECT_EQ(deck.Pull(128).front(), 1.0f) << "at the end it begins again";
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(Playback, ALoopThatIsSetWhilePlayingIsGoneRoundInFromThereOn)
{
	constexpr std::int64_t kFrames = 100'000;
	Programme const programme = MakeCountingProgramme(kFrames);
	Frames const whole = Export(programme);
	Deck deck(programme);
	deck->Seek(20'000);
	deck->Play();
	Frames heard = deck.Pull(1024);
	deck->SetLoop(ProgrammeRange{10'000, 12'345});
	Frames more = deck.Pull(40'960);
	heard.insert(heard.end(), more.begin(), more.end());
	Frames expected = Follow(whole, 1, {20'000, false, 10'000, 22'345}, 1024 + 40'960);
	EXPECT_TRUE(Same(heard, expected, 1));
	// The place is exact at any jump: what is heard next is what the ring gives next.
	std::int64_t const heardNow = deck->GetState().mFrame;
	std::int64_t const latency = deck.GetDevice().GetLatencyFrames();
	EXPECT_EQ(heardNow, static_cast<std::int64_t>(more[more.size() - static_cast<std::size_t>(latency)]) - 1);

	deck->SetLoop(std::nullopt);
	more = deck.Pull(kFrames);
	EXPECT_EQ(*std::max_element(more.begin(), more.end()), static_cast<float>(kFrames));
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(Playback, ALoopThatEndsBetweenWhatIsHeardAndWhatIsRenderedBeginsAtOnce)
{
	Deck deck(MakeCountingProgramme(100'000));
	deck->Seek(20'000);
	deck->Play();
	deck.Pull(1024);
	deck->SetSpeed(1.0);
	std::int64_t const end = deck->GetState().mFrame + 1;
	deck->SetLoop(ProgrammeRange{10'000, end - 10'000});
	Frames const heard = deck.Pull(128 * 12);
	EXPECT_NE(std::find(heard.begin(), heard.end(), 10'001.0f), heard.end());
	EXPECT_GT(heard.back(), 10'001.0f);
	EXPECT_LT(heard.back(), 12'000.0f);
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(Playback, AShorterProgrammeEndsItWithItsLoopAndWithoutMisses)
{
	// So long that it does not come round while the other one is made.
	Deck deck(MakeCountingProgramme(8'000'000));
	deck->SetLoop(ProgrammeRange{1000, 7'000'000});
	deck->Seek(50'000);
	deck->Play();
	deck.Pull(1024);
	deck.TakeOver(MakeCountingProgramme(20'000));
	Frames const heard = deck.Pull(4096);
	EXPECT_EQ(heard.back(), 0.0f);
	PlaybackState const state = deck->GetState();
	EXPECT_EQ(state.mMisses, 0u);
	ASSERT_TRUE(state.mLoop);
	EXPECT_EQ(state.mLoop->mFrames, 19'000);
}

TEST(Playback, OtherSpeedsAreTheExportConvertedByExactPositions)
{
	constexpr int kFrames = 9000;
	auto const made = Sequence::Testing::MakeRandomSequence(3);
	Programme const programme =
		MakeProgramme(made.mSequence, static_cast<int>(std::lround(made.mFrameRate.GetSamplesPerSecond())));
	Frames const whole = Export(programme);
	auto const channels = static_cast<unsigned>(programme.GetLayout().size());
	Deck deck(programme);
	std::int64_t const middle = programme.mFrames / 2;
	for (double const speed : {0.25, -0.5, 1.37, 2.0, -4.0, 4.0})
	{
		for (bool const isLoop : {false, true})
		{
			SCOPED_TRACE(testing::Message() << "speed " << speed << (isLoop ? ", in a loop" : ""));
			std::int64_t const loopFirst = isLoop ? middle - middle / 3 : 0;
			std::int64_t const loopEnd = isLoop ? middle + middle / 7 : 0;
			deck->Seek(middle);
			deck->SetSpeed(speed);
			deck->SetLoop(
				isLoop ? std::optional(ProgrammeRange{loopFirst, loopEnd - loopFirst}) : std::nullopt);
			deck->Play();

			RateConverter const converter(Ratio::FromExactDouble(std::abs(speed)), {});
			std::int64_t const left = speed < 0 ? middle : programme.mFrames - middle;
			std::int64_t const length =
				static_cast<std::int64_t>(std::ceil(static_cast<double>(left) / std::abs(speed)));
			std::int64_t const frames = isLoop ? kFrames : std::min<std::int64_t>(kFrames, length);
			auto const input = converter.GetInput(0, frames);
			// What comes before the place leads up to it.
			Way const way{
				speed < 0 ? middle - input.mFirst : middle + input.mFirst, speed < 0, loopFirst, loopEnd};
			Frames const played = Follow(whole, channels, way, input.mEnd - input.mFirst);
			Frames expected(static_cast<std::size_t>(frames) * channels);
			for (unsigned channel = 0; channel < channels; ++channel)
			{
				std::vector<float> one;
				for (std::size_t i = channel; i < played.size(); i += channels)
				{
					one.push_back(played[i]);
				}
				std::vector<float> output(static_cast<std::size_t>(frames));
				SampleConverter::Channel const pair{one.data(), output.data()};
				converter.Convert(0, static_cast<unsigned>(frames), {&pair, 1});
				for (std::size_t i = 0; i < output.size(); ++i)
				{
					expected[i * channels + channel] = output[i];
				}
			}
			Frames heard = deck.Pull(frames);
			EXPECT_TRUE(Same(heard, expected, channels));
			deck.Rest();
		}
	}
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(Playback, WhatComesTooLateIsSilenceWithFadesAndIsCountedAndHeardAfterwards)
{
	Deck deck(MakeCountingProgramme(200'000));
	deck->Play();
	Frames heard = deck.Pull(1280);
	PlaybackState state;
	// More than 5 ms at once, which the render thread may keep up with for a while.
	for (int tries = 0; tries < 40 && state.mMisses == 0; ++tries)
	{
		Frames const late = deck.PullLate(4096);
		heard.insert(heard.end(), late.begin(), late.end());
		state = deck->GetState();
	}
	EXPECT_GT(state.mMisses, 0u);
	Frames const rest = deck.Pull(4096);
	heard.insert(heard.end(), rest.begin(), rest.end());

	// All that was not missed is heard, with fades at both sides of each gap.
	std::uint64_t const missed = deck->GetState().mMissedFrames;
	EXPECT_GE(missed, state.mMissedFrames);
	EXPECT_EQ(heard.back(), static_cast<float>(heard.size() - missed));
	auto const steepest = [](Frames const& inFrames)
	{
		float step = 0.0f;
		for (std::size_t i = 1; i < inFrames.size(); ++i)
		{
			step = std::max(step, std::abs(inFrames[i] - inFrames[i - 1]));
		}
		return step;
	};
	// A gap cut out hard would be a step of thousands.
	EXPECT_LE(steepest(heard), *std::max_element(heard.begin(), heard.end()) / 90.0f);
}

TEST(Playback, ADeviceMayTakeAllThatIsAheadAtOnce)
{
	// The second one leaves a rest that is shorter than a quarter of the render thread's blocks.
	for (unsigned const block : {480u, 402u})
	{
		CaptureDevice device;
		Playback playback(MakeCountingProgramme(100'000), device,
			{.mAheadSeconds = 2.0 * block / 48000.0, .mDeviceBlockFrames = block, .mIsRealtime = false});
		playback.Play();
		for (int i = 0; i < 20; ++i)
		{
			ASSERT_TRUE(playback.WaitUntilFilled(std::chrono::seconds(60)));
			device.Advance(block);
			ASSERT_TRUE(playback.WaitUntilFilled(std::chrono::seconds(60)));
			device.Advance(2 * static_cast<std::int64_t>(block));
			ASSERT_EQ(playback.GetState().mMissedFrames, 0u) << "with blocks of " << block;
		}
	}
}

TEST(Playback, AnotherGraphTakesOverWithinTenMillisecondsAndTheOneBeforeIsGone)
{
	constexpr std::int64_t kFrames = 400'000;
	std::weak_ptr<Sequence::Description const> before;
	Programme const same = MakeCountingProgramme(kFrames);
	Programme const half = MakeCountingProgramme(kFrames, 0.5f);
	auto first = std::make_unique<Programme>(MakeCountingProgramme(kFrames));
	before = first->mDescription;
	Deck deck(*first);
	first.reset();
	deck->Play();
	Frames heard = deck.Pull(1280);
	for (Programme const* const next : {&same, &half})
	{
		Frames more = deck.TakeOver(*next);
		heard.insert(heard.end(), more.begin(), more.end());
		more = deck.Pull(1024);
		heard.insert(heard.end(), more.begin(), more.end());
		EXPECT_TRUE(before.expired());
	}
	// The same sound is heard as if nothing had been; half of it is reached in a straight line of 480 frames.
	auto const changed = std::find_if(
		heard.begin(), heard.end(), [at = 0.0f](float inFrame) mutable { return inFrame != ++at; });
	ASSERT_NE(changed, heard.end());
	EXPECT_GT(changed - heard.begin(), 1280 + 1024);
	std::int64_t const start = changed - heard.begin() - 1;
	for (auto i = static_cast<std::size_t>(start); i < heard.size(); ++i)
	{
		double const share = std::min(static_cast<double>(i - static_cast<std::size_t>(start)) / 480.0, 1.0);
		ASSERT_NEAR(heard[i], static_cast<double>(i + 1) * (1.0 - 0.5 * share), 0.02) << i;
	}
	EXPECT_EQ(deck->GetState().mMisses, 0u);

	// While it is stopped there is nothing to fade.
	deck.Rest();
	deck->TakeOver(same);
	deck->Seek(99);
	deck->Play();
	EXPECT_EQ(deck.Pull(128).front(), 100.0f);
	EXPECT_THAT(GetRefusalOf([&] { deck->TakeOver(MakeProgramme(same.mDescription, 44100)); },
					HostError::Kind::kRequest),
		testing::HasSubstr("start the playback again"));
}

TEST(Playback, ADeviceThatIsLostStopsItAndPlayGoesOnFromWhatWasHeard)
{
	Deck deck(MakeCountingProgramme(100'000));
	deck->Play();
	Frames const heard = deck.Pull(1280);
	deck.GetDevice().Lose();
	while (deck->GetState().mIsPlaying)
	{
		std::this_thread::yield();
	}
	EXPECT_EQ(deck->GetState().mFailure, "the device was disconnected");
	std::int64_t const frame = deck->GetState().mFrame;
	EXPECT_EQ(frame, 1280 - deck.GetDevice().GetLatencyFrames());

	deck->Play();
	Frames const again = deck.Pull(256);
	EXPECT_EQ(again.front(), static_cast<float>(frame + 1));
	EXPECT_EQ(again.back(), static_cast<float>(frame + 256));
	EXPECT_EQ(deck->GetState().mFailure, "");
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(DeviceWatch, ADeviceThatAsksForNothingOrHasSleptIsNoticed)
{
	DeviceWatch watch;
	watch.Start(100.0, 0.01);
	for (double time = 100.0; time < 110.0; time += 0.5)
	{
		EXPECT_FALSE(watch.FindGap(time));
		watch.Note(time);
	}
	EXPECT_FALSE(watch.FindGap(111.0));
	EXPECT_TRUE(watch.FindGap(112.0)) << "it hangs";
	// It asks again before anybody has looked: the machine has slept.
	watch.Note(3600.0);
	watch.Note(3600.01);
	EXPECT_NEAR(watch.FindGap(3600.02).value_or(0.0), 3490.5, 1e-6);
	watch.Start(4000.0, 1.0);
	EXPECT_FALSE(watch.FindGap(4007.0)) << "not as long as a few of its blocks";
	EXPECT_GE(DeviceWatch::GetTime(), 0.0);
}

TEST(Playback, AScrubIsAGrainInTheDirectionOfThePointer)
{
	Deck deck(MakeCountingProgramme(100'000));
	for (std::int64_t const place : {50'000, 60'000, 40'000})
	{
		deck->Scrub(place);
		Frames const grain = deck.Pull(128 * 30);
		// In the middle the sound itself, which moves with the pointer; silence at the ends.
		std::size_t const middle = 1440;
		std::int64_t const step = place == 40'000 ? -1 : 1;
		auto const expected =
			static_cast<float>(place + step * static_cast<std::int64_t>(middle) + (step > 0 ? 1 : 0));
		EXPECT_EQ(grain[middle], expected);
		EXPECT_EQ(grain[middle + 1] - grain[middle], static_cast<float>(step));
		EXPECT_LT(grain.front(), 1000.0f);
		EXPECT_EQ(grain[128 * 23], 0.0f);
		EXPECT_FALSE(deck->GetState().mIsPlaying);
		EXPECT_EQ(deck->GetState().mFrame, place);
	}
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

TEST(Playback, RefusesWhatMakesNoSense)
{
	Programme const programme = MakeCountingProgramme(1000);
	Deck deck(programme);
	CaptureDevice other;
	struct Case
	{
		std::function<void()> mAction;
		char const* mReason;
	};
	Case const cases[] = {
		{[&] { deck->SetSpeed(0.0); }, "a speed of 0 is out of range"},
		{[&] { deck->SetSpeed(4.1); }, "a speed of 4.1 is out of range"},
		{[&] { deck->SetSpeed(std::nan("")); }, "out of range"},
		{[&] {
			 deck->SetLoop(ProgrammeRange{10, 0});
		 },
			"the loop has no length"},
		{[&] {
			 deck->SetLoop(ProgrammeRange{10, 991});
		 },
			"not within the programme"},
		{[&] {
			 deck->SetLoop(ProgrammeRange{-1, 10});
		 },
			"not within the programme"},
		{[&] { Playback(programme, other, {.mAheadSeconds = 0.001}); }, "use 0.005 to 1 second"},
		{[&] { Playback(programme, other, {.mDeviceBlockFrames = 20'000}); }, "at most 16384"},
	};
	for (Case const& test : cases)
	{
		EXPECT_THAT(GetRefusalOf(test.mAction, HostError::Kind::kRequest), testing::HasSubstr(test.mReason));
	}
}

TEST(Playback, ADeviceThatIsLostBeforeTheEndWasHeardEndsIt)
{
	NullDevice device(0.0);
	Playback playback(MakeCountingProgramme(100), device, {.mAheadSeconds = 0.02, .mDeviceBlockFrames = 128});
	playback.Play();
	ASSERT_TRUE(playback.WaitUntilFilled(std::chrono::seconds(60)));
	ASSERT_TRUE(playback.GetState().mIsPlaying);
	device.Lose();
	for (int tries = 0; tries < 6000 && playback.GetState().mIsPlaying; ++tries)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(10));
	}
	EXPECT_FALSE(playback.GetState().mIsPlaying);
	EXPECT_NE(playback.GetState().mFailure, "");
}

// The module stops when the next stretch of media is due.
TEST(Playback, AfterAFailureItGoesOnWithTheFirstFrameThatWasNotHeard)
{
	constexpr std::int64_t kNextStretch = 19200;
	Deck deck(MakeCountingProgramme(2 * 96000));
	deck->Play();
	Frames heard = deck.Pull(kNextStretch / 2);
	ASSERT_TRUE(deck->WaitUntilFilled(std::chrono::seconds(60)));
	zorvcore::config::StopRegisteredModules();
	while (deck->GetState().mIsPlaying)
	{
		Frames const more = deck.Pull(128);
		heard.insert(heard.end(), more.begin(), more.end());
	}
	zorvcore::config::StartRegisteredModules();
	Frames const rest = deck.PullLate(1024);
	heard.insert(heard.end(), rest.begin(), rest.end());
	EXPECT_NE(deck->GetState().mFailure, "");

	float const last = *std::ranges::max_element(heard);
	EXPECT_GT(last, static_cast<float>(kNextStretch / 2));
	deck->Play();
	EXPECT_EQ(deck.Pull(128).front(), last + 1.0f);
}

// The module stops when the next stretch of media is due in the middle of the fade.
TEST(Playback, AFadeThatIsBrokenOffLeavesNoMisses)
{
	constexpr std::int64_t kNextStretch = 19200;
	constexpr std::int64_t kAhead = 240;
	Deck deck(MakeCountingProgramme(2 * 96000));
	deck->Play();
	std::int64_t const heard = (kNextStretch - kAhead) / 128 * 128;
	deck.Pull(heard);
	ASSERT_TRUE(deck->WaitUntilFilled(std::chrono::seconds(60)));
	zorvcore::config::StopRegisteredModules();
	deck->Seek(0);
	EXPECT_TRUE(deck->WaitUntilFilled(std::chrono::seconds(60)));
	zorvcore::config::StartRegisteredModules();

	Frames const rest = deck.PullLate(1024);
	EXPECT_EQ(rest.front(), static_cast<float>(heard + 1));
	EXPECT_EQ(rest.back(), 0.0f);
	EXPECT_NE(deck->GetState().mFailure, "");
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

} // namespace
} // namespace SonaroHost::Playback::Testing::PlaybackTest
