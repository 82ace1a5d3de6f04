// What a listener changes while it plays: what is heard of it, when, and that nothing else changes.

#include "SonaroHost/Playback/LiveMix.h"

#include "Deck.h"
#include "Host/Sequence/MemoryMedia.h"
#include "Host/Sequence/RandomSequence.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "Support/Trials.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace SonaroHost::Playback::Testing::LiveMixTest
{
namespace
{

using SN::Testing::GetNumTrials;

// Mono tracks of 1, 2, 4 and so on, so that a sample of their mix says which are heard.
Programme MakeSteadyTracks(std::size_t inTracks, std::int64_t inFrames)
{
	auto const description = std::make_shared<Sequence::Description>();
	description->mLayout = MakeLayoutOfChannels(1);
	for (std::size_t index = 0; index < inTracks; ++index)
	{
		Sequence::Track& track = description->mTracks.emplace_back();
		track.mOrigin = std::string("/").append(std::to_string(index));
		track.mLayout = description->mLayout;
		Sequence::Item& item = track.mItems.emplace_back();
		item.mEnd = SN::TickTime(inFrames, SN::FrameRate::FromSamplesPerSecond(48000));
		item.mContent = Sequence::Clip{
			std::make_shared<Sequence::Testing::MemoryMedia>(48000.0,
				Sequence::Testing::MemoryMedia::Samples{
					std::vector<float>(static_cast<std::size_t>(inFrames), static_cast<float>(1u << index))}),
			0, {}};
	}
	return MakeProgramme(description, 48000, inFrames);
}

TEST(LiveMix, IsNotHeardUntilSomethingIsChanged)
{
	for (unsigned seed = 1; seed <= GetNumTrials(16); ++seed)
	{
		SCOPED_TRACE(seed);
		auto const made = Sequence::Testing::MakeRandomSequence(seed);
		Programme const programme = MakeProgramme(
			made.mSequence, static_cast<int>(std::lround(made.mFrameRate.GetSamplesPerSecond())));
		LiveMix mix;
		auto const mixed = mix.Prepare(programme);
		mix.Adopt(mixed);
		EXPECT_TRUE(Export(mixed.GetProgramme()) == Export(programme));
	}
}

TEST(LiveMix, GainMuteAndSoloAreHeardSoonAndStayWithTheTrackInTheNextProgramme)
{
	constexpr std::int64_t kFrames = 1'000'000;
	LiveMix mix;
	auto const mixed = mix.Prepare(MakeSteadyTracks(3, kFrames));
	mix.Adopt(mixed);
	Deck deck(mixed.GetProgramme());
	deck->Play();
	// More than the ring and a ramp.
	auto const listen = [&] { return deck.Pull(2048).back(); };
	EXPECT_EQ(listen(), 7.0f);
	mix.SetGain(1, 0.25f);
	EXPECT_EQ(listen(), 5.5f);
	mix.SetMute(0, true);
	EXPECT_EQ(listen(), 4.5f);
	mix.SetSolo(1, true);
	EXPECT_EQ(listen(), 0.5f);
	mix.SetSolo(0, true);
	EXPECT_EQ(listen(), 0.5f) << "solo or not, it is muted by itself";
	mix.SetSolo(1, false);
	mix.SetSolo(0, false);
	EXPECT_EQ(listen(), 4.5f);
	EXPECT_EQ(mix.TakePeak(1), 2.0f) << "since the start";
	deck.Pull(128);
	EXPECT_EQ(mix.TakePeak(1), 0.5f);

	auto const next = mix.Prepare(MakeSteadyTracks(4, kFrames));
	deck.TakeOver(next.GetProgramme());
	mix.Adopt(next);
	EXPECT_EQ(listen(), 12.5f) << "as before, with a track more";
	EXPECT_TRUE(mix.IsMuted(0));
	EXPECT_FALSE(mix.IsMuted(3));
}

TEST(LiveMix, AThousandEditsAndTakeoversWhilePlayingLeaveNoClick)
{
	constexpr std::int64_t kFrames = 4'000'000;
	constexpr std::size_t kTracks = 4;
	LiveMix mix;
	auto const mixed = mix.Prepare(MakeSteadyTracks(kTracks, kFrames));
	mix.Adopt(mixed);
	Deck deck(mixed.GetProgramme());
	deck->SetLoop(ProgrammeRange{0, 2'000'000});
	deck->Play();
	Frames heard = deck.Pull(1024);
	std::mt19937 random(3);
	unsigned const edits = GetNumTrials(1000);
	for (unsigned i = 0; i < edits; ++i)
	{
		std::size_t const track = random() % kTracks;
		switch (random() % 3)
		{
		case 0:
			mix.SetGain(track, static_cast<float>(random() % 100) / 100.0f);
			break;
		case 1:
			mix.SetMute(track, random() % 2 == 0);
			break;
		default:
			mix.SetSolo(track, random() % 3 == 0);
		}
		if (i % 50 == 49)
		{
			auto const next = mix.Prepare(MakeSteadyTracks(kTracks, kFrames));
			Frames const before = deck.TakeOver(next.GetProgramme());
			heard.insert(heard.end(), before.begin(), before.end());
			mix.Adopt(next);
		}
		Frames const more = deck.Pull(128 * (1 + random() % 3));
		heard.insert(heard.end(), more.begin(), more.end());
		float step = 0.0f;
		for (std::size_t at = 1; at < heard.size(); ++at)
		{
			step = std::max(step, std::abs(heard[at] - heard[at - 1]));
		}
		// All tracks at once over 240 frames, gains and mutes together.
		ASSERT_LE(step, 15.0f / 240.0f * 2.0f) << "edit " << i;
		heard.erase(heard.begin(), heard.end() - std::min<std::ptrdiff_t>(1, std::ssize(heard)));
	}
	EXPECT_EQ(deck->GetState().mMisses, 0u);
}

} // namespace
} // namespace SonaroHost::Playback::Testing::LiveMixTest
