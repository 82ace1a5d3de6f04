#include "Samples.h"

#include "Host/Refusal.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Otio/Reader.h"
#include "Support/Trials.h"

#include <random>
#include <string>
#include <string_view>
#include <utility>

#include <gmock/gmock.h>

namespace SonaroHost::Otio::ReaderTest
{
namespace
{

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

Document ReadText(std::string_view inText)
{
	return ReadDocument(inText, "edit.otio");
}

Document Read(json const& inJson)
{
	return ReadText(inJson.dump());
}

// What the refusal says; empty when the file is read.
std::string GetRefusal(std::string_view inText)
{
	return SonaroHost::Testing::GetRefusalOf([&] { ReadText(inText); });
}

// "place: text" of each note.
std::vector<std::string> GetNotes(Document const& inDocument, Note::Kind inKind)
{
	std::vector<std::string> notes;
	for (Note const& note : inDocument.mNotes)
	{
		if (note.mKind == inKind)
		{
			notes.push_back(note.mPlace + ": " + note.mText);
		}
	}
	return notes;
}

Item const& GetChild(Document const& inDocument, std::size_t inIndex)
{
	return *inDocument.mTimelines[0].mTracks.mChildren[0].As<Track>()->mChildren[inIndex].AsItem();
}

// Puts a value at a pointer of the full timeline; the text "gone" takes it away.
json Patch(std::string const& inPointer, std::string const& inValue)
{
	json timeline = MakeFullTimeline();
	json::json_pointer const pointer(inPointer);
	if (inValue == "gone")
	{
		timeline[pointer.parent_pointer()].erase(pointer.back());
	}
	else
	{
		timeline[pointer] = json::parse(inValue);
	}
	return timeline;
}

TEST(OtioReader, EverythingOfTheFullTimelineArrives)
{
	Document const document = Read(MakeFullTimeline());
	EXPECT_THAT(GetNotes(document, Note::Kind::kGuess), IsEmpty());
	EXPECT_THAT(GetNotes(document, Note::Kind::kIgnored), IsEmpty());

	ASSERT_THAT(document.mTimelines, SizeIs(1));
	Timeline const& timeline = document.mTimelines[0];
	EXPECT_EQ(timeline.mGlobalStartTime, (RationalTime{86400, 24}));
	ASSERT_THAT(timeline.mTracks.mChildren, SizeIs(2));
	EXPECT_EQ(timeline.mTracks.mMarkers.at(0).mMarkedRange, (TimeRange{{10, 25}, {50, 25}}));
	MixSettings const& mix = timeline.mTracks.GetSettings();
	EXPECT_EQ(mix.mLayout, "5.1");
	EXPECT_EQ(mix.mGain->mConstant, -1.5);
	EXPECT_EQ(mix.mFadeIn->mShape, FadeShape::kSCurve);
	EXPECT_EQ(mix.mSubmixes.at(0).mOutput, "main");

	auto const* const track = timeline.mTracks.mChildren[0].As<Track>();
	ASSERT_NE(track, nullptr);
	EXPECT_EQ(track->mMetadata, R"({"other":[1,"two"]})");
	EXPECT_EQ(track->GetSettings().mSends.at(0).mGain.mConstant, -12.0);
	ASSERT_THAT(track->mChildren, SizeIs(5));

	auto const* const clip = track->mChildren[0].As<Clip>();
	EXPECT_EQ(clip->mPlace, "/tracks/children/0/children/0");
	EXPECT_EQ(clip->FindActiveMedia()->mTargetUrl, "sound/one.wav");
	EXPECT_EQ(clip->FindActiveMedia()->mAvailableRange->mDuration, (RationalTime{48000, 48000}));
	EXPECT_EQ(clip->mEffects.at(0).mTimeScalar, -1.0);
	EXPECT_THAT(clip->GetSettings().mChannels, testing::ElementsAre(2, 1));
	auto const& keyframes = clip->GetSettings().mGain->mKeyframes;
	ASSERT_THAT(keyframes, SizeIs(2));
	EXPECT_EQ(keyframes[0].mTime, (RationalTime{25, 25}));
	EXPECT_EQ(keyframes[1].mInterpolation, Interpolation::kSmooth);

	auto const* const transition = track->mChildren[1].As<Transition>();
	EXPECT_EQ(transition->mInOffset, (RationalTime{5, 29.97}));
	EXPECT_EQ(transition->GetSettings().mShape, FadeShape::kLinear);
	EXPECT_EQ(track->mChildren[2].As<Clip>()->FindActiveMedia()->mTargetUrl, "two.wav");
	auto const* const nested = track->mChildren[4].As<Stack>()->mChildren.at(0).As<Track>();
	EXPECT_EQ(nested->mChildren.at(0).As<Clip>()->FindActiveMedia()->mKind, MediaReference::Kind::kGenerator);
}

TEST(OtioReader, RefusalsNameThePlace)
{
	struct Case
	{
		std::string mPointer;
		std::string mValue;
		// What follows the place; the place is the pointer with mBelow behind it.
		std::string mReason;
		std::string mBelow = "";
	};
	std::string const track = "/tracks/children/0";
	std::string const clip = track + "/children/0";
	std::string const range = clip + "/source_range";
	std::string const sonaro = clip + "/metadata/sonaro";
	std::string const submixes = "/metadata/sonaro/submixes";
	std::string const multicam = "/tracks/metadata/sonaro/multicam";
	Case const cases[] = {
		{range + "/duration/value", "-1", "-1 is negative; use 0 or more"},
		{range + "/duration/rate", "0", "0 is out of range; use 0.0001 to 1000000000000"},
		{range + "/start_time/rate", "-25", "-25 is out of range; use 0.0001"},
		{range + "/start_time/rate", "1e300", "1e+300 is out of range; use"},
		{range + "/start_time/value", "1e17", "1e+17 at a rate of 25 is out of range; times"},
		{range + "/start_time/value", "null", "expected a number, found null"},
		{range + "/start_time/value", R"("7")", "expected a number, found a string"},
		{range + "/duration", "gone", "expected a RationalTime, found nothing"},
		{range, R"({"OTIO_SCHEMA": "RationalTime.1"})", "has the schema 'RationalTime.1'; expected a Ti"},
		{clip + "/enabled", R"("no")", "expected true or false, found a string"},
		{clip + "/effects", "{}", "expected an array, found an object"},
		{clip + "/effects/0/time_scalar", "1e9", "1000000000 is out of range; use -1000 to 1000"},
		{clip + "/effects/0", "7", "expected an effect, found a number"},
		{clip + "/media_references", "[]", "expected an object of media references, found an empty array"},
		{clip + "/media_references/DEFAULT_MEDIA/available_range/duration/rate", "0",
			"0 is out of range; use"},
		{clip + "/media_references/DEFAULT_MEDIA/target_url", "5", "expected a string, found a number"},
		{track + "/children/1/in_offset/value", "-3", "-3 is negative; use 0 or more"},
		{track + "/children/3", R"({"OTIO_SCHEMA": "Title.1"})",
			"an item of unknown schema 'Title.1' has no source_range"},
		{track + "/children/3", R"("Gap")", "expected a clip, gap"},
		{track + "/children", "0", "expected an array, found a number"},
		{track + "/kind", "{}", "expected a string, found an object"},
		{"/tracks", R"({"OTIO_SCHEMA": "Track.1"})", "is not a Stack"},
		{"/tracks", "[]", "is not a Stack"},
		{sonaro, "[]", "expected an object, found an empty array"},
		{sonaro + "/gain", "101", "101 is out of range; use at most"},
		{sonaro + "/gain", R"("loud")", "expected a number, found a string"},
		{sonaro + "/gain", "{}", "expected an array of at least one", "/keyframes"},
		{sonaro + "/gain/keyframes/0/time", "null", "expected seconds or a RationalTime, found null"},
		{sonaro + "/gain/keyframes/0/interpolation", R"("sharp")", "'sharp' is not valid; use"},
		{sonaro + "/gain/keyframes/1", "3", "expected seconds or a", "/time"},
		{sonaro + "/gain/keyframes/1", R"({"time": 1, "vlaue": 3})",
			"unknown key, while \"value\" is missing", "/vlaue"},
		{sonaro + "/gain", R"({"keyfames": []})", "unknown key, while \"keyframes\" is missing", "/keyfames"},
		{sonaro + "/pan", "1.5", "1.5 is out of range; use -1 to 1"},
		{sonaro + "/channels", "[]", "0 channels is out of range; use 1 to"},
		{sonaro + "/channels/1", "0", "0 is out of range; use 1 to 64"},
		{sonaro + "/channels/1", "1.5", "1.5 is not a whole number"},
		{sonaro + "/fade_out", R"({"duration": -1})", "the duration is negative", "/duration"},
		{sonaro + "/fade_out", R"({"duration": 1, "curve": "log"})", "'log' is not valid; use", "/curve"},
		{"/metadata/sonaro/layout", R"("7.1")", "'7.1' is not a layout; use"},
		{"/metadata/sonaro/layout", "2.5", "'2.5' is not a layout; use"},
		{submixes + "/1/name", R"("dialogue")", "another submix is named 'dialogue'"},
		{submixes + "/1/output", R"("dialogue")", "the submix outputs form a loop", "/../../0/output"},
		{submixes + "/2/output", R"("gone")", "there is no submix 'gone'"},
		{track + "/metadata/sonaro/output", R"("main 2")", "there is no submix 'main 2' in the stack"},
		{track + "/metadata/sonaro/sends/0/to", R"("a\nb")", R"(there is no submix 'a\x0ab' in the stack)"},
		{multicam, "[]", "expected an object with \"cuts\", found an empty array"},
		{multicam, R"({"cuts": {}})", "expected an array, found an object", "/cuts"},
		{multicam, R"({"cuts": [{"angle": 1}]})", "expected seconds or a RationalTime, found",
			"/cuts/0/time"},
		{multicam, R"({"cuts": [{"time": 1}]})",
			"expected the number of an angle, from 1, or its name, found", "/cuts/0/angle"},
		{multicam, R"({"cuts": [{"time": 1, "angle": 0}]})",
			"0 is not the number of an angle; use a whole number from 1", "/cuts/0/angle"},
		{multicam, R"({"cuts": [{"time": 9, "angle": 1}, {"time": 1, "angle": 77}]})",
			"there is no angle 77; the stack has ", "/cuts/1/angle"},
		{multicam, R"({"angle": "Roof"})", "there is no angle 'Roof'; the stack has ", "/angle"},
		{multicam, R"({"fade": -0.1})", "the fade is negative; use 0 or more", "/fade"},
		{multicam, R"({"curve": "log"})", "'log' is not valid; use", "/curve"},
		{"/OTIO_SCHEMA", "gone", "has no OTIO_SCHEMA", "/.."},
		{"/OTIO_SCHEMA", R"("Clip.2")", "has the schema 'Clip.2'; expected a Timeline", "/.."},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mPointer + " " + test.mValue);
		auto const place = std::filesystem::path(test.mPointer + test.mBelow).lexically_normal().string();
		bool const isTop = test.mBelow == "/..";
		EXPECT_THAT(GetRefusal(Patch(test.mPointer, test.mValue).dump()),
			testing::StartsWith("'edit.otio'" + (isTop ? "" : ", " + place) + ": " + test.mReason));
	}
}

TEST(OtioReader, NoJsonIsRefusedWithLineAndColumn)
{
	std::string const deepMetadata = R"({"OTIO_SCHEMA": "Timeline.1", "metadata":)" +
									 std::string(10000, '[') + std::string(10000, ']') + "}";
	std::pair<std::string, std::string> const cases[] = {
		{"", "'edit.otio': is empty"},
		{"\x7f", "'edit.otio': is not an OpenTimelineIO file"},
		{"{\n\t\"a\": }", "'edit.otio', line 2, column 7: syntax error"},
		{"{} {}", "line 1, column 4: syntax error"},
		{"{\"a\": 1e999}", "line 1, column 11: number overflow: numbers go up to"},
		{"{\"a\": \"\xff\"}", "line 1, column 8: syntax error"},
		{"{\"a\": NaNny}",
			"line 1, column 11: syntax error while parsing object - invalid literal; expected"},
		{"{\n NaN: 1}", "line 2, column 2: found a number where a key is expected"},
		{"// none\n{}", "line 1, column 1: syntax error"},
		{std::string(10000, '['), "line 1, column 1001: objects and arrays are nested more than 1000 levels"},
		{deepMetadata, "column 1041: objects and arrays are nested"},
	};
	for (auto const& [text, wanted] : cases)
	{
		SCOPED_TRACE(text.substr(0, 40));
		EXPECT_THAT(GetRefusal(text), HasSubstr(wanted));
	}
}

TEST(OtioReader, NumbersOfPythonAreRefusedByName)
{
	struct Case
	{
		char const* mLiteral;
		char const* mName;
	};
	for (Case const& test : {Case{"NaN", "NaN"}, {"Infinity", "Infinity"}, {"-Infinity", "-Infinity"},
			 {"Inf", "Infinity"}, {"-Inf", "-Infinity"}, {"-NaN", "NaN"}})
	{
		SCOPED_TRACE(test.mLiteral);
		// Texts with the same words and with quotes stand before them.
		std::string text = Patch("/name", R"("NaN \" Infinity")").dump();
		std::size_t const value = text.find("\"value\":50.0");
		text.replace(value + 8, 4, test.mLiteral);
		EXPECT_EQ(
			GetRefusal(text), "'edit.otio', /tracks/children/0/children/0/source_range/duration/value: " +
								  std::string(test.mName) + " is not a finite number");
	}
	std::string label = MakeFullTimeline().dump();
	label.replace(label.find("86400.0"), 7, "NaN");
	Document const document = ReadText(label);
	EXPECT_FALSE(document.mTimelines[0].mGlobalStartTime);
	EXPECT_THAT(GetNotes(document, Note::Kind::kIgnored),
		testing::ElementsAre("/global_start_time/value: NaN is not a finite number; ignored"));
}

TEST(OtioReader, SchemasOfTheWildAreUnderstood)
{
	struct Case
	{
		char const* mPointer;
		char const* mValue;
		// Of the one note that is expected, and its kind; empty for none.
		Note::Kind mKind;
		std::string mNote;
	};
	std::string const children = "/tracks/children/0/children";
	Case const cases[] = {
		{"/tracks/children/0/OTIO_SCHEMA", R"("Sequence.1")", Note::Kind::kRemark,
			"/tracks/children/0: Sequence is the old name of Track; treating it as such"},
		{"/tracks/children/0/children/3/OTIO_SCHEMA", R"("Filler.1")", Note::Kind::kRemark,
			children + "/3: Filler is the old name of Gap; treating it as such"},
		{"/tracks/children/0/children/0/OTIO_SCHEMA", R"("Clip.1")", Note::Kind::kGuess, ""},
		{"/tracks/children/0/children/0/OTIO_SCHEMA", R"("Clip.3")", Note::Kind::kGuess,
			children + "/0: the schema 'Clip.3' is newer than supported; treating it as Clip.2"},
		{"/tracks/children/0/children/0/OTIO_SCHEMA", R"("Clip")", Note::Kind::kGuess,
			children + "/0: the schema 'Clip' has no version; treating it as Clip.2"},
		{"/tracks/children/0/children/0/source_range/duration/OTIO_SCHEMA", "gone", Note::Kind::kGuess,
			children + "/0/source_range/duration: OTIO_SCHEMA is missing; assuming RationalTime"},
		{"/tracks/children/0/children/0/source_range/start_time", "null", Note::Kind::kGuess,
			children + "/0/source_range: start_time is missing; assuming 0"},
		{"/tracks/children/0/children/0/active_media_reference_key", R"("proxy")", Note::Kind::kGuess,
			children +
				"/0/active_media_reference_key: the media reference 'proxy' does not exist; the only one, "
				"'DEFAULT_MEDIA', is used"},
		{"/tracks/children/0/children/2/active_media_reference_key", R"("proxy")", Note::Kind::kGuess,
			children +
				"/2/active_media_reference_key: the media reference 'proxy' does not exist; treating the "
				"media as missing"},
		{"/tracks/children/0/children/0/media_references/DEFAULT_MEDIA/OTIO_SCHEMA", R"("Cloud.1")",
			Note::Kind::kIgnored,
			"the media reference has the unknown schema 'Cloud.1'; treating the media as missing"},
		{"/tracks/children/0/children/3/OTIO_SCHEMA", R"("UnknownSchema.1")", Note::Kind::kIgnored,
			children + "/3: an item of unknown schema 'UnknownSchema.1' is not rendered"},
		{"/tracks/children/0/children/0/effects/0/OTIO_SCHEMA", R"("TimeEffect.1")", Note::Kind::kIgnored,
			"the effect 'LinearTimeWarp' (schema 'TimeEffect.1') is not rendered"},
		{"/tracks/children/0/children/0/effects/0/time_scalar", "0", Note::Kind::kRemark,
			children + "/0/effects/0/time_scalar: time_scalar is 0; the item is a freeze frame"},
		{"/tracks/children/0/children/0/reel", "3", Note::Kind::kIgnored, children + "/0/reel: unknown key"},
		{"/tracks/children/0/kind", R"("Subtitle")", Note::Kind::kIgnored,
			"/tracks/children/0/kind: the track is of kind 'Subtitle'; only tracks of kind Audio are heard"},
		{"/tracks/children/0/metadata/sonaro/curve", R"("linear")", Note::Kind::kIgnored,
			"/tracks/children/0/metadata/sonaro/curve: this key of metadata.sonaro does not apply"},
		{"/tracks/children/0/metadata/sonaro/a~0b", "1", Note::Kind::kIgnored,
			"sonaro/a~0b: unknown key in metadata.sonaro"},
		{"/tracks/children/0/children/0", R"({"OTIO_SCHEMA": "Transition.1", "in_offset": null, "out_offset":
			{"OTIO_SCHEMA": "RationalTime.1", "value": 1, "rate": 1}})",
			Note::Kind::kIgnored, children + "/1: two transitions in a row; the second is ignored"},
		{"/tracks/markers/0/marked_range", "7", Note::Kind::kIgnored,
			"/tracks/markers/0/marked_range: expected a TimeRange, found a number; ignored"},
		{"/tracks/metadata/sonaro/multicam",
			R"({"cuts": [{"time": 1, "angle": 1}, {"time": 1.0, "angle": 1}]})", Note::Kind::kGuess,
			"/tracks/metadata/sonaro/multicam/cuts: two cuts have the same time; the last one is used"},
		{"/metadata/sonaro/multicam", "{}", Note::Kind::kIgnored,
			"/metadata/sonaro/multicam: this key of metadata.sonaro does not apply"},
		{"/tracks/metadata/sonaro/layout", R"("mono")", Note::Kind::kGuess,
			R"(: the timeline and its stack both set "layout" in metadata.sonaro; the timeline's is used)"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(std::string(test.mPointer) + " " + test.mValue);
		auto const notes = GetNotes(Read(Patch(test.mPointer, test.mValue)), test.mKind);
		EXPECT_TRUE(test.mNote.empty() || testing::Value(notes, testing::Contains(HasSubstr(test.mNote))))
			<< testing::PrintToString(notes);
		EXPECT_EQ(notes.empty(), test.mNote.empty());
	}
}

