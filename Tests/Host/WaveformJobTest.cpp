#include "SonaroHost/Render/WaveformJob.h"

#include "Host/Refusal.h"
#include "Media.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvcore/config/InitializerRegistrar.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>
#include <utility>

namespace SonaroHost::Testing::WaveformJobTest
{

using testing::ElementsAre;
using testing::HasSubstr;

// The values of the data formats by the plainest of walks.
std::vector<int> MakeValues(Sound const& inSound, std::int64_t inInterval, int inBits, bool inIsMerged)
{
	double const fullScale = std::pow(2.0, inBits - 1);
	auto const quantize = [&](float inSample)
	{
		double const scaled = std::round(static_cast<double>(inSample) * fullScale);
		return static_cast<int>(std::min(std::max(scaled, -fullScale), fullScale - 1.0));
	};
	std::vector<int> values;
	for (std::int64_t begin = 0; begin < inSound.GetFrames(); begin += inInterval)
	{
		Sound const column = inSound.Cut(begin, std::min(inInterval, inSound.GetFrames() - begin));
		for (unsigned channel = 0; channel < (inIsMerged ? 1u : static_cast<unsigned>(inSound.mChannels));
			 ++channel)
		{
			Sound const shown = inIsMerged ? column : column.Pick({channel});
			auto const [low, high] = std::minmax_element(shown.mSamples.begin(), shown.mSamples.end());
			values.push_back(quantize(*low));
			values.push_back(quantize(*high));
		}
	}
	return values;
}

class WaveformJobTest : public testing::Test
{
protected:
	WaveformRequest MakeRequest(WaveformFormat inFormat)
	{
		WaveformRequest request;
		request.mInput = mFolder / "in.wav";
		request.mOutput = mFolder / "out";
		request.mFormat = inFormat;
		return request;
	}

	WaveformSummary Run(WaveformRequest const& inRequest)
	{
		auto const summary = WaveformJob(inRequest).Run();
		EXPECT_TRUE(summary);
		return summary.value_or(WaveformSummary());
	}

	Sound WriteInput(int inChannels = 2, std::int64_t inFrames = 30001)
	{
		// Beyond full scale here and there.
		Sound sound = MakeSound(inChannels, 44100, inFrames);
		for (float& sample : sound.mSamples)
		{
			sample *= 1.5f;
		}
		WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
		return sound;
	}

	nlohmann::json ReadJson() { return nlohmann::json::parse(ReadBytes(mFolder / "out")); }

