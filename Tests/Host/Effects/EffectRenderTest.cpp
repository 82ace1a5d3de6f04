#include "EffectFolders.h"
#include "Host/ClipRenders.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <tuple>
#include <utility>

namespace SonaroHost::Testing::EffectRenderTest
{

using Effects::EffectSetup;
using testing::HasSubstr;

constexpr int kRate = 48000;

constexpr char kDelay[] = "urn:sonaro-test:delay";
constexpr char kDouble[] = "urn:sonaro-test:double";
constexpr char kFault[] = "urn:sonaro-test:fault";
constexpr char kBlocks[] = "urn:sonaro-test:blocks";
constexpr char kControls[] = "urn:sonaro-test:controls";
constexpr char kWorker[] = "urn:sonaro-test:worker";
constexpr char kSides[] = "urn:sonaro-test:sides";
constexpr char kSwitch[] = "urn:sonaro-test:switch";
constexpr char kAmplifier[] = "http://lv2plug.in/plugins/eg-amp";

AutomationPoint At(double inSeconds, double inValue)
{
	return {SN::TickTime::FromTicks(std::llround(inSeconds * zorvmediatypes::kTicksPerSecond)), inValue};
}

class EffectRenderTest : public ClipRenders
{
protected:
	static void SetUpTestSuite() { FindTestPlugins(); }

	ClipRenderRequest MakeRequest(std::vector<EffectSetup> inEffects) const
	{
		ClipRenderRequest request = ClipRenders::MakeRequest();
		request.mEffects = std::move(inEffects);
		return request;
	}

	Sound WriteNoise(int inChannels, std::int64_t inFrames = 20000) const
	{
		Sound sound = MakeSound(inChannels, kRate, inFrames);
		WriteInput(sound);
		return sound;
	}

	static Sound Scale(Sound inSound, float inGain)
	{
		for (float& sample : inSound.mSamples)
		{
			sample *= inGain;
		}
		return inSound;
	}
};

TEST_F(EffectRenderTest, LatencyIsMadeUpForToTheSample)
{
	Sound const sound = WriteNoise(2);
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest({{kDelay}})), sound));
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest(
							 {{kDelay, {}, {}, {{"frames", 4999}}}, {kDelay, {}, {}, {{"frames", 0}}}})),
		sound));
}

// What a falling latency leaves out is heard as it went in, so that a delay comes to nothing at all.
TEST_F(EffectRenderTest, LatencyThatMovesIsMadeUpForToTheSample)
{
	Sound const sound = WriteNoise(2);
	for (std::vector<AutomationPoint> const& points :
		{std::vector{At(0.0, 100.0), At(0.1, 5000.0), At(0.2, 20.0)},
			std::vector{AutomationPoint{SN::kTimeZero, 0.0, Interpolation::kHold}, At(0.0101, 300.0)}})
	{
		ClipRenderRequest const request =
			MakeRequest({{kBlocks}, {kDelay, {}, {}, {{"frames", 0.0, points}}}});
		EXPECT_TRUE(SameBits(RenderInBlocks(request), Scale(sound, 2.0f)));
	}
}

TEST_F(EffectRenderTest, BypassKeepsTheLatencyAndDoesNotClick)
{
	Sound const sound = WriteNoise(1);
	EffectSetup const late{kDelay, {}, {}, {{"frames", 777}}, Effects::ControlSetting{{}, 1.0}};
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest({late})), sound));
	std::vector<AutomationPoint> const points{
		At(0.0, 0.0), At(0.1001, 1.0), At(0.3, 0.0), At(0.302, 1.0), At(0.31, 0.0)};
	Effects::ControlSetting const bypass{{}, 0.0, points};
	// Plugins with and without a switch of their own double what they hear: at once, late, and in blocks.
	for (EffectSetup const& setup :
		{EffectSetup{kDouble, {}, {}, {}, bypass}, EffectSetup{kDouble, {}, {}, {{"frames", 999}}, bypass},
			EffectSetup{kBlocks, {}, {}, {}, bypass}, EffectSetup{kSides, {}, {}, {}, bypass},
			EffectSetup{kSwitch, {}, {}, {}, bypass},
			EffectSetup{kSwitch, {}, {}, {{"frames", 999}}, bypass}})
	{
		SCOPED_TRACE(setup.mUri);
		Sound const heard = RenderInBlocks(MakeRequest({setup}));
		constexpr double kFade = kRate / 200.0;
		double wet = 1.0;
		for (std::int64_t frame = 0; frame < sound.GetFrames(); ++frame)
		{
			bool const isOn = (frame < 4805 || frame >= 14400) && (frame < 14496 || frame >= 14880);
			bool const isHard = setup.mUri == kSwitch;
			wet = isHard ? (isOn ? 1.0 : 0.0) : std::clamp(wet + (isOn ? 1.0 : -1.0) / kFade, 0.0, 1.0);
			auto const index = static_cast<std::size_t>(frame);
			ASSERT_NEAR(heard.mSamples[index], (1.0 + wet) * sound.mSamples[index], 1e-6) << frame;
		}
	}
}

