#include "Samples.h"

#include "SonaroHost/Otio/Reader.h"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>

namespace SonaroHost::Otio
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
	std::string text = inCurve->mScale == AutomationScale::eDecibels ? "dB" : "linear";
	text += inCurve->mTimeUnit == Curve::TimeUnit::eFractionOfLength ? " of length" : "";
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

TEST(OtioLevels, OfOtherProgramsAreReadWhereTheyAreClear)
{
	struct Case
	{
		char const* mMetadata;
		char const* mGain;
		char const* mPan;
		bool mIsGuess;
		bool mIsIgnored;
	};
	Case const cases[] = {
		// metadata of an effect                                             gain, pan, guess, something ignored
		{R"({"gain_db": -6})", "dB -6.0", "none", false, false},
		{R"({"x": {"Gain dB": "4.5"}})", "dB 4.5", "none", false, false},
		{R"({"x": {"parameters": {"volume": -3}}})", "dB -3.0", "none", true, false},
		{R"({"x": {"parameters": {"volume": 0.5}}})", "linear 0.5", "none", true, false},
		{R"({"x": {"parameters": {"volume": 0}}})", "none", "none", true, true},
		{R"({"x": {"parameters": {"volume": 80}}})", "none", "none", true, true},
		{R"({"x": {"parameters": {"volume": {"value": 0, "unit": "dB"}}}})", "dB 0.0", "none", false, false},
		{R"({"x": {"parameter": [{"name": "Level", "value": "1"}, {"name": "Pan", "value": "-1"}]}})",
			"linear 1.0", "linear -1.0", true, false},
		{R"({"x": {"parameter": {"parameterid": "pan", "value": "3/4"}}})", "none", "linear 0.5", false,
			false},
		{R"({"pan": 0.5})", "none", "none", true, true},
		{R"({"pan": "9/4"})", "none", "none", false, true},
		{R"({"gain_db": {"keyframes": [{"when": 30, "value": -3}, {"when": "15", "value": 0}]}})",
			"dB 15.0/30.0:0.0 30.0/30.0:-3.0", "none", true, false},
		{R"({"gain_db": [{"time": 1.5, "value": -3}]})", "dB 1.5/1.0:-3.0", "none", true, false},
		{R"({"gain_db": [{"time": 1, "value": -3}, {"Time": "1/2", "value": -3}]})", "none", "none", true,
			true},
		{R"({"gain_db": {"keyframes": [{"time": "00:01", "value": -3}]}})", "none", "none", false, true},
		{R"({"gain_db": "0=1;5=2"})", "none", "none", false, true},
		{R"({"gain_db": -1, "x": {"level": -2}})", "dB -1.0", "none", false, true},
		{R"({"x": {"y": {"gain_db": 3}}, "regain": 4})", "none", "none", false, true},
		{R"({"gain_db": {"value": 1e999999}})", "unread", "", false, false},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mMetadata);
		std::string text = MakeTimeline(
			json::array({{{"OTIO_SCHEMA", "Gap.1"}, {"source_range", MakeRange(0, 90, 30)},
				{"effects", {{{"OTIO_SCHEMA", "Effect.1"}, {"name", "fx"}, {"metadata", "M"}}}}}}))
							   .dump();
		text.replace(text.find("\"M\""), 3, test.mMetadata);
		if (test.mGain == std::string("unread"))
		{
			EXPECT_ANY_THROW(ReadDocument(text, "edit.otio"));
			continue;
		}
		Document const document = ReadDocument(text, "edit.otio");
		auto const* const track = document.mTimelines[0].mTracks.mChildren[0].As<Track>();
		ForeignLevels const& levels = track->mChildren[0].AsItem()->mEffects[0].mLevels;
		EXPECT_EQ(Describe(levels.mGain), test.mGain);
		EXPECT_EQ(Describe(levels.mPan), test.mPan);
		auto const has = [&document](Note::Kind inKind)
		{
			return std::any_of(document.mNotes.begin(), document.mNotes.end(),
				[inKind](Note const& inNote) { return inNote.mKind == inKind; });
		};
		EXPECT_EQ(has(Note::Kind::eGuess), test.mIsGuess);
		EXPECT_EQ(has(Note::Kind::eIgnored) || has(Note::Kind::eLevelNotRead), test.mIsIgnored);
	}
}

TEST(OtioLevels, ControlPointsOfAnItemAreFractionsOfItsLength)
{
	json gap = {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", MakeRange(0, 90, 30)}};
	gap["metadata"] = json::parse(R"({"x": {"Pan": {"ControlPoints": [
		{"Time": "89/90", "Value": "1/1"}, {"Time": "0/90", "Value": "1/2"}, {"Time": "3/9", "Value": "0/1"}]}}})");
	Document const document = ReadDocument(MakeTimeline(json::array({gap})).dump(), "edit.otio");
	auto const* const track = document.mTimelines[0].mTracks.mChildren[0].As<Track>();
	EXPECT_EQ(Describe(track->mChildren[0].AsItem()->GetSettings().mForeign.mPan),
		"linear of length 0.0/90.0:0.0 3.0/9.0:-1.0 89.0/90.0:1.0");
	EXPECT_TRUE(document.mNotes.empty());
}

} // namespace
} // namespace SonaroHost::Otio
