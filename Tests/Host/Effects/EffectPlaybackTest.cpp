// Effects that stop working, or change their latency, while somebody listens.

#include "EffectFolders.h"
#include "Host/Media.h"
#include "Host/Playback/Deck.h"
#include "SonaroHost/Effects/PreparedEffect.h"
#include "SonaroHost/Sequence/FileMedia.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gmock/gmock.h>

#include <cmath>
#include <utility>

namespace SonaroHost::Testing::EffectPlaybackTest
{

using Effects::EffectSetup;
using Playback::Testing::Deck;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kRate = 48000;
constexpr std::int64_t kFrames = 20000;

class EffectPlaybackTest : public testing::Test
{
protected:
	static void SetUpTestSuite() { FindTestPlugins(); }

	EffectPlaybackTest()
		: mSound(MakeSound(1, kRate, kFrames))
	{
		for (float& sample : mSound.mSamples)
		{
			sample *= 0.5f;
		}
	}

	// A file that is played through an effect.
	Programme MakeProgramme(EffectSetup const& inSetup) const
	{
		WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, mSound);
		auto const media = std::make_shared<FileMedia>();
		auto const description = std::make_shared<Sequence::Description>();
		description->mLayout = zorvmediatypes::CreateMonoChannelLayout();
		Sequence::Track& track = description->mTracks.emplace_back();
		track.mLayout = description->mLayout;
		Effects::PreparedEffect const effect(inSetup, kRate);
		Sequence::Effect stage{
			effect.GetName(), [effect](auto const&... inGraph) { return effect.Make(inGraph...); }};
		stage.mJumps = effect.GetJumps();
		track.mChain.mStages.emplace_back(std::move(stage));
		Sequence::Item& item = track.mItems.emplace_back();
		item.mEnd = SN::TickTime(kFrames, SN::FrameRate::FromSamplesPerSecond(kRate));
		item.mContent = Sequence::Clip{media->Get(mFolder / "in.wav", "in.wav"), 0, {}};
		Programme programme = Playback::Testing::MakeProgramme(description, kRate);
		programme.mMedia = media;
		programme.mOpenForGraph = [media] { return media->OpenForGraph(); };
		return programme;
	}

	// The whole programme, after what the device plays before it.
	static Sound Play(Deck& ioDeck)
	{
		ioDeck->Play();
		Sound heard{1, kRate, ioDeck.Pull(kFrames)};
		return heard;
	}

	TemporaryFolder mFolder;
	Sound mSound;
};

TEST_F(EffectPlaybackTest, SamplesThatAreNoNumbersAreSilentBeforeAnEffect)
{
	mSound.mSamples[9700] = NAN;
	mSound.mSamples[9702] = INFINITY;
	Deck deck(MakeProgramme({"urn:sonaro-test:delay"}));
	Sound const heard = Play(deck);
	mSound.mSamples[9700] = 0.0f;
	mSound.mSamples[9702] = 0.0f;
	EXPECT_TRUE(SameBits(heard, mSound));
	EXPECT_THAT(deck->TakeWarnings(),
		ElementsAre(AllOf(HasSubstr("the file 'in.wav' has samples that are infinite or not a number: its "
									"sample 9700 goes into the effect 'Test Delay' at 0:00.202"),
			HasSubstr("; these samples are silent"))));
	EXPECT_THAT(deck->TakeWarnings(), IsEmpty());
	EXPECT_EQ(deck->GetState().mFailure, "");
}

// What the effect had under way is silent; then the sound passes by it, as late as the effect was.
TEST_F(EffectPlaybackTest, AnEffectWithAFaultIsBypassedFromThenOn)
{
	mSound.mSamples[9700] = -1.0f;
	Deck deck(MakeProgramme({"urn:sonaro-test:fault"}));
	Sound const heard = Play(deck);
	std::int64_t first = 9700 - 64;
	EXPECT_TRUE(SameBits(
		heard.Cut(9700, kFrames - 9700).Cut(1024, 9000), mSound.Cut(9700, kFrames - 9700).Cut(1024, 9000)));
	while (first > 0 && heard.mSamples[static_cast<std::size_t>(first - 1)] == 0.0f)
	{
		--first;
	}
	EXPECT_GT(first, 9700 - 64 - 1024);
	EXPECT_TRUE(SameBits(heard.Cut(0, first), mSound.Cut(0, first)));
	EXPECT_THAT(deck->TakeWarnings(),
		ElementsAre(HasSubstr("the effect 'Test Fault' gave samples that are infinite or not a number at "
							  "0:00.201 of the output (sample 9636); the effect is bypassed from now on")));
	EXPECT_THAT(deck->TakeWarnings(), IsEmpty());
}

TEST_F(EffectPlaybackTest, ALatencyThatHasGrownIsMadeUpForByAnotherGraph)
{
	AutomationPoint const still{SN::kTimeZero, 0.0, Interpolation::kHold};
	AutomationPoint const late{SN::TickTime(9600, SN::FrameRate::FromSamplesPerSecond(kRate)), 300.0};
	Deck deck(MakeProgramme({"urn:sonaro-test:delay", {}, {}, {{"frames", 0.0, {still, late}}}}));
	EXPECT_FALSE(deck->MakeUpForLatency());
	EXPECT_FALSE(SameBits(Play(deck), mSound));
	bool isLate = false;
	deck.PullDuring([&] { isLate = deck->MakeUpForLatency(); });
	EXPECT_TRUE(isLate);
	deck->Seek(0);
	deck.Pull(kFrames);
	EXPECT_TRUE(SameBits(Play(deck), mSound));
	EXPECT_FALSE(deck->MakeUpForLatency());
}

} // namespace SonaroHost::Testing::EffectPlaybackTest