TEST_F(EffectRenderTest, PluginsThatNeedBlocksOfOneLengthGetThem)
{
	Sound const sound = WriteNoise(3);
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest({{kBlocks}})), Scale(sound, 2.0f)));
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest({{kBlocks}, {kDelay}, {kBlocks}})), Scale(sound, 4.0f)));
}

TEST_F(EffectRenderTest, PortsMeetTheChannels)
{
	Sound const mono = WriteNoise(1);
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest({{kSides}})), Scale(mono, 2.0f)));
	Sound stereo = WriteNoise(2);
	for (std::size_t i = 0; i < stereo.mSamples.size(); i += 2)
	{
		stereo.mSamples[i] *= 3.0f;
	}
	EXPECT_TRUE(SameBits(RenderInBlocks(MakeRequest({{kSides}})), stereo));
	WriteNoise(6);
	ExpectRefusal(MakeRequest({{kSides}}), "\"Test Sides\" has 2 audio inputs and 2 audio outputs, which do "
										   "not fit 6 channels");
}

TEST_F(EffectRenderTest, WorkIsDoneAtOnceInAnExport)
{
	Sound const sound = WriteNoise(1, 30);
	ClipRenderRequest request = MakeRequest({{kWorker}});
	request.mBlockFrames = 10;
	Sound expected = sound;
	for (std::size_t i = 0; i < expected.mSamples.size(); ++i)
	{
		expected.mSamples[i] *= static_cast<float>(1 << (i / 10));
	}
	EXPECT_TRUE(SameBits(Render(request), expected));
}

TEST_F(EffectRenderTest, SettingsGoBeforePresetsAndThoseBeforeDefaults)
{
	WriteNoise(2, 4);
	auto const getFirst = [&](EffectSetup const& inSetup)
	{ return Render(MakeRequest({inSetup})).mSamples[0]; };
	EXPECT_EQ(getFirst({kControls}), 100.0f);
	EXPECT_EQ(getFirst({kControls, "Low"}), 20.0f);
	EXPECT_EQ(getFirst({kControls, "urn:sonaro-test:preset"}), 20.0f);
	EXPECT_EQ(getFirst({kControls, "Low", {}, {{"frequency", 440.0}}}), 440.0f);
	constexpr char kState[] = R"(@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
<urn:sonaro-test:state> a pset:Preset ; lv2:appliesTo <urn:sonaro-test:controls> ; lv2:port [ lv2:symbol "frequency" ; pset:value 7.0 ] .)";
	EXPECT_EQ(getFirst({kControls, "Low", kState}), 7.0f);
}

// A logarithmic control from 10 to 1000 passes 100 half way, and a switch does not move between its points.
TEST_F(EffectRenderTest, ControlsMoveInTheirOwnScaleByControlBlocks)
{
	WriteNoise(2, kRate);
	ClipRenderRequest const request = MakeRequest({{kControls, {}, {},
		{{"frequency", 0.0, {At(0.0, 10.0), At(1.0, 1000.0)}},
			{"switch", 0.0, {At(0.0, 0.0), At(0.5, 1.0)}}}}});
	Sound const sound = RenderInBlocks(request);
	for (std::int64_t frame : {0, 63, 64, 12000, 24000, 47999})
	{
		auto const index = static_cast<std::size_t>(frame);
		double const seconds = static_cast<double>(frame / 64 * 64) / kRate;
		EXPECT_NEAR(sound.mSamples[2 * index], 10.0 * std::pow(100.0, seconds), 0.001) << frame;
		EXPECT_EQ(sound.mSamples[2 * index + 1], seconds < 0.5 ? 0.0f : 1.0f) << frame;
	}
}