TEST(OtioReader, OfKeysGivenTwiceTheLastCounts)
{
	// Few keys, and so many that a search for each of them would take forever.
	for (std::size_t const others : {0U, SN::Testing::GetNumTrials(100000)})
	{
		std::string keys = R"("name": "first", "active_media_reference_key": "a", "name": "last", )";
		std::string media =
			R"("a": null, "b": null, "a": {"OTIO_SCHEMA": "MissingReference.1", "name": "x"})";
		for (std::size_t i = 0; i < others; ++i)
		{
			keys += "\"name\": 1, \"k" + std::to_string(i) + "\": 0, ";
			media += ", \"m" + std::to_string(i) + "\": null";
		}
		std::string text = MakeTimeline("X").dump();
		text.replace(text.find("\"X\""), 3,
			R"([{"OTIO_SCHEMA": "Clip.2", "source_range": null, )" + keys +
				R"("name": "kept", "media_references": {)" + media + "}}]");
		Document const document = ReadText(text);
		EXPECT_EQ(GetChild(document, 0).mName, "kept");
		EXPECT_EQ(static_cast<Clip const&>(GetChild(document, 0)).FindActiveMedia()->mName, "x");
		EXPECT_THAT(GetNotes(document, Note::Kind::kGuess),
			testing::Contains("/tracks/children/0/children/0/name: the key appears more than once; the last "
							  "value is used"));
	}
}

