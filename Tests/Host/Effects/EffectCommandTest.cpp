// Runs the real program, as a shell does.

#include "EffectFolders.h"
#include "Host/ProgramRun.h"
#include "Host/TimelineJson.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace SonaroHost::Testing::EffectCommandTest
{

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;

constexpr char kDelay[] = "urn:sonaro-test:delay";
constexpr char kFault[] = "urn:sonaro-test:fault";
constexpr char kControls[] = "urn:sonaro-test:controls";

Json Plugin(std::string const& inUri, Json const& inControls = Json::object())
{
	return {{"uri", inUri}, {"controls", inControls}};
}

// An object with effects that are rendered by plugins.
Json WithPlugins(Json inObject, std::initializer_list<Json> inPlugins)
{
	for (Json const& plugin : inPlugins)
	{
		inObject["effects"].push_back(
			WithSettings({{"OTIO_SCHEMA", "Effect.1"}, {"effect_name", "LV2"}}, {{"lv2", plugin}}));
	}
	return inObject;
}

Json Late(int inFrames)
{
	return Plugin(kDelay, {{"frames", inFrames}});
}

class EffectCommandTest : public ProgramTest
{
protected:
	static void SetUpTestSuite() { FindTestPlugins(); }

	void SetUp() override
	{
		Sound sound = MakeSound(2, kRate, 2 * kRate);
		for (float& sample : sound.mSamples)
		{
			sample *= 0.25f;
		}
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	}

	ProgramResult RenderTimeline(Json const& inTimeline, Words const& inOptions = {})
	{
		WriteBytes(mFolder / "edit.otio", inTimeline.dump());
		return Run(Join({"render", "edit.otio", "-o", "out.wav", "--quiet"}, inOptions));
	}

	Sound RenderSound(Json const& inTimeline)
	{
		ProgramResult const result = RenderTimeline(inTimeline);
		EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
		return ReadSound(mFolder / "out.wav");
	}
};

TEST_F(EffectCommandTest, ListsAndShowsPlugins)
{
	auto const list = Json::parse(Run({"effects", "sonaro-test", "delay", "--json"}).mOutput);
	ASSERT_EQ(list.size(), 1u);
	EXPECT_EQ(list[0]["uri"], kDelay);
	EXPECT_EQ(list[0]["class"], "Delay Plugin");
	EXPECT_THAT(Run({"effects", "sonaro-test", "--class", "DELAY"}).mOutput,
		AllOf(HasSubstr("Test Delay"), Not(HasSubstr("Test Sides"))));
	EXPECT_THAT(Run({"effects", "--all", "demanding"}).mOutput,
		HasSubstr("unusable: it requires the feature urn:sonaro-test:nowhere"));

	auto const delay = Json::parse(Run({"effects", kDelay, "--json"}).mOutput);
	EXPECT_EQ(delay["latencySamples"], 100);
	EXPECT_EQ(delay["controls"][0]["maximum"], 10000);
	EXPECT_EQ(delay["controls"][0]["isInteger"], true);
	EXPECT_THAT(Run({"effects", kControls}).mOutput,
		AllOf(HasSubstr("Test Controls"), HasSubstr("2 in, 2 out"), HasSubstr("Frequency (logarithmic)"),
			HasSubstr("Presets\n  Low\n")));
	EXPECT_THAT(Run({"effects", "sonaro-test:para"}).mOutput, HasSubstr("Test Parameters in Blocks"));
	auto const parameters = Json::parse(Run({"effects", "urn:sonaro-test:parameters", "--json"}).mOutput);
	EXPECT_EQ(parameters["controls"][1]["parameter"], "urn:sonaro-test:parameters#level");
	EXPECT_EQ(parameters["controls"][1]["default"], 0.5);
	EXPECT_EQ(parameters["controls"][1]["maximum"], 9.0);
	EXPECT_EQ(parameters["texts"][0]["isPath"], true);
	EXPECT_THAT(Run({"effects", "urn:sonaro-test:parameters"}).mOutput, HasSubstr("File (path of a file)"));
	ExpectRefusal({"effects", "urn:nobody"}, 2, {"\"urn:nobody\" is not installed"});
	ExpectRefusal({"effects", "--class", "nope"}, 2, {"\"nope\"; there are: ", "Delay Plugin"});
}

TEST_F(EffectCommandTest, SettingsBelongToTheEffectBeforeThem)
{
	Words const render{"render", "tone.wav", "-o", "out.wav", "--quiet"};
	auto const getFirst = [&](Words const& inOptions)
	{
		ProgramResult const result = Run(Join(render, inOptions));
		EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
		return ReadSound(mFolder / "out.wav").mSamples[0];
	};
	EXPECT_EQ(getFirst({"--effect", kDelay, "--set", "frames=7", "--effect", kControls, "--set", "switch=1",
				  "--set", "frequency=33"}),
		33.0f);
	EXPECT_EQ(getFirst({"--effect", kControls, "--preset", "Low", "--effect", kDelay}), 20.0f);
	Json const same = {{"keyframes", List({{{"time", 0}, {"value", 70}}, {{"time", 0}, {"value", 5}}})}};
	WriteBytes(mFolder / "chain.json", Plugin(kControls, {{"frequency", same}}).dump());
	EXPECT_EQ(getFirst({"--effect-file", "chain.json"}), 5.0f);
	WriteBytes(mFolder / "mono.json",
		Plugin("urn:sonaro-test:parameters", {{"file", "name.txt"}, {"level", 2}}).dump());
	WriteBytes(mFolder / "name.txt", "A");
	EXPECT_EQ(getFirst({"--effect-file", "mono.json", "--effect", kDelay}), 65002.0f);
	EXPECT_EQ(getFirst({"--effect", "urn:sonaro-test:parameters", "--set", "name=12", "--set", "whole=4"}),
		2040.5f);
	WriteBytes(mFolder / "chain.json",
		Json({Late(99),
				 Plugin(kControls, {{"frequency", {{"keyframes", List({{{"time", 1}, {"value", 5}}})}}}})})
			.dump());
	EXPECT_EQ(getFirst({"--effect-file", "chain.json"}), 5.0f);
}

// Wrong options end with 2, and all that is wrong in a file with 1.
TEST_F(EffectCommandTest, WrongEffectsAreRefused)
{
	Words const render{"render", "tone.wav", "-o", "out.wav", "--quiet"};
	for (auto const& [words, text] : {
			 std::pair(Words{"--set", "gain=1", "--effect", kDelay}, "--set applies to the effect before it"),
			 std::pair(Words{"--effect", kDelay, "--set", "frames"}, "use symbol=value"),
			 std::pair(
				 Words{"--effect", kDelay, "--set", "frames=nan"}, "'frames=nan' is not a finite number"),
			 std::pair(Words{"--effect", "urn:nobody"}, "\"urn:nobody\" is not installed"),
		 })
	{
		ExpectRefusal(Join(render, words), 2, {text});
	}
	Words const file{"--effect-file", "wrong.json"};
	for (auto const& [content, text] : {
			 std::pair(R"([{"uri": "urn:x", "control": {}}])", "/0/control: unknown key; correct it"),
			 std::pair("{}", "/uri: is missing; use the URI of a plugin"),
			 std::pair(R"([{"uri": "urn:x", "preset": ""}])", "/0/preset: is empty; use the name"),
			 std::pair(
				 R"([{"uri": "urn:x", "bypass": null}])", "/0/bypass: expected true or false, found null"),
			 std::pair(
				 R"([{"uri": "urn:sonaro-test:delay", "state": "x"}])", "/0/state: the state is not one of"),
			 std::pair("[]", "at least one effect, or one effect, found an empty array"),
			 std::pair(R"([{"uri": "urn:x", "controls": {"a": {"keyframes": [{"time": -1, "value": 0}]}}}])",
				 "/0/controls/a/keyframes: a keyframe has a negative time; use times from 0 on"),
			 std::pair(R"([{"uri": "urn:nobody"}])", "/0: the plugin \"urn:nobody\" is not installed"),
			 std::pair("RIFF", "'wrong.json': is not a file of effects"),
		 })
	{
		WriteBytes(mFolder / "wrong.json", content);
		ExpectRefusal(Join(render, file), 1, {"'wrong.json'", text});
	}
	WriteBytes(mFolder / "wrong.json", List({Plugin(kControls, Json::object())}).dump());
	ExpectRefusal(Join(render, Join(file, {"--report", "wrong.json"})), 2, {"input"});
}

// The messages of libraries do not reach people as they are.
TEST_F(EffectCommandTest, PluginsThatCannotBeReadAreNamed)
{
	std::string const former = std::getenv("LV2_PATH");
	std::filesystem::create_directories(mFolder / "lv2/syntax.lv2");
	std::filesystem::create_directories(mFolder / "lv2/binary.lv2");
	WriteBytes(mFolder / "lv2/syntax.lv2/manifest.ttl", "no turtle");
	WriteBytes(mFolder / "lv2/binary.lv2/manifest.ttl", R"(@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
<urn:lost> a lv2:Plugin ; lv2:binary <lost.so> ; <http://usefulinc.com/ns/doap#name> "Lost" ; lv2:port
[ a lv2:AudioPort , lv2:InputPort ; lv2:index 0 ; lv2:symbol "in" ; lv2:name "In" ] ,
[ a lv2:AudioPort , lv2:OutputPort ; lv2:index 1 ; lv2:symbol "out" ; lv2:name "Out" ] .)");
	setenv("LV2_PATH", (former + ":" + (mFolder / "lv2").string()).c_str(), 1);
	ProgramResult const list = Run({"effects", "urn:lost"});
	EXPECT_EQ(list.mExitCode, 0);
	EXPECT_THAT(
		list.mErrors, AllOf(HasSubstr("sonaro: warning: a part of the installed plugins cannot be read: "),
						  HasSubstr("syntax.lv2/manifest.ttl:1:"), Not(HasSubstr("lilv"))));
	EXPECT_EQ(std::ranges::count(list.mErrors, '\n'), 1);
	ExpectRefusal({"render", "tone.wav", "-o", "out.wav", "--effect", "urn:lost"}, 2,
		{"\"Lost\" (urn:lost) does not start: Failed to open library ", "lost.so", "; reinstall the plugin"});
	ProgramResult const edit =
		RenderTimeline(Timeline({WithPlugins(Track("T", {Clip("A", "tone.wav")}), {Plugin("urn:lost")})}));
	EXPECT_EQ(edit.mExitCode, 3) << edit.mErrors;
	setenv("LV2_PATH", former.c_str(), 1);
}

TEST_F(EffectCommandTest, LatencyIsMadeUpForEverywhereInATimeline)
{
	auto const make = [](bool inIsLate)
	{
		auto const delay = [inIsLate](Json const& inObject, int inFrames) {
			return inIsLate ? WithPlugins(inObject, {Late(inFrames), Late(3)}) : inObject;
		};
		Json const clip = delay(Clip("A", "tone.wav", 0.25, 0.5), 100);
		Json const moving = {
			{"keyframes", List({{{"time", 0}, {"value", 5}}, {{"time", 0.1}, {"value", 2000}},
							  {{"time", 0.2}, {"value", 70}}})}};
		Json const inner = WithPlugins(delay(Track("Inner", {clip}), 1000),
			inIsLate ? std::initializer_list<Json>{Plugin(kDelay, {{"frames", moving}})}
					 : std::initializer_list<Json>{});
		Json const nested = delay(Stack({inner}), 333);
		Json const sending = WithSettings(delay(Track("Sending", {Clip("B", "tone.wav")}), 77),
			{{"sends", List({{{"to", "room"}, {"gain", -6}}})}, {"gain", -3}});
		Json timeline = WithSettings(Timeline({Track("Outer", {Gap(0.1), nested}), sending,
										 Track("Dry", {clip, Clip("C", "tone.wav")})}),
			{{"layout", "stereo"},
				{"submixes",
					List({{{"name", "room"}, {"effects", inIsLate ? List({Late(500)}) : List({})}}})}});
		timeline["tracks"] = delay(timeline["tracks"], 50);
		return timeline;
	};
	EXPECT_TRUE(SameBits(RenderSound(make(true)), RenderSound(make(false))));
}

// The time of a keyframe is a time of the sound, on every level and at every speed.
TEST_F(EffectCommandTest, ABypassKeepsItsTimeWhateverTheLatency)
{
	auto const make = [](std::string const& inUri, int inFrames)
	{
		auto const bypassed = [&](Json const& inObject, double inFirst, double inSecond)
		{
			Json effect = Plugin(inUri, {{"frames", inFrames}});
			effect["bypass"] = {
				{"keyframes", List({{{"time", 0}, {"value", false}}, {{"time", inFirst}, {"value", true}},
								  {{"time", inSecond}, {"value", false}}})}};
			return WithPlugins(inObject, {effect});
		};
		auto const play = [](Json inObject, double inSpeed)
		{
			inObject["effects"].push_back({{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", inSpeed}});
			return inObject;
		};
		Json const clip = bypassed(play(Clip("A", "tone.wav", 0.25, 0.5), 1.7), 0.1, 0.1304);
		Json const nested =
			play(bypassed(Stack({bypassed(Track("Inner", {clip, clip}), 0.3, 0.7)}), 0.2, 0.21), -1.5);
		Json timeline = Timeline({bypassed(Track("Outer", {Gap(0.1), nested}), 0.22222, 0.5)});
		timeline["tracks"] = bypassed(timeline["tracks"], 0.05, 0.4);
		return timeline;
	};
	for (char const* const uri : {"urn:sonaro-test:double", "urn:sonaro-test:switch"})
	{
		EXPECT_TRUE(SameBits(RenderSound(make(uri, 987)), RenderSound(make(uri, 0)))) << uri;
	}
}

// Times count from the start of the clip, and effects of a clip come before its gain.
TEST_F(EffectCommandTest, AutomationFollowsTheClip)
{
	Json const frequency = {
		{"keyframes", List({{{"time", 0}, {"value", 10}}, {{"time", 0.5}, {"value", 1000}}})}};
	Json const clip = WithSettings(
		WithPlugins(Clip("A", "tone.wav"), {Plugin(kControls, {{"frequency", frequency}, {"switch", true}})}),
		{{"gain", -20}});
	Sound const sound = RenderSound(Timeline({Track("T", {Gap(0.5), clip})}));
	auto const getFrame = [&](double inSeconds)
	{ return static_cast<std::size_t>(std::llround(inSeconds * kRate)) * 2; };
	EXPECT_EQ(sound.mSamples[getFrame(0.25)], 0.0f);
	EXPECT_NEAR(sound.mSamples[getFrame(0.5)], 1.0f, 1e-4f);
	EXPECT_NEAR(sound.mSamples[getFrame(0.75)], 10.0f, 0.1f);
	EXPECT_NEAR(sound.mSamples[getFrame(1.25)], 100.0f, 0.01f);
	EXPECT_NEAR(sound.mSamples[getFrame(1.25) + 1], 0.1f, 1e-5f);
}

TEST_F(EffectCommandTest, WhatIsMissingIsBypassedAndReported)
{
	auto const make = [](std::initializer_list<Json> inPlugins)
	{ return Timeline({WithPlugins(Track("Voice", {Clip("A", "tone.wav")}), inPlugins)}); };
	Sound const plain = RenderSound(make({}));
	ProgramResult const result =
		RenderTimeline(make({Plugin("urn:nobody"), Plugin(kDelay, {{"speed", 1}}), Late(5)}));
	EXPECT_EQ(result.mExitCode, 3);
	EXPECT_THAT(result.mErrors, AllOf(HasSubstr("missing effect: track \"Voice\": an effect is bypassed: the "
												"plugin \"urn:nobody\" is not installed"),
									HasSubstr("(/tracks/children/0/effects/0/metadata/sonaro/lv2)"),
									HasSubstr("\"Test Delay\" has no control \"speed\"; it has frames")));
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav"), plain));
	for (char const* const strict : {"--strict", "--strict=media"})
	{
		std::filesystem::remove(mFolder / "out.wav");
		ProgramResult const refused = RenderTimeline(make({Plugin("urn:nobody")}), {strict});
		EXPECT_EQ(refused.mExitCode, 1);
		EXPECT_THAT(refused.mErrors, HasSubstr("1 effect is missing"));
		EXPECT_THAT(mFolder.List(), ElementsAre("edit.otio", "tone.wav"));
	}
	EXPECT_EQ(RenderTimeline(make({Json{{"uri", 1}}})).mExitCode, 1);
}

TEST_F(EffectCommandTest, AFaultNamesItsPlaceAndTime)
{
	Sound sound{1, kRate, std::vector<float>(kRate)};
	sound.mSamples[kRate / 2] = -1.0f;
	WriteSound(mFolder / "bad.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	ProgramResult const result = RenderTimeline(
		Timeline({Track("Voice", {Gap(0.5), WithPlugins(Clip("A", "bad.wav"), {Plugin(kFault)})})}),
		{"--block", "100"});
	EXPECT_EQ(result.mExitCode, 1);
	EXPECT_THAT(result.mErrors,
		AllOf(
			HasSubstr(
				"'edit.otio', /tracks/children/0/children/1: the effect 'Test Fault' on 'A' on 'Voice' gave "
				"samples that are infinite or not a number at 0:00.999 of the timeline (sample 47936)"),
			Not(HasSubstr("warning"))));
	EXPECT_THAT(mFolder.List(), ElementsAre("bad.wav", "edit.otio", "tone.wav"));

	// What is wrong in a file is not blamed on the plugin, and the time is that of the outermost timeline.
	sound.mSamples[kRate / 2] = NAN;
	WriteSound(mFolder / "bad.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	Json const inner = Stack({WithPlugins(Track("Inner", {Gap(0.25), Clip("A", "bad.wav")}), {Late(10)})});
	ProgramResult const bad = RenderTimeline(
		Timeline({Track("Other", {Clip("B", "tone.wav")}), Track("Outer", {Gap(0.5), inner})}));
	EXPECT_EQ(bad.mExitCode, 1);
	EXPECT_THAT(
		bad.mErrors, AllOf(HasSubstr("/tracks/children/1/children/1/children/0/children/1: the file "
									 "'bad.wav' of the clip 'A' has samples that are infinite or not a "
									 "number: its sample 24000 goes into the effect 'Test Delay' on"),
						 HasSubstr(" at 0:01.250 of the timeline (sample 60000); repair the file")));
}

TEST_F(EffectCommandTest, PlayingGoesOnAfterAFaultAndSaysSo)
{
	Sound sound = MakeSound(1, kRate, kRate / 2);
	for (float& sample : sound.mSamples)
	{
		sample *= 0.5f;
	}
	sound.mSamples[4800] = -1.0f;
	WriteSound(mFolder / "bad.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	WriteBytes(mFolder / "edit.otio",
		Timeline({Track("Voice", {WithPlugins(Clip("A", "bad.wav", 0.0, 0.5), {Plugin(kFault)})})}).dump());
	constexpr char kFaultText[] =
		"'edit.otio', /tracks/children/0/children/0: the effect 'Test Fault' on 'A' on 'Voice' gave";
	ProgramResult const lines = Run({"play", "edit.otio", "--device", "null", "--no-ui"});
	EXPECT_EQ(lines.mExitCode, 3) << lines.mErrors;
	EXPECT_THAT(lines.mErrors,
		AllOf(HasSubstr("warning: "), HasSubstr(kFaultText),
			HasSubstr("at 0:00.099 of the timeline (sample 4736); the effect is bypassed from now on")));
	ProgramResult const events = Run({"play", "edit.otio", "--device", "null", "--json"});
	EXPECT_EQ(events.mErrors, "");
	EXPECT_THAT(events.mOutput, AllOf(HasSubstr("{\"event\":\"fault\",\"message\":\"'edit.otio'"),
									HasSubstr("\"event\":\"end\""), HasSubstr("\"sample\":24000")));
}

// What is after a range that is cut off is no tail.
TEST_F(EffectCommandTest, ATailNeedsARangeThatReachesTheEnd)
{
	Json const timeline = Timeline({WithPlugins(Track("T", {Clip("A", "tone.wav")}), {Late(4000)})});
	ProgramResult const cut = RenderTimeline(timeline, {"--range", "0.25+0.5", "--tail", "1"});
	EXPECT_EQ(cut.mExitCode, 2);
	EXPECT_THAT(
		cut.mErrors, HasSubstr("the end of the programme at 0:01.000, but the range ends before it at "
							   "0:00.750; let the range reach the end"));
	EXPECT_THAT(mFolder.List(), ElementsAre("edit.otio", "tone.wav"));
	EXPECT_EQ(RenderTimeline(timeline, {"--range", "0.5+0.5", "--tail", "0.25"}).mExitCode, 0);
	EXPECT_EQ(ReadSound(mFolder / "out.wav").GetFrames(), kRate * 3 / 4);
}

TEST_F(EffectCommandTest, ReportsShowEffects)
{
	Json const moving = {{"keyframes", List({{{"time", 0}, {"value", 5}}, {{"time", 1}, {"value", 70}}})}};
	Json effect = Plugin(kDelay, {{"frames", moving}});
	effect["bypass"] = true;
	WriteBytes(mFolder / "chain.json", effect.dump());
	WriteBytes(mFolder / "edit.otio",
		WithPlugins(Timeline({Track("T", {WithPlugins(Clip("A", "tone.wav"), {effect})})}), {}).dump());
	for (Words const& words : {Words{"tone.wav", "--effect-file", "chain.json"}, Words{"edit.otio"}})
	{
		ProgramResult const result =
			Run(Join({"render", "-o", "out.wav", "--json", "--report", "r.json"}, words));
		ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
		EXPECT_EQ(
			Run(Join({"render", "-o", "out.wav", "--quiet", "--report", "r.html"}, words)).mExitCode, 0);
		EXPECT_THAT(ReadBytes(mFolder / "r.html"),
			AllOf(HasSubstr(kDelay), HasSubstr("frames from 5 by 2 keyframes, bypassed")));
		for (std::string const& text : {result.mOutput, ReadBytes(mFolder / "r.json")})
		{
			Json const effects = Json::parse(text)["effects"];
			ASSERT_EQ(effects.size(), 1u);
			EXPECT_EQ(effects[0]["uri"], kDelay);
			// The latency that was found to be the largest one.
			EXPECT_EQ(effects[0]["latencySamples"], 70);
			EXPECT_EQ(effects[0]["controls"]["frames"], (Json{{"first", 5.0}, {"keyframes", 2}}));
			EXPECT_EQ(effects[0]["bypass"], true);
		}
	}
}

} // namespace SonaroHost::Testing::EffectCommandTest