// At once what was set, and at their samples what moves, also within blocks of one length.
TEST_F(EffectRenderTest, ParametersAreSetByMessagesAtTheirSamples)
{
	WriteNoise(1);
	std::vector<AutomationPoint> const levels{{SN::kTimeZero, 1.0, Interpolation::kHold}, At(0.1001, 2.0)};
	std::vector<AutomationPoint> const flags{At(0.0, 0.0), At(0.2002, 1.0)};
	for (char const* const uri : {"urn:sonaro-test:parameters", "urn:sonaro-test:parameters-in-blocks"})
	{
		SCOPED_TRACE(uri);
		EXPECT_EQ(Render(MakeRequest({{uri}})).mSamples[0], 0.5f);
		EffectSetup setup{uri, {}, {},
			{{"level", 0.0, levels}, {"urn:sonaro-test:parameters#flag", 0.0, flags}, {"whole", 3.0}}};
		setup.mSettings.push_back({"name", 0.0, {}, "abc", true});
		setup.mSettings.push_back({"file", 0.0, {}, (mFolder / "in.wav").string(), true});
		Sound const sound = RenderInBlocks(MakeRequest({setup}));
		// 'R' is the first letter of the file.
		float const base = 30.0f + 3000.0f + 1000.0f * 'R';
		for (std::int64_t frame = 0; frame < sound.GetFrames(); ++frame)
		{
			float const expected = base + (frame < 4805 ? 1.0f : 2.0f) + (frame < 9610 ? 0.0f : 100.0f);
			ASSERT_EQ(sound.mSamples[static_cast<std::size_t>(frame)], expected) << frame;
		}
	}
}

TEST_F(EffectRenderTest, WhatIsOutOfRangeIsLimitedWithARemark)
{
	WriteNoise(2, 4);
	ClipRenderRequest const request = MakeRequest({{kControls, {}, {}, {{"frequency", 20000.0}}}});
	EXPECT_THAT(ClipRenderJob(request).GetRemarks(),
		testing::ElementsAre(
			"the effect \"Test Controls\": \"frequency\" is out of range at 20000; using 10000"));
	EXPECT_EQ(Render(request).mSamples[0], 10000.0f);
}

TEST_F(EffectRenderTest, WhatIsNotThereIsRefusedByName)
{
	WriteNoise(1, 4);
	std::pair<EffectSetup, char const*> const cases[] = {
		{{"urn:nobody"}, "\"urn:nobody\" is not installed"},
		{{"no uri"}, "\"no uri\" is not installed"},
		{{"urn:sonaro-test:demanding"}, "it requires the feature urn:sonaro-test:nowhere"},
		{{kDelay, {}, {}, {{"Frames", 1.0}}}, "no control \"Frames\"; it has frames"},
		{{"urn:sonaro-test:parameters", {}, {}, {{"size", 1.0}}},
			"no control \"size\"; it has flag, level, whole, file, name"},
		{{"urn:sonaro-test:parameters", {}, {}, {{"level", 0.0, {}, "high", true}}},
			"\"level\" of the plugin \"Test Parameters\" takes a number, found \"high\""},
		{{"urn:sonaro-test:parameters", {}, {}, {{"name", 1.0}}}, "takes a text, and no number"},
		{{"urn:sonaro-test:parameters", {}, {}, {{"file", 0.0, {}, "gone.wav", true}}},
			"gone.wav' for \"file\" of the plugin \"Test Parameters\" does not exist"},
		{{kDelay, "Loud"}, "no preset \"Loud\"; it has none"},
		{{kControls, "Loud"}, "\"sonaro effects urn:sonaro-test:controls\" lists those that it has"},
		{{kControls, {}, "nonsense"}, "the state is not one of the plugin \"Test Controls\""},
	};
	for (auto const& [setup, text] : cases)
	{
		ExpectRefusal(MakeRequest({setup}), text);
	}
}