	TemporaryFolder mFolder;
};

TEST_F(WaveformJobTest, DataHoldsTheExtremesOfEachColumn)
{
	constexpr std::tuple<std::optional<std::int64_t>, std::optional<std::int64_t>, std::int64_t> kCases[] = {
		{{}, {}, 256}, {{}, 1, 1}, {{}, 1000, 1000}, {{}, 2147483647, 2147483647}, {1, {}, 6001},
		{7, {}, 858}, {4000, {}, 2}, {1000000, {}, 1}};
	Sound const sound = WriteInput(2, 6001);
	for (auto const& [width, samplesPerColumn, interval] : kCases)
	{
		for (int const bits : {8, 16})
		{
			for (bool const isMerged : {false, true})
			{
				SCOPED_TRACE(testing::Message() << interval << " samples, " << bits << " bits" << isMerged);
				WaveformRequest request = MakeRequest(WaveformFormat::kJson);
				request.mWidth = width;
				request.mSamplesPerColumn = samplesPerColumn;
				request.mBits = bits;
				request.mChannels = isMerged ? WaveformChannels::kMerged : WaveformChannels::kStacked;
				WaveformSummary const summary = Run(request);
				auto const json = ReadJson();
				auto const values = MakeValues(sound, interval, bits, isMerged);
				auto const columns = static_cast<std::int64_t>(values.size()) / (isMerged ? 2 : 4);
				EXPECT_EQ(json["version"], 2);
				EXPECT_EQ(json["channels"], isMerged ? 1 : 2);
				EXPECT_EQ(json["sample_rate"], 44100);
				EXPECT_EQ(json["samples_per_pixel"], interval);
				EXPECT_EQ(json["bits"], bits);
				EXPECT_EQ(json["length"], columns);
				EXPECT_TRUE(json["data"] == values);
				EXPECT_EQ(summary.mColumns, columns);
				EXPECT_EQ(summary.mChannels, isMerged ? 1u : 2u);
			}
		}
	}
}

TEST_F(WaveformJobTest, RangesAreCutExactly)
{
	Sound const sound = WriteInput();
	WaveformRequest request = MakeRequest(WaveformFormat::kJson);
	request.mStart = TimePosition::FromSamples(12345);
	request.mDuration = TimePosition::FromSamples(5001);
	request.mSamplesPerColumn = 100;
	EXPECT_EQ(Run(request).mFrames, 5001);
	EXPECT_TRUE(ReadJson()["data"] == MakeValues(sound.Cut(12345, 5001), 100, 16, false));
	request.mDuration.reset();
	EXPECT_EQ(Run(request).mFrames, 30001 - 12345);
}

TEST_F(WaveformJobTest, BinaryDataIsThatOfTheText)
{
	Sound const sound = WriteInput(3, 1000);
	for (int const bits : {8, 16})
	{
		WaveformRequest request = MakeRequest(WaveformFormat::kDat);
		request.mSamplesPerColumn = 300;
		request.mBits = bits;
		Run(request);
		std::string const bytes = ReadBytes(mFolder / "out");
		// Version, flags, rate, samples per column, columns and channels, lower bytes first.
		std::string head{"\2\0\0\0\0\0\0\0\x44\xac\0\0\x2c\1\0\0\4\0\0\0\3\0\0\0", 24};
		head[4] = bits == 8 ? 1 : 0;
		ASSERT_EQ(bytes.substr(0, 24), head);
		std::string expected;
		for (int const value : MakeValues(sound, 300, bits, false))
		{
			expected += static_cast<char>(value & 0xff);
			if (bits == 16)
			{
				expected += static_cast<char>(value >> 8 & 0xff);
			}
		}
		EXPECT_EQ(bytes.substr(24), expected);
	}
}

TEST_F(WaveformJobTest, MergedIsTheExtremesAndTheRmsOfAll)
{
	Waveform const merged =
		MergeChannels({48000, 10, {{-0.5f, 0.1f, 0.3f, 0, 0, 0}, {-0.2f, 0.7f, 0.4f, 1, 1, 1}}});
	EXPECT_EQ(merged.mSampleRate, 48000);
	EXPECT_EQ(merged.mSamplesPerColumn, 10);
	ASSERT_EQ(merged.mChannels.size(), 1u);
	EXPECT_THAT(
		merged.mChannels[0], testing::Pointwise(testing::FloatEq(),
								 std::vector<float>{-0.5f, 0.7f, std::sqrt(0.125f), 0, 1, std::sqrt(0.5f)}));
}

std::uint32_t ReadBigEndian(std::string const& inBytes, std::size_t inOffset)
{
	std::uint32_t value = 0;
	for (std::size_t i = 0; i < 4; ++i)
	{
		value = value << 8 | static_cast<unsigned char>(inBytes.at(inOffset + i));
	}
	return value;
}

TEST_F(WaveformJobTest, PicturesHaveTheSizeThatWasAskedFor)
{
	WriteInput(2, 1000);
	struct Case
	{
		std::optional<std::int64_t> mWidth;
		std::optional<std::int64_t> mSamplesPerColumn;
		unsigned mHeight;
		unsigned mExpectedWidth;
	};
	// More pixels than samples, too.
	constexpr Case kCases[] = {
		{{}, {}, 240, 1200}, {1, {}, 2, 1}, {333, {}, 77, 333}, {3000, {}, 100, 3000}, {{}, 3, 50, 334}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mExpectedWidth);
		WaveformRequest request = MakeRequest(WaveformFormat::kPng);
		request.mWidth = test.mWidth;
		request.mSamplesPerColumn = test.mSamplesPerColumn;
		request.mStyle.mHeight = test.mHeight;
		EXPECT_EQ(Run(request).mColumns, test.mExpectedWidth);
		std::string const png = ReadBytes(mFolder / "out");
		EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
		EXPECT_EQ(ReadBigEndian(png, 16), test.mExpectedWidth);
		EXPECT_EQ(ReadBigEndian(png, 20), test.mHeight);
		EXPECT_EQ(png.substr(png.size() - 8, 4), "IEND");

		request.mFormat = WaveformFormat::kSvg;
		Run(request);
		std::string const size = "width=\"" + std::to_string(test.mExpectedWidth) + "px\" height=\"" +
								 std::to_string(test.mHeight) + "px\"";
		std::string const svg = ReadBytes(mFolder / "out");
		EXPECT_THAT(svg, HasSubstr(size));
		EXPECT_THAT(svg, HasSubstr("</svg>"));
	}
}