TEST(OtioReader, WhatIsNotHeardGivesRemarksOnly)
{
	Document const document =
		Read(Patch("/tracks/children/1/children/0/source_range/duration/odd", R"("x")"));
	EXPECT_THAT(GetNotes(document, Note::Kind::kIgnored), IsEmpty());
	EXPECT_THAT(GetNotes(document, Note::Kind::kRemark),
		testing::Contains(HasSubstr("/tracks/children/1/children/0/effects/0: the effect 'blur'")));
}

TEST(OtioReader, OpenLengthsUnderTimeWarpsAreOneGuessOfTheFile)
{
	auto const makeGap = [](json const& inFactors)
	{
		json gap = {
			{"OTIO_SCHEMA", "Gap.1"}, {"source_range", MakeRange(0, 90, 30)}, {"effects", json::array()}};
		for (json const& factor : inFactors)
		{
			gap["effects"].push_back({{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", factor}});
		}
		return gap;
	};
	// At 1, -1 and at rest all programs agree.
	json children = json::array({makeGap({-1.0}), makeGap({4.0, 0.5, -0.5}), makeGap({0.0})});
	EXPECT_THAT(GetNotes(Read(MakeTimeline(children)), Note::Kind::kGuess), IsEmpty());
	for (int i = 0; i < 30; ++i)
	{
		children.push_back(makeGap({i % 2 == 0 ? 0.5 : -2.0}));
	}
	EXPECT_THAT(GetNotes(Read(MakeTimeline(children)), Note::Kind::kGuess),
		testing::ElementsAre(testing::AllOf(HasSubstr("/tracks/children/0/children/3: "),
			HasSubstr("source_range"), HasSubstr("(30 items in the file)"))));
}

TEST(OtioReader, ColorsOfMarkersAreNamesOrCodes)
{
	struct Case
	{
		char const* mColor;
		char const* mRead;
	};
	for (Case const& test :
		{Case{R"("RED")", "RED"}, {R"({"OTIO_SCHEMA": "Color.1", "r": 1, "name": "Red"})", "Red"},
			{R"({"OTIO_SCHEMA": "Color.1", "r": 1.0, "g": 0.5, "b": 0, "a": 1, "name": ""})", "#ff8000"}})
	{
		SCOPED_TRACE(test.mColor);
		json timeline = Patch("/tracks/markers/0/color", test.mColor);
		timeline["tracks"]["markers"][0]["OTIO_SCHEMA"] = "Marker.3";
		Document const document = Read(timeline);
		EXPECT_EQ(document.mTimelines[0].mTracks.mMarkers.at(0).mColor, test.mRead);
		EXPECT_THAT(GetNotes(document, Note::Kind::kGuess), IsEmpty());
		EXPECT_THAT(
			GetNotes(document, Note::Kind::kRemark), testing::Not(testing::Contains(HasSubstr("/color"))));
	}
}

TEST(OtioReader, CollectionsAndBareCompositionsGiveTimelines)
{
	json const timeline = MakeFullTimeline();
	json const inner = {{"OTIO_SCHEMA", "SerializeableCollection.1"}, {"children", {timeline}}};
	json const outer = {{"OTIO_SCHEMA", "SerializableCollection.1"},
		{"children", {timeline, inner, timeline["tracks"]["children"][0]["children"][0]}}};
	Document const document = Read(outer);
	ASSERT_THAT(document.mTimelines, SizeIs(2));
	EXPECT_EQ(document.mTimelines[1].mPlace, "/children/1/children/0");
	EXPECT_THAT(GetNotes(document, Note::Kind::kIgnored),
		testing::ElementsAre("/children/2: is not a Timeline; only the timelines of a collection are read"));

	json track = timeline["tracks"]["children"][0];
	EXPECT_THAT(
		GetRefusal(track.dump()), HasSubstr(", /metadata/sonaro/output: there is no submix 'dialogue'"));
	track.erase("metadata");
	EXPECT_THAT(GetChild(Read(track), 0).mName, "one");
	EXPECT_THAT(GetRefusal(R"({"OTIO_SCHEMA": "SerializableCollection.1", "children": []})"),
		HasSubstr("'edit.otio': the collection contains no Timeline"));
}

TEST(OtioReader, CompositionsNestAsDeepAsPromisedAndNoDeeper)
{
	auto const nest = [](std::size_t inDepth)
	{
		std::string text = R"({"OTIO_SCHEMA": "Timeline.1", "tracks": )";
		for (std::size_t i = 0; i < inDepth; ++i)
		{
			text += i % 2 == 0 ? R"({"OTIO_SCHEMA": "Stack.1", "children": [)"
							   : R"({"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [)";
		}
		for (std::size_t i = 0; i < inDepth; ++i)
		{
			text += "]}";
		}
		return text + "}";
	};
	Document const document = ReadText(nest(kMaxCompositionDepth));
	Document const copy = document;
	EXPECT_THAT(copy.mTimelines[0].mTracks.mChildren, SizeIs(1));
	std::string const refusal = GetRefusal(nest(kMaxCompositionDepth + 1));
	EXPECT_THAT(refusal, testing::StartsWith("'edit.otio', /tracks/children/0/children/0"));
	EXPECT_THAT(refusal, HasSubstr("nested more than 256 levels deep; flatten the timeline"));
	EXPECT_LT(refusal.size(), 600U);
	EXPECT_THAT(GetRefusal(nest(10000)), HasSubstr("nested more than 1000 levels deep"));
}

TEST(OtioReader, ManyClipsKeepTheirPlacesAndNotesStayFew)
{
	constexpr std::size_t kClips = SN::Testing::GetNumTrials(100000);
	std::string const clip =
		json({{"OTIO_SCHEMA", "Clip.2"}, {"source_range", MakeRange(1, 2, 24)}, {"reel", 1}}).dump();
	std::string clips;
	for (std::size_t i = 0; i < kClips; ++i)
	{
		clips += (i == 0 ? "" : ",") + clip;
	}
	std::string text = MakeTimeline("X").dump();
	text.replace(text.find("\"X\""), 3, "[" + clips + "]");
	Document const document = ReadText(text);
	EXPECT_EQ(
		GetChild(document, kClips - 1).mPlace, "/tracks/children/0/children/" + std::to_string(kClips - 1));
	EXPECT_THAT(document.mNotes, SizeIs(21));
	EXPECT_THAT(document.mNotes.back().mText,
		HasSubstr("at " + std::to_string(kClips - 20) + " more places: unknown key"));
}

// Bytes that are changed, doubled, cut out, cut off or replaced by what readers stumble over.
std::string Mutate(std::string inText, std::mt19937& ioRandom)
{
	constexpr std::string_view kStumbles[] = {"NaN", "-Infinity", "1e308", "-1", "0", "null", "[[", "}}",
		"\"", "\\u0000", "\xc3", "{}", "[]", "18446744073709551616", "1e-320", "\"Stack.1\"",
		"\"Transition.1\""};
	auto const upTo = [&ioRandom](std::size_t inLimit) { return ioRandom() % inLimit; };
	for (std::size_t changes = 1 + upTo(4); changes > 0 && !inText.empty(); --changes)
	{
		std::size_t const at = upTo(inText.size());
		std::size_t const length = 1 + upTo(12);
		switch (upTo(6))
		{
		case 0:
			inText[at] = static_cast<char>(upTo(256));
			break;
		case 1:
			inText.insert(upTo(inText.size()), inText.substr(at, upTo(400)));
			break;
		case 2:
			inText.erase(at, length);
			break;
		case 3:
			inText.resize(upTo(8) == 0 ? at : inText.size());
			break;
		default:
			// Mostly in the place of a value, so that the text stays JSON.
			std::size_t const colon = inText.find(':', at);
			std::size_t const begin = colon == std::string::npos ? at : colon + 1;
			std::size_t const end = inText.find_first_of(",}]", begin);
			std::string_view const stumble = kStumbles[upTo(std::size(kStumbles))];
			inText.replace(begin, (end == std::string::npos ? inText.size() : end) - begin, stumble);
			break;
		}
	}
	return inText;
}

TEST(OtioReader, MutatedFilesAreReadOrRefusedInOneLine)
{
	constexpr unsigned kFiles = 2000;
	auto const corpus = MakeSeedCorpus();
	std::size_t refusals = 0;
	for (unsigned seed = 0; seed < kFiles; ++seed)
	{
		SCOPED_TRACE("seed " + std::to_string(seed));
		std::mt19937 random(seed);
		std::string const text = Mutate(corpus[seed % corpus.size()], random);
		std::string const refusal = GetRefusal(text);
		refusals += refusal.empty() ? 0 : 1;
		EXPECT_EQ(refusal.find('\n'), std::string::npos);
		EXPECT_TRUE(refusal.empty() || refusal.starts_with("'edit.otio'"));
	}
	// Both sides of the reader are reached.
	EXPECT_GT(refusals, kFiles / 10);
	EXPECT_LT(refusals, kFiles * 9 / 10);
}

} // namespace
} // namespace SonaroHost::Otio::ReaderTest
