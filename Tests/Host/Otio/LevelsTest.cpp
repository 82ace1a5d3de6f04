#include "Samples.h"

#include "SonaroHost/Otio/Reader.h"

#include <algorithm>
#include <string>
#include <tuple>

#include <gmock/gmock.h>

namespace SonaroHost::Otio::LevelsTest
{
namespace
{

using nlohmann::json;

// What becomes of a level, as text: its scale, its points.
std::string Describe(std::optional<Curve> const& inCurve)
{
	if (!inCurve)
	{
		return "none";
	}
	std::string text = inCurve->mScale == AutomationScale::kDecibels ? "dB" : "linear";
	text += inCurve->mTimeUnit == Curve::TimeUnit::kFractionOfLength ? " of length" : "";
	if (inCurve->IsConstant())
	{
		return text + " " + json(inCurve->mConstant).dump();
	}
	for (Curve::Keyframe const& keyframe : inCurve->mKeyframes)
	{
		text += ' ' + json(keyframe.mTime.mValue).dump() + "/" + json(keyframe.mTime.mRate).dump() + ":" +
				json(keyframe.mValue).dump();
	}
	return text;
}

// The kinds of the notes of a document, each once: "guess", "level", "ignored".
std::string ListKinds(Document const& inDocument)
{
	std::string kinds;
	auto const add = [&](Note::Kind inKind, char const* inName)
	{
		bool const isThere = std::any_of(inDocument.mNotes.begin(), inDocument.mNotes.end(),
			[inKind](Note const& inNote) { return inNote.mKind == inKind; });
		kinds += isThere ? std::string(kinds.empty() ? "" : " ") + inName : "";
	};
	add(Note::Kind::kGuess, "guess");
	add(Note::Kind::kLevelNotRead, "level");
	add(Note::Kind::kIgnored, "ignored");
	return kinds;
}

// A gap of three seconds from second 10 on, with "M" where an effect has its metadata.
std::string MakeWithEffect(std::string const& inMetadata)
{
	std::string text =
		MakeTimeline(json::array({{{"OTIO_SCHEMA", "Gap.1"}, {"source_range", MakeRange(300, 90, 30)},
						 {"effects", {{{"OTIO_SCHEMA", "Effect.1"}, {"name", "fx"}, {"metadata", "M"}}}}}}))
			.dump();
	return text.replace(text.find("\"M\""), 3, inMetadata);
}

Item const& GetFirstChild(Document const& inDocument)
{
	return *inDocument.mTimelines[0].mTracks.mChildren[0].As<Track>()->mChildren[0].AsItem();
}

struct LevelCase
{
	char const* mMetadata;
	char const* mGain;
	char const* mPan;
	char const* mKinds;
};

constexpr LevelCase kLevels[] = {
	// metadata of an effect                                             gain, pan, kinds of notes
	{R"({"gain_db": -6})", "dB -6.0", "none", ""},
	{R"({"x": {"Gain dB": "4.5"}})", "dB 4.5", "none", ""},
	{R"({"x": {"parameters": {"volume": -3}}})", "dB -3.0", "none", "guess"},
	{R"({"x": {"PARAMETERS": {"volume": 0.5}}})", "linear 0.5", "none", "guess"},
	{R"({"x": {"parameters": {"volume": 0}}})", "none", "none", "level"},
	{R"({"x": {"parameters": {"volume": 80}}})", "none", "none", "level"},
	{R"({"x": {"parameters": {"volume": true}}})", "none", "none", "level"},
	{R"({"x": {"parameters": {"volume": {"value": 0, "Unit": "dB"}}}})", "dB 0.0", "none", ""},
	{R"({"x": {"parameter": [{"name": "Level", "Value": "1"}, {"name": "Pan", "value": "-1"}]}})",
		"linear 1.0", "linear -1.0", "guess"},
	{R"({"x": {"parameter": {"parameterid": "pan", "value": "3/4"}}})", "none", "linear 0.5", ""},
	{R"({"x": {"parameter": [{"name": "gain", "amount": 3}]}})", "none", "none", "level"},
	{R"({"x": {"parameter": [{"name": "gain", "value": 1, "default": 1}]}})", "none", "none", ""},
	{R"({"x": {"parameter": [{"name": "radius", "value": 1, "default": 1}]}})", "none", "none", ""},
	{R"({"x": {"parameter": [{"name": "radius", "value": 2, "default": 1}]}})", "none", "none", "ignored"},
	{R"({"x": {"parameter": [{"name": "radius", "value": 2}]}})", "none", "none", "ignored"},
	{R"({"x": {"parameter": [{"name": "radius", "size": 2}]}})", "none", "none", "ignored"},
	{R"({"x": {"Effect Name": "Clip Volume", "amount": 2}})", "none", "none", "level"},
	{R"({"x": {"Name": "ClipVolume", "params": [{"name": "left", "value": 2, "default": 1}]}})", "none",
		"none", "level"},
	{R"({"gain_db": 1, "params": [{"name": "left", "value": 2, "default": 1}]})", "dB 1.0", "none",
		"ignored"},
	{R"({"gain_db": 1, "params": [{"name": "left", "value": 2}]})", "dB 1.0", "none", ""},
	{R"({"x": {"Effect Name": "Clip Volume", "amount": 2, "Enabled": false}})", "none", "none", ""},
	{R"({"gain_db": "?", "enabled": 0})", "none", "none", ""},
	{R"({"x": {"parameters": []}})", "none", "none", ""},
	{R"({"pan": 0.5})", "none", "none", "level"},
	{R"({"pan": "9/4"})", "none", "none", "level"},
	{R"({"solo": true})", "none", "none", "level"},
	{R"({"channelMap": [2, 1]})", "none", "none", "level"},
	{R"({"x": {"solo": false, "channelMap": [], "parameters": []}})", "none", "none", ""},
	{R"({"gain_db": {"keyframes": [{"when": 30, "value": -3}, {"when": "15", "value": 0}]}})",
		"dB 15.0/30.0:0.0 30.0/30.0:-3.0", "none", "guess"},
	{R"({"gain_db": [{"time": 1.5, "value": -3}]})", "dB 1.5/1.0:-3.0", "none", "guess"},
	{R"({"gain_db": [{"time": 1, "value": -3}, {"Time": "1/2", "value": -3}]})", "none", "none",
		"guess level"},
	{R"({"gain_db": {"keyframes": [{"time": "00:01", "value": -3}]}})", "none", "none", "level"},
	{R"({"gain_db": "0=1;5=2"})", "none", "none", "level"},
	{R"({"gain_db": -1, "x": {"level": -2}})", "dB -1.0", "none", "level"},
	{R"({"x": {"y": {"gain_db": 3}}, "regain": 4})", "none", "none", "ignored"},
};

TEST(OtioLevels, OfOtherProgramsAreReadWhereTheyAreClear)
{
	for (auto const& [metadata, gain, pan, kinds] : kLevels)
	{
		SCOPED_TRACE(metadata);
		Document const document = ReadDocument(MakeWithEffect(metadata), "edit.otio");
		ForeignLevels const& levels = GetFirstChild(document).mEffects[0].mLevels;
		EXPECT_EQ(Describe(levels.mGain), gain);
		EXPECT_EQ(Describe(levels.mPan), pan);
		EXPECT_EQ(ListKinds(document), kinds);
	}
	EXPECT_ANY_THROW(ReadDocument(MakeWithEffect(R"({"gain_db": {"value": 1e999999}})"), "edit.otio"));
}

TEST(OtioLevels, ParametersOfEditorsAreReadInTheirUnits)
{
	struct Case
	{
		char const* mParameters;
		// "gain; pan; mute; fade in; fade out".
		char const* mLevels;
		char const* mKinds;
	};
	std::string const at310 = R"("Position": {"OTIO_SCHEMA": "RationalTime.1", "value": 310, "rate": 30})";
	std::string const at10 = R"("Position": {"OTIO_SCHEMA": "RationalTime.1", "value": 10, "rate": 30})";
	std::string const mediaTimes =
		R"({"DisplayName": "Level", "Keyframes": [{"Value": 0.5, )" + at310 + "}]}";
	std::string const itemTimes = R"({"DisplayName": "Level", "Keyframes": [{"Value": 0.5, )" + at10 + "}]}";
	std::string const both = R"({"DisplayName": "Mute", "Keyframes": [{"Value": true, )" + at310 +
							 R"(}, {"Value": false, )" + at10 + "}]}";
	Case const cases[] = {
		{R"({"Parameter ID": "volume", "Parameter Value": 0.5, "Key Frames": {}})",
			"dB 0.5; none; none; -; -", ""},
		{R"({"Parameter ID": "volume", "Parameter Value": -100})", "dB null; none; none; -; -", ""},
		{R"({"Parameter ID": "volume", "Parameter Value": -100.5})", "none; none; none; -; -", "level"},
		{R"({"Parameter ID": "volume", "Parameter Value": 30.5})", "none; none; none; -; -", "level"},
		{R"({"Parameter ID": "volume", "Parameter Value": -3, "Enabled": false})", "none; none; none; -; -",
			""},
		{R"({"PARAMETER ID": "Volume", "Key Frames": {"24": {"Value": -30}, "3": {"value": 2}}})",
			"dB 3.0/30.0:2.0 24.0/30.0:-30.0; none; none; -; -", ""},
		{R"({"Parameter ID": "volume", "Key Frames": {"x": {"Value": -30}}})", "none; none; none; -; -",
			"level"},
		{R"({"Parameter ID": "volume", "Key Frames": [24, -30]})", "none; none; none; -; -", "level"},
		{R"({"Parameter ID": "pan", "Parameter Value": 25})", "none; linear 0.25; none; -; -", ""},
		{R"({"Parameter ID": "pan", "Parameter Value": 101})", "none; none; none; -; -", "level"},
		{R"({"Parameter ID": "faderIn", "Parameter Value": 12}, {"Parameter ID": "faderOut",
			"Parameter Value": 3})",
			"none; none; none; 12.0/30.0; 3.0/30.0", ""},
		{R"({"Parameter ID": "faderIn", "Parameter Value": 0}, {"Parameter ID": "faderOut",
			"Parameter Value": -1})",
			"none; none; none; -; -", "level"},
		{R"({"DisplayName": "Level", "StartValue": {"Value": 1.5}})", "linear 1.5; none; none; -; -", ""},
		{R"({"DisplayName": "Level", "StartValue": {"Value": -1.5}})", "none; none; none; -; -", "level"},
		{R"({"DisplayName": "Mute", "StartValue": {"Value": true}})", "none; none; linear 0.0; -; -", ""},
		{R"({"DisplayName": "Mute", "StartValue": {"Value": 0.5}})", "none; none; none; -; -", "level"},
		{R"({"DisplayName": "Mute", "Keyframes": []})", "none; none; none; -; -", ""},
		{mediaTimes.c_str(), "linear 10.0/30.0:0.5; none; none; -; -", "guess"},
		{itemTimes.c_str(), "linear 10.0/30.0:0.5; none; none; -; -", "guess"},
		{both.c_str(), "none; none; linear -290.0/30.0:1.0 10.0/30.0:0.0; -; -", "guess"},
	};
	auto const describe = [](std::optional<Fade> const& inFade) {
		return inFade ? json(inFade->mDuration.mValue).dump() + "/" + json(inFade->mDuration.mRate).dump()
					  : "-";
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mParameters);
		Document const document = ReadDocument(
			MakeWithEffect(R"({"x": {"Parameters": [)" + std::string(test.mParameters) + "]}}"), "e");
		ForeignLevels const& levels = GetFirstChild(document).mEffects[0].mLevels;
		EXPECT_EQ(Describe(levels.mGain) + "; " + Describe(levels.mPan) + "; " + Describe(levels.mMute) +
					  "; " + describe(levels.mFadeIn) + "; " + describe(levels.mFadeOut),
			test.mLevels);
		EXPECT_EQ(ListKinds(document), test.mKinds);
	}
}