TEST_F(WaveformJobTest, WhatCannotBeIsRefused)
{
	WriteInput(3, 30001);
	struct Case
	{
		char const* mReason;
		void (*mChange)(WaveformRequest&);
	};
	constexpr Case kCases[] = {
		{"use only one of them",
			[](WaveformRequest& ioRequest) { ioRequest.mWidth = ioRequest.mSamplesPerColumn = 1; }},
		{"must be at least 1", [](WaveformRequest& ioRequest) { ioRequest.mWidth = 0; }},
		{"must be at least 1", [](WaveformRequest& ioRequest) { ioRequest.mWidth = -5; }},
		{"must be at least 1", [](WaveformRequest& ioRequest) { ioRequest.mSamplesPerColumn = 0; }},
		{"at most 32767 pixels wide, not 32768",
			[](WaveformRequest& ioRequest) { ioRequest.mWidth = 32768; }},
		{"pixels wide", [](WaveformRequest& ioRequest) { ioRequest.mWidth = std::int64_t{1} << 62; }},
		{"3 to 32767 pixels high, not 2", [](WaveformRequest& ioRequest) { ioRequest.mStyle.mHeight = 2; }},
		{"pixels high, not 32768", [](WaveformRequest& ioRequest) { ioRequest.mStyle.mHeight = 32768; }},
		{"below 0", [](WaveformRequest& ioRequest) { ioRequest.mStyle.mFloorDecibels = 0.0; }},
		{"below 0", [](WaveformRequest& ioRequest) { ioRequest.mStyle.mFloorDecibels = std::nan(""); }},
		{"values of 12 bits are not supported; use 8 or 16",
			[](WaveformRequest& ioRequest) { ioRequest.mBits = 12; }},
		{"at most 2147483647 samples",
			[](WaveformRequest& ioRequest)
			{
				ioRequest.mFormat = WaveformFormat::kDat;
				ioRequest.mSamplesPerColumn = 2147483648;
			}},
		{"is past its end",
			[](WaveformRequest& ioRequest) { ioRequest.mStart = TimePosition::FromSamples(30001); }},
		{"is the input itself", [](WaveformRequest& ioRequest) { ioRequest.mOutput = ioRequest.mInput; }},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mReason);
		WaveformRequest request = MakeRequest(WaveformFormat::kPng);
		test.mChange(request);
		EXPECT_THAT(
			GetRefusalOf([&] { WaveformJob{request}; }, HostError::Kind::kRequest), HasSubstr(test.mReason));
	}
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav"));
}

