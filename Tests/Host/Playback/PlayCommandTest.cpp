// Runs "sonaro play" as a shell does, on devices that every machine has.

#include "Host/ProgramRun.h"
#include "Host/TimelineJson.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <thread>

namespace SonaroHost::Testing::PlayCommandTest
{

using testing::HasSubstr;

class PlayCommandTest : public ProgramTest
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(1, 8000, 4000));
	}

	// Its events, by lines.
	static std::vector<Json> ReadEvents(ProgramResult const& inResult)
	{
		std::vector<Json> events;
		std::istringstream lines(inResult.mOutput);
		for (std::string line; std::getline(lines, line);)
		{
			events.push_back(Json::parse(line));
		}
		return events;
	}
};

TEST_F(PlayCommandTest, WhatADeviceGetsIsTheFileAndTheEventsSayHowItWent)
{
	ProgramResult const result =
		Run({"play", "tone.wav", "--device", "file:out.wav", "--json", "--ahead", "500"});
	EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
	std::vector<Json> const events = ReadEvents(result);
	ASSERT_GE(events.size(), 2u);
	EXPECT_EQ(events.front()["event"], "start");
	EXPECT_EQ(events.front()["samples"], 4000);
	EXPECT_EQ(events.back()["event"], "end");
	EXPECT_EQ(events.back()["sample"], 4000);
	// A busy machine may be late, and says so.
	if (events.back()["misses"] == 0)
	{
		Sound const tone = ReadSound(mFolder / "tone.wav");
		Sound const played = ReadSound(mFolder / "out.wav");
		EXPECT_NE(std::search(played.mSamples.begin(), played.mSamples.end(), tone.mSamples.begin(),
					  tone.mSamples.end()),
			played.mSamples.end());
	}
}

TEST_F(PlayCommandTest, TwoEarsHearWhatARenderWrites)
{
	WriteBytes(mFolder / "edit.otio", Timeline({Track("Tone", {Clip("clip", "tone.wav", 0.0, 0.3)})}).dump());
	for (char const* const input : {"tone.wav", "edit.otio"})
	{
		Words const ears{input, "--binaural", "--yaw", "70", "--roll", "-10"};
		ASSERT_EQ(Run(Join({"render", "-o", "ears.wav", "--quiet"}, ears)).mExitCode, 0);
		ProgramResult const result =
			Run(Join({"play", "--device", "file:out.wav", "--json", "--ahead", "500"}, ears));
		ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
		if (ReadEvents(result).back()["misses"] == 0)
		{
			Sound const rendered = ReadSound(mFolder / "ears.wav");
			Sound const played = ReadSound(mFolder / "out.wav");
			EXPECT_EQ(played.mChannels, 2u);
			EXPECT_NE(std::search(played.mSamples.begin(), played.mSamples.end(), rendered.mSamples.begin(),
						  rendered.mSamples.end()),
				played.mSamples.end())
				<< input;
		}
	}
}

TEST_F(PlayCommandTest, AChangeOfTheTimelineIsTakenOver)
{
	auto const write = [&](double inStart, char const* inName)
	{
		Json const timeline = Timeline({Track("Tone", {Clip("clip", inName, inStart, 0.3), Gap(4.0)})});
		WriteBytes(mFolder / "edit.otio", timeline.dump());
	};
	write(0.0, "tone.wav");
	auto const change = [&](int)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(1500));
		write(0.1, "gone.wav");
	};
	ProgramResult const result = Run({"play", "edit.otio", "--device", "null", "--json"}, change);
	auto const reload = [](Json const& inEvent)
	{ return inEvent["event"] == "reload" || inEvent["event"] == "reloadFailed"; };
	std::vector<Json> const events = ReadEvents(result);
	EXPECT_EQ(std::count_if(events.begin(), events.end(), reload), 1) << result.mOutput;
}

TEST_F(PlayCommandTest, RefusesWhatCannotBePlayed)
{
	WriteBytes(mFolder / "edit.otio", Timeline({Track("Tone", {Clip("clip", "tone.wav", 0.0, 0.3)})}).dump());
	ExpectRefusals({
		{2, {"play"}, {"INPUT is missing"}},
		{2, {"play", "tone.wav", "--device", "null", "--speed", "9"}, {"a speed of 9 is out of range"}},
		{2, {"play", "tone.wav", "--device", "null", "--ahead", "1"},
			{"--ahead: 1 ms is out of range; use 5 to 1000 ms"}},
		{2, {"play", "tone.wav", "--device", "null", "--ahead", "0.02"},
			{"--ahead: 0.02 ms is out of range"}},
		{2, {"play", "tone.wav", "--device", "null", "--loop", "3"}, {"is not a range"}},
		{2, {"play", "tone.wav", "--device", "null", "--loop", "0.2..0.1"}, {"has no length"}},
		{2, {"play", "tone.wav", "--device", "null", "--start", "later"}, {"'later' is not a time"}},
		{2, {"play", "edit.otio", "--device", "null", "--stream", "2"}, {"applies only to sound files"}},
		{2, {"play", "tone.wav", "--device", "null", "--no-watch"}, {"applies only to timelines"}},
		{1, {"play", "tone.wav", "--device", "no such device"}, {"no sound device"}},
		{1, {"play", "gone.wav", "--device", "null"}, {"gone.wav"}},
		{2, {"play", "tone.wav", "--device", "file:tone.wav"}, {"tone.wav"}},
		{2, {"play", "edit.otio", "--device", "file:edit.otio"}, {"edit.otio"}},
		{2, {"play", "edit.otio", "--device", "file:./tone.wav"}, {"tone.wav"}},
	});
	ProgramResult const list = Run({"play", "--list-devices", "--json"});
	EXPECT_EQ(list.mExitCode, 0);
	EXPECT_TRUE(Json::parse(list.mOutput).is_array());
}

} // namespace SonaroHost::Testing::PlayCommandTest
