#include "../ProgramRun.h"
#include "../TimelineJson.h"
#include "Support/Trials.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <iterator>
#include <span>

namespace SonaroHost::Testing::BinauralCommandTest
{

using SN::Testing::GetNumTrials;
using testing::HasSubstr;
using Json = nlohmann::json;

class BinauralCommandTest : public ProgramTest
{
};

TEST_F(BinauralCommandTest, RendersAndMeasuresWhatTheEarsHear)
{
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(6, 48000, 48000));
	ASSERT_EQ(Run({"render", "in.wav", "-o", "front.wav", "--binaural"}).mExitCode, 0);
	ProgramResult const turned = Run({"render", "in.wav", "-o", "turned.wav", "--binaural", "--yaw", "180",
		"--head-pitch", "-10", "--roll", "5", "--json"});
	EXPECT_EQ(turned.mErrors, "");
	Json const summary = Json::parse(turned.mOutput);
	EXPECT_EQ(summary["layout"], "stereo");
	EXPECT_EQ(summary["binaural"], Json({{"layout", "5.1"}, {"listener", nullptr}, {"yaw", 180.0},
									   {"headPitch", -10.0}, {"roll", 5.0}}));
	EXPECT_FALSE(SameBits(ReadSound(mFolder / "front.wav"), ReadSound(mFolder / "turned.wav")));
	Json const measured = Json::parse(Run(
		{"loudness", "in.wav", "--json", "--binaural", "--yaw", "180", "--head-pitch", "-10", "--roll", "5"})
										  .mOutput);
	EXPECT_EQ(measured["inputs"][0]["integratedLufs"], summary["integratedLufs"]);
}

TEST_F(BinauralCommandTest, RefusesWhatMakesNoSense)
{
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(3, 48000, 4800));
	WriteSound(mFolder / "fine.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, 48000, 48000));
	WriteBytes(mFolder / "no.sofa", "no ears");
	auto const render = [](Words const& inOptions) {
		return Join({"render", "in.wav", "-o", "out.wav"}, inOptions);
	};
	ExpectRefusals({
		{2, render({"--yaw", "10"}), {"--yaw applies only to --binaural"}},
		{2, render({"--binaural", "--roll", "1000"}), {"--roll: 1000 is out of range; use -360 to 360"}},
		{2, render({"--binaural"}), {"'in.wav': sound of 3 channels cannot be rendered for two ears"}},
		{2, {"render", "fine.wav", "in.wav", "-o", "out.wav", "--binaural"},
			{"'in.wav': sound of 3 channels"}},
		{1, {"loudness", "fine.wav", "in.wav", "--binaural", "--quiet"}, {"'in.wav': sound of 3 channels"}},
		{2, render({"--binaural", "--yaw", ""}), {"--yaw: the value is empty; give one"}},
		{2, render({"--binaural", "--listener="}), {"--listener"}},
		{2, render({"--denoise", "--learn", ""}), {"--learn: the value is empty"}},
		{2, {"play", "in.wav", "--device", ""}, {"--device: the value is empty"}},
		{2, {"--features", "render", "in.wav", "-o", "out.wav"}, {"--features: stands by itself"}},
		{2, {"--features", "all"}, {"unknown command 'all'"}},
		{1, render({"--binaural", "--listener", "no.sofa"}), {"'no.sofa'", "SOFA"}},
		{2, {"--json"}, {"--features"}},
	});
}

#ifdef SONARO_WITH_SOFA
TEST_F(BinauralCommandTest, NoOutputReplacesTheListener)
{
	std::filesystem::path const kemar = "/usr/share/libmysofa/MIT_KEMAR_normal_pinna.sofa";
	if (!std::filesystem::exists(kemar))
	{
		GTEST_SKIP() << kemar << " is not there";
	}
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, 48000, 4800));
	WriteBytes(mFolder / "edit.otio", Timeline({Track("A1", {Clip("one", "in.wav", 0.0, 0.1)})}).dump());
	std::filesystem::copy_file(kemar, mFolder / "me.sofa");
	std::filesystem::create_symlink("me.sofa", mFolder / "ears.svg");
	Words const commands[] = {
		{"render", "in.wav", "-o", "me.sofa", "--format", "wav"},
		{"loudness", "in.wav", "-o", "ears.svg"},
		{"render", "in.wav", "-o", "out.wav", "--report", "me.sofa"},
		{"render", "edit.otio", "-o", "me.sofa", "--format", "wav"},
		{"graph", "edit.otio", "-o", "ears.svg"},
	};
	// Each reads all measurements first, which takes sanitizers long.
	for (Words const& words : std::span(commands).first(GetNumTrials(std::size(commands))))
	{
		ExpectRefusals({{2, Join(words, {"--binaural", "--listener", "me.sofa"}), {"input"}}});
	}
	EXPECT_EQ(ReadBytes(mFolder / "me.sofa"), ReadBytes(kemar));
}
#endif

TEST_F(BinauralCommandTest, ListsWhatTheBuildCanDo)
{
	ProgramResult const people = Run({"--features"});
	EXPECT_EQ(people.mExitCode, 0);
	EXPECT_THAT(people.mOutput, HasSubstr("writes: WAV, AIFF, FLAC, CAF; 16-bit"));
	Json const first = Json::parse(Run({"--features", "--json"}).mOutput);
	EXPECT_EQ(Json::parse(Run({"--json", "--features"}).mOutput), first);
#ifdef SONARO_WITH_SOFA
	EXPECT_TRUE(first["parts"]["sofa"]["available"]);
#else
	EXPECT_FALSE(first["parts"]["sofa"]["available"]);
#endif
	EXPECT_FALSE(first["libraries"]["libsndfile"].get<std::string>().empty());
}

} // namespace SonaroHost::Testing::BinauralCommandTest