TEST_F(WaveformJobTest, AStoppedOrFailedJobLeavesWhatWasThere)
{
	WriteInput();
	WriteBytes(mFolder / "out", "old");
	WaveformRequest request = MakeRequest(WaveformFormat::kPng);
	std::stop_source stop;
	auto const interrupt = [&](RenderProgress const& inProgress)
	{
		EXPECT_EQ(inProgress.mFramesTotal, 30001);
		stop.request_stop();
	};
	EXPECT_FALSE(WaveformJob(request).Run(interrupt, stop.get_token()));
	auto const fail = [](RenderProgress const&) { throw HostError(HostError::Kind::kOutput, "enough"); };
	EXPECT_THROW(WaveformJob(request).Run(fail), HostError);

	WriteSound(mFolder / "in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, MakeSound(1, 44100, 100000));
	std::string bytes = ReadBytes(mFolder / "in.flac");
	bytes.replace(bytes.size() / 2, 40000, std::string(40000, '\x55'));
	WriteBytes(mFolder / "in.flac", bytes);
	request.mInput = mFolder / "in.flac";
	EXPECT_THROW(WaveformJob(request).Run(), HostError);
	EXPECT_THAT(mFolder.List(), ElementsAre("in.flac", "in.wav", "out"));
	EXPECT_EQ(ReadBytes(mFolder / "out"), "old");
}

TEST_F(WaveformJobTest, RunsOnTheWaveformThreadWhateverWasClearedBefore)
{
	WriteInput();
	SN::AudioWaveformQueue::Clear();
	Run(MakeRequest(WaveformFormat::kJson));
	zorvcore::config::StopRegisteredModules();
	zorvcore::config::StartRegisteredModules();
	Run(MakeRequest(WaveformFormat::kJson));

	// Held back with the queue; let go on the first news of it.
	SN::AudioWaveformQueue::GetQueue();
	SN::AudioWaveformQueue::Pause(true);
	std::vector<std::int64_t> news;
	auto const release = [&](RenderProgress const& inProgress)
	{
		news.push_back(inProgress.mFramesDone);
		SN::AudioWaveformQueue::Pause(false);
	};
	EXPECT_TRUE(WaveformJob(MakeRequest(WaveformFormat::kJson)).Run(release));
	ASSERT_GE(news.size(), 2u);
	EXPECT_EQ(news.front(), 0);
}

TEST(WaveformStyle, AmplitudesAreScaledToTheHeight)
{
	WaveformStyle linear;
	WaveformStyle decibels;
	decibels.mScale = AmplitudeScale::kDecibels;
	decibels.mFloorDecibels = -40.0;
	constexpr double kInfinity = std::numeric_limits<double>::infinity();
	struct Case
	{
		double mSample;
		double mLinear;
		double mDecibels;
	};
	constexpr Case kCases[] = {{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {-1.0, -1.0, -1.0}, {0.1, 0.1, 0.5},
		{-0.1, -0.1, -0.5}, {0.01, 0.01, 0.0}, {-0.0001, -0.0001, 0.0}, {3.0, 1.0, 1.0},
		{-kInfinity, -1.0, -1.0}, {std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mSample);
		EXPECT_DOUBLE_EQ(ScaleAmplitude(test.mSample, linear), test.mLinear);
		EXPECT_NEAR(ScaleAmplitude(test.mSample, decibels), test.mDecibels, 1e-12);
	}
}

TEST(WaveformStyle, ColoursAreReadAsTheyAreWritten)
{
	constexpr std::pair<char const*, std::optional<Colour>> kCases[] = {
		{"#12aBf0", Colour{0x12, 0xab, 0xf0, 255}}, {"#01020304", Colour{1, 2, 3, 4}},
		{"none", Colour{0, 0, 0, 0}}, {"", {}}, {"#", {}}, {"#12345", {}}, {"#1234567", {}}, {"1234567", {}},
		{"#12345g", {}}, {"#-1-1-1", {}}, {"# 1 1 1", {}}, {"#+1+1+1", {}}, {"white", {}}};
	for (auto const& [text, expected] : kCases)
	{
		EXPECT_EQ(Colour::Parse(text), expected) << text;
	}
}

} // namespace SonaroHost::Testing::WaveformJobTest
