// Effects whose latency changes, or that stop working, while a mix is served.

#include "EffectFolders.h"
#include "Host/Media.h"
#include "Host/TimelineJson.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "SonaroHost/Serve/ServedTimeline.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace SonaroHost::Testing::EffectServeTest
{

using namespace Serve;
using testing::HasSubstr;

constexpr int kRate = 48000;
constexpr std::int64_t kPiece = 40000;

MixFile::Clock::time_point Soon()
{
	return MixFile::Clock::now() + std::chrono::seconds(60);
}

class EffectServeTest : public testing::Test
{
protected:
	static void SetUpTestSuite() { FindTestPlugins(); }

	// Of two tracks, the second one of which has the effect.
	void WriteTimeline(Json const& inEffect, float inSample) const
	{
		Sound sound = MakeSound(1, kRate, kRate);
		for (float& sample : sound.mSamples)
		{
			sample *= 0.5f;
		}
		WriteSound(mFolder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
		sound.mSamples[kRate / 2] = inSample;
		WriteSound(mFolder / "b.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
		Json clip = Clip("B", "b.wav", 0.0, 1.0);
		clip["effects"].push_back(WithSettings({{"OTIO_SCHEMA", "Effect.1"}}, {{"lv2", inEffect}}));
		Json const plain = Clip("A", "a.wav", 0.0, 1.0);
		WriteBytes(mFolder / "edit.otio", Timeline({Track("One", {plain}), Track("Two", {clip})}).dump());
	}

	ServeRequest MakeRequest() const
	{
		ServeRequest request;
		request.mInput = mFolder / "edit.otio";
		return request;
	}

	static std::string Read(MixFile const& inFile, std::int64_t inFirst, std::int64_t inEnd)
	{
		std::string bytes;
		for (std::int64_t at = inFirst; at < inEnd; at = inFirst + static_cast<std::int64_t>(bytes.size()))
		{
			bytes += inFile.Read(at, std::min(kPiece, inEnd - at), Soon());
		}
		return bytes;
	}

	TemporaryFolder mFolder;
};

TEST_F(EffectServeTest, ALatencyThatGrowsLeavesTheBytesOfTheRender)
{
	Json const moving = {
		{"keyframes", List({{{"time", 0.2}, {"value", 5}}, {{"time", 0.5}, {"value", 3000}},
						  {{"time", 0.6}, {"value", 30}}, {{"time", 0.9}, {"value", 4000}}})}};
	WriteTimeline({{"uri", "urn:sonaro-test:delay"}, {"controls", {{"frames", moving}}}}, 0.25f);
	ServedTimeline timeline(MakeRequest());
	auto const file = timeline.OpenWave({}, Soon());
	std::string const served = Read(*file, 0, file->GetLength());
	Otio::TimelineRenderRequest render;
	render.mInput = mFolder / "edit.otio";
	render.mOutput = mFolder / "mix.wav";
	ASSERT_TRUE(Otio::TimelineRenderJob(render).Run());
	EXPECT_TRUE(served == ReadBytes(mFolder / "mix.wav"));
	EXPECT_EQ(timeline.GetProblem(), "");
}

// What is before and after it is served, and so are other tracks.
TEST_F(EffectServeTest, AFaultIsKnownFromThenOn)
{
	WriteTimeline({{"uri", "urn:sonaro-test:fault"}}, -1.0f);
	ServeRequest request = MakeRequest();
	request.mWarmUpSeconds = 0.1;
	ServedTimeline timeline(request);
	auto const file = timeline.OpenWave({}, Soon());
	std::int64_t const length = file->GetLength();
	EXPECT_NO_THROW(file->CheckRange(0, length));
	std::string const text =
		"/tracks/children/1/children/0: the effect 'Test Fault' on 'B' on 'Two' gave samples";
	for (int trial = 0; trial < 2; ++trial)
	{
		try
		{
			Read(*file, 0, length);
			ADD_FAILURE() << "it is served";
		}
		catch (HostError const& error)
		{
			EXPECT_THAT(error.what(), HasSubstr(text));
		}
	}
	EXPECT_THAT(timeline.GetProblem(), HasSubstr(text));
	EXPECT_THROW(file->CheckRange(length / 4, length), HostError);
	EXPECT_NO_THROW(file->CheckRange(0, length / 4));
	EXPECT_NO_THROW(Read(*file, 0, length / 4));
	EXPECT_NO_THROW(file->CheckRange(length * 3 / 4, length));
	EXPECT_NO_THROW(Read(*file, length * 3 / 4, length));
	EXPECT_THROW(timeline.OpenFlac({}, {0, kRate}), HostError);
	auto const other = timeline.OpenWave({{2}, {}}, Soon());
	EXPECT_NO_THROW(Read(*other, 0, other->GetLength()));
}

} // namespace SonaroHost::Testing::EffectServeTest