TEST(OtioLevels, OfItemsAndMediaAreNotedWhereTheyAreNotRead)
{
	std::tuple<char const*, char const*, bool> const cases[] = {
		{"", R"({"x": {"volume": 0.5}})", true},
		{"", R"({"x": {"volume": 1, "Gain_dB": 0, "pan": "0", "level": "info", "mute": 0}})", false},
		{"", R"({"x": {"volume": 0.5}, "sonaro": {"gain": -6}})", false},
		{"", R"({"x": {"colors": {"gain": 2}}})", false},
		{"", R"({"x": {"MuteOn": true}})", true},
		{"", R"({"mute": true})", true},
		{"", R"({"x": {"mute": true}, "sonaro": {"mute": false}})", false},
		{"", R"({"x": {"mixer": {"strip": {"isSolo": true}}}})", true},
		{"", R"({"x": {"channels": 2}})", false},
		{"", R"({"x": {"channels": [2, 1]}})", true},
		{"", R"({"x": {"channels": [1, 2]}})", false},
		{"", R"({"x": {"Channels": [{"Source Channel ID": 1}, {"Source Channel ID": 1}]}})", true},
		{"/media_reference", R"({"x": {"channelMap": [2]}})", true},
		{"/media_reference", R"({"x": {"level": 31, "gain": 2}})", false},
	};
	for (auto const& [place, metadata, isNoted] : cases)
	{
		SCOPED_TRACE(std::string(place) + " " + metadata);
		json clip = {{"OTIO_SCHEMA", "Clip.1"}, {"source_range", MakeRange(0, 90, 30)},
			{"media_reference", {{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", "a.wav"}}}};
		clip[json::json_pointer(std::string(place) + "/metadata")] = json::parse(metadata);
		Document const document = ReadDocument(MakeTimeline(json::array({clip})).dump(), "edit.otio");
		EXPECT_EQ(ListKinds(document), isNoted ? "level" : "");
	}
}

TEST(OtioLevels, OfDisabledEffectsAreNeitherReadNorNoted)
{
	std::string const text = MakeWithEffect(R"({"gain": "loud", "pan": -1}, "enabled": false)");
	Document const document = ReadDocument(text, "edit.otio");
	EXPECT_TRUE(GetFirstChild(document).mEffects[0].mLevels.IsEmpty());
	EXPECT_TRUE(document.mNotes.empty());
}

TEST(OtioLevels, ControlPointsOfAnItemAreFractionsOfItsLength)
{
	json gap = {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", MakeRange(0, 90, 30)}};
	gap["metadata"] = json::parse(R"({"x": {"Pan": {"ControlPoints": [
		{"Time": "89/90", "Value": "1/1"}, {"Time": "0/90", "Value": "1/2"}, {"Time": "3/9", "Value": "0/1"}]}}})");
	Document const document = ReadDocument(MakeTimeline(json::array({gap})).dump(), "edit.otio");
	EXPECT_EQ(Describe(GetFirstChild(document).GetSettings().mForeign.mPan),
		"linear of length 0.0/90.0:0.0 3.0/9.0:-1.0 89.0/90.0:1.0");
	EXPECT_TRUE(document.mNotes.empty());
}

} // namespace
} // namespace SonaroHost::Otio::LevelsTest