// A process that goes on after a crash is what the sanitizers are there to prevent.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(SONARO_SANITIZES_UNDEFINED)
#define SONARO_CAN_CRASH 1
#endif

TEST_F(EffectRenderTest, AFaultEndsTheRenderWithoutAnOutput)
{
	// Where the wrong sample is heard does not depend on blocks; of a crash no more is known than its block.
	std::tuple<float, unsigned, char const*> const cases[] = {
#ifdef SONARO_CAN_CRASH
		{1.0f, 100, "the effect 'Test Fault' on the output crashed in the block at 0:00.201 of the output"},
#endif
		{-1.0f, 100,
			"gave samples that are infinite or not a number at 0:00.201 of the output (sample 9636)"},
		{-1.0f, 4096,
			"gave samples that are infinite or not a number at 0:00.201 of the output (sample 9636)"},
		{INFINITY, 1000,
			"the file 'in.wav' has samples that are infinite or not a number: its sample 9700 goes into the "
			"effect 'Test Delay' on the output at 0:00.202 of the output (sample 9700)"},
	};
	for (auto const& [sample, block, text] : cases)
	{
		Sound sound = Scale(MakeSound(1, kRate, 20000), 0.5f);
		sound.mSamples[9700] = sample;
		WriteInput(sound);
		ClipRenderRequest request = MakeRequest({{kDelay}, {kFault}});
		request.mBlockFrames = block;
		ExpectRefusal(request, text, HostError::Kind::kInput);
		EXPECT_THAT(mFolder.List(), testing::ElementsAre("in.wav"));
	}
}

TEST_F(EffectRenderTest, ATailIsHeardToItsEnd)
{
	Sound sound{1, kRate, std::vector<float>(1000)};
	sound.mSamples[999] = 0.5f;
	WriteInput(sound);
	ClipRenderRequest request = MakeRequest({{"http://drobilla.net/plugins/mda/Delay"}});
	if (!IsInstalled(request.mEffects[0].mUri))
	{
		GTEST_SKIP() << "mda-lv2 is not installed";
	}
	request.mLayout.mLayout = zorvmediatypes::CreateStereoChannelLayout();
	request.mTail = Tail{TimePosition::FromSamples(500)};
	EXPECT_EQ(Render(request).GetFrames(), 1500);
	request.mTail = Tail{};
	Sound const whole = RenderInBlocks(request);
	EXPECT_GT(whole.GetFrames(), kRate / 10);
	EXPECT_LT(whole.GetFrames(), 30 * kRate);
	auto const last = whole.mSamples.end();
	EXPECT_GT(std::max(std::fabs(last[-1]), std::fabs(last[-2])), 3.1e-5f);
}

// lv2apply runs a plugin one sample at a time.
TEST_F(EffectRenderTest, SamplesAreThoseOfAnotherHost)
{
	constexpr char kOther[] = "command -v lv2apply > /dev/null";
	std::pair<EffectSetup, char const*> const cases[] = {
		{{kAmplifier, {}, {}, {{"gain", -7.5}}}, "-c gain -7.5"},
		{{"http://drobilla.net/plugins/mda/Overdrive", {}, {}, {{"drive", 0.8}}}, "-c drive 0.8"},
		{{"http://drobilla.net/plugins/mda/Ambience"}, ""},
	};
	for (auto const& [setup, options] : cases)
	{
		auto const plugin = Effects::FindEffect(setup.mUri);
		if (std::system(kOther) != 0 || !plugin)
		{
			GTEST_SKIP() << "lv2apply (lilv-utils), lv2-examples or mda-lv2 is not installed";
		}
		SCOPED_TRACE(setup.mUri);
		WriteNoise(static_cast<int>(plugin->mInputs), 3000);
		std::string const command = "lv2apply -i " + (mFolder / "in.wav").string() + " -o " +
									(mFolder / "other.wav").string() + " " + options + " " + setup.mUri;
		ASSERT_EQ(std::system(command.c_str()), 0);
		ClipRenderRequest request = MakeRequest({setup});
		request.mBlockFrames = 1;
		EXPECT_TRUE(SameBits(Render(request), ReadSound(mFolder / "other.wav")));
	}
}

} // namespace SonaroHost::Testing::EffectRenderTest
