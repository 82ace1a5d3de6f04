// Controls of effects that are moved while it plays: a plugin whose left output is its control, and its right one a
// switch.

#include "SonaroHost/Playback/LiveEffects.h"

#include "Deck.h"
#include "Host/Effects/EffectFolders.h"
#include "Host/Refusal.h"
#include "Host/Sequence/MemoryMedia.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Effects/PreparedEffect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace SonaroHost::Playback::Testing::LiveEffectsTest
{
namespace
{

constexpr std::int64_t kFrames = 1'000'000;
constexpr int kRate = 48000;
// More than the ring and a ramp.
constexpr std::int64_t kSettled = 1024;

Sequence::Effect MakeControls(Effects::EffectSetup const& inSetup)
{
	Effects::PreparedEffect const made(inSetup, kRate);
	return {made.GetName(), [made](auto const&... inGraph) { return made.Make(inGraph...); }, false,
		made.GetJumps(), made.GetFacts(), made.GetControls(), {}};
}

// Silence, through the plugin on a track of a nested sequence.
Programme MakeNested(Effects::EffectSetup const& inSetup = {"urn:sonaro-test:controls"})
{
	auto const inner = std::make_shared<Sequence::Description>();
	auto const outer = std::make_shared<Sequence::Description>();
	for (auto const& sequence : {inner, outer})
	{
		sequence->mLayout = MakeLayoutOfChannels(2);
		Sequence::Track& track = sequence->mTracks.emplace_back();
		track.mName = "Dialogue";
		track.mLayout = sequence->mLayout;
		Sequence::Item& item = track.mItems.emplace_back();
		item.mName = "scene";
		item.mEnd = SN::TickTime(kFrames, SN::FrameRate::FromSamplesPerSecond(kRate));
		if (sequence == outer)
		{
			item.mContent = Sequence::Nest{inner, SN::kTimeZero};
			continue;
		}
		std::vector<float> const silence(static_cast<std::size_t>(kFrames));
		item.mContent = Sequence::Clip{std::make_shared<Sequence::Testing::MemoryMedia>(
										   kRate, Sequence::Testing::MemoryMedia::Samples{silence, silence}),
			0, {}};
		track.mChain.mStages.emplace_back(MakeControls(inSetup));
	}
	return MakeProgramme(outer, kRate, kFrames);
}

class LiveEffectsTest : public testing::Test
{
protected:
	static void SetUpTestSuite() { SonaroHost::Testing::FindTestPlugins(); }

	// What the control is at the end of a while of playing.
	static float Listen(Deck& ioDeck) { return ioDeck.Pull(kSettled).end()[-2]; }

	static constexpr char const* kId = "/tracks/0/items/0/sequences/0/tracks/0/effects/0";
};

TEST_F(LiveEffectsTest, AHeldControlIsReachedInAStraightLineAndLetGoOf)
{
	Programme const programme = MakeNested();
	LiveEffects effects;
	effects.Adopt(*programme.mDescription);
	ASSERT_EQ(effects.List().size(), 1u);
	EXPECT_EQ(effects.List()[0].mId, kId);
	EXPECT_EQ(effects.List()[0].mPlace, "track \"Dialogue\"");
	Deck deck(programme);
	deck->Play();
	EXPECT_EQ(Listen(deck), 100.0f);

	effects.Hold(kId, "frequency", 1000.0f);
	Frames const heard = deck.Pull(kSettled);
	float steepest = 1.0f;
	for (std::size_t i = 2; i < heard.size(); i += 2)
	{
		steepest = std::max(steepest, heard[i] / heard[i - 2]);
		EXPECT_GE(heard[i], heard[i - 2]);
	}
	EXPECT_EQ(heard.end()[-2], 1000.0f);
	// At every 64th frame of the 240 of 5 ms, in the logarithm.
	EXPECT_LT(steepest, std::pow(10.0f, 64.0f / 240.0f) * 1.001f);

	effects.Hold(kId, "switch", 0.7f);
	EXPECT_EQ(deck.Pull(kSettled).back(), 1.0f);
	effects.Hold(kId, "frequency", 1e9f);
	EXPECT_EQ(Listen(deck), 10000.0f) << "the end of its range";
	effects.Release(kId, "frequency");
	EXPECT_EQ(Listen(deck), 100.0f);
	EXPECT_THAT(SonaroHost::Testing::GetRefusalOf(
					[&] { effects.Hold(kId, "volume", 1.0f); }, HostError::Kind::kRequest),
		testing::HasSubstr("no effect with the control \"volume\""));
}

TEST_F(LiveEffectsTest, ABypassIsCrossfadedAndStaysForTheNextProgramme)
{
	Programme const programme = MakeNested();
	LiveEffects effects;
	effects.Adopt(*programme.mDescription);
	Deck deck(programme);
	deck->Play();
	EXPECT_EQ(Listen(deck), 100.0f);
	for (bool const isBypassed : {true, false, true})
	{
		effects.SetBypass(kId, isBypassed);
		EXPECT_EQ(effects.List()[0].IsBypassed(), isBypassed);
		Frames const heard = deck.Pull(kSettled);
		float steepest = 0.0f;
		for (std::size_t i = 2; i < heard.size(); i += 2)
		{
			steepest = std::max(steepest, std::abs(heard[i] - heard[i - 2]));
		}
		// In a straight line over the 240 frames of 5 ms, to the silence that goes in.
		EXPECT_NEAR(steepest, 100.0f / 240.0f, 1e-3f);
		EXPECT_EQ(heard.end()[-2], isBypassed ? 0.0f : 100.0f);
	}
	// Of what is made while it is held: an export, and the next programme.
	Frames const exported = Export(programme);
	EXPECT_TRUE(std::ranges::all_of(exported, [](float inSample) { return inSample == 0.0f; }));
	Programme const next = MakeNested();
	effects.Prepare(*next.mDescription);
	Frames const heard = deck.TakeOver(next);
	effects.Adopt(*next.mDescription);
	EXPECT_TRUE(std::ranges::all_of(heard, [](float inSample) { return inSample == 0.0f; }));
	EXPECT_TRUE(effects.List()[0].IsBypassed());
	effects.Release(kId, LiveControl::kBypassSymbol);
	EXPECT_EQ(Listen(deck), 100.0f);
	EXPECT_THAT(SonaroHost::Testing::GetRefusalOf(
					[&] { effects.SetBypass("/nowhere", true); }, HostError::Kind::kRequest),
		testing::HasSubstr("no effect that can be bypassed at \"/nowhere\""));
}

TEST_F(LiveEffectsTest, ACurveGoesOnWhereItIsLetGoOf)
{
	Effects::EffectSetup setup{"urn:sonaro-test:controls"};
	constexpr double kStart = 10.0;
	setup.mSettings.push_back({"frequency", 0.0,
		{{SN::kTimeZero, kStart},
			{SN::TickTime(kFrames, SN::FrameRate::FromSamplesPerSecond(kRate)), 1000.0}}});
	Programme const programme = MakeNested(setup);
	LiveEffects effects;
	effects.Adopt(*programme.mDescription);
	Frames const plain = Export(programme);
	Deck deck(programme);
	deck->Play();
	std::int64_t played = 0;
	auto const listen = [&]
	{
		played += kSettled;
		return Listen(deck);
	};
	auto const plan = [&] { return plain[static_cast<std::size_t>(played - 1) * 2]; };
	float heard = listen();
	EXPECT_EQ(heard, plan());
	effects.Hold(kId, "frequency", 500.0f);
	EXPECT_EQ(listen(), 500.0f);
	// An export that begins now keeps to what is held now.
	Frames const held = Export(programme);
	EXPECT_TRUE(std::all_of(held.begin(), held.end(), [](float in) { return in == 500.0f || in == 0.0f; }));
	effects.Release(kId, "frequency");
	heard = listen();
	EXPECT_EQ(heard, plan());
	EXPECT_GT(heard, kStart);
}

TEST_F(LiveEffectsTest, WhatIsHeldGoesOverToTheNextProgramme)
{
	Programme const first = MakeNested();
	Programme const next = MakeNested();
	LiveEffects effects;
	effects.Adopt(*first.mDescription);
	Deck deck(first);
	deck->Play();
	effects.Hold(kId, "frequency", 250.0f);
	EXPECT_EQ(Listen(deck), 250.0f);
	effects.Prepare(*next.mDescription);
	Frames const heard = deck.TakeOver(next);
	effects.Adopt(*next.mDescription);
	for (std::size_t i = 0; i < heard.size(); i += 2)
	{
		ASSERT_EQ(heard[i], 250.0f);
	}
	effects.Hold(kId, "frequency", 300.0f);
	EXPECT_EQ(Listen(deck), 300.0f);
}

} // namespace
} // namespace SonaroHost::Playback::Testing::LiveEffectsTest
