#include "SonaroHost/Waveform/PeakWaveformGenerator.h"

#include "Media.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "Sonaro/AudioWaveformRequest.h"
#include "Sonaro/SonaroFactory.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Engine/TimeTransforms.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Waveform/PeakColumn.h"
#include "Support/Fakes.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/Gate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <thread>

namespace SonaroHost::Testing::PeakWaveformGeneratorTest
{

using SN::TickTime;
using SN::Testing::FakeGenerator;
using SN::Testing::k48000Hz;

constexpr long long kFrames = 10000;
constexpr unsigned kBlock = 700;

// Noise that does not repeat, the same wherever it is asked for; channel 1 is an offset one.
float GetNoise(unsigned long long inChannel, long long inFrame)
{
	std::uint32_t word = static_cast<std::uint32_t>(inFrame) * 2654435761u + 12345u;
	word = (word ^ (word >> 15)) * 2246822519u;
	float const noise = static_cast<float>(word >> 8) / 8388608.0f - 1.0f;
	return inChannel == 0 ? noise : 0.25f + 0.5f * noise;
}

struct Column
{
	float mMinimum = 0.0f;
	float mMaximum = 0.0f;
	double mRms = 0.0;
};

// A column of the plainest kind, of the frames in the order in which time passes over them.
Column MakeColumn(unsigned inChannel, std::vector<long long> const& inFrames)
{
	Column column{std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(), 0.0};
	for (long long const frame : inFrames)
	{
		float const sample = frame >= 0 && frame < kFrames ? GetNoise(inChannel, frame) : 0.0f;
		column.mMinimum = std::min(column.mMinimum, sample);
		column.mMaximum = std::max(column.mMaximum, sample);
		column.mRms += static_cast<double>(sample) * static_cast<double>(sample);
	}
	column.mRms = std::sqrt(column.mRms / static_cast<double>(inFrames.size()));
	return column;
}

TickTime At(long long inFrame)
{
	return {inFrame, k48000Hz};
}

class PeakWaveform : public testing::Test
{
protected:
	int Generate(long long inFirst, long long inEnd, unsigned long long inInterval,
		SN::InterfaceRef<VX::ITimeTransform> const& inTransform = {},
		std::shared_ptr<zorvcore::threads::Gate> inGate = {})
	{
		return mGenerator->GenerateWaveform(
			At(inFirst), At(inEnd), inTransform, inInterval, mBuffer, false, inGate, false);
	}

	// Column by column, in which frame order a naive walk passes, by frame of the transform's time line.
	template <class GetFrame>
	void ExpectColumns(long long inFirst, long long inEnd, long long inInterval, GetFrame&& inGetFrame)
	{
		auto const columns = static_cast<std::size_t>((inEnd - inFirst + inInterval - 1) / inInterval);
		EXPECT_TRUE(mBuffer->IsComplete());
		EXPECT_EQ(mBuffer->GetSampleCount(), columns);
		ASSERT_EQ(mBuffer->GetNumChannels(), 2u);
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			std::vector<float> const& values = mBuffer->GetChannels()[channel];
			ASSERT_EQ(values.size(), 3 * columns);
			for (std::size_t i = 0; i < columns; ++i)
			{
				std::vector<long long> frames;
				long long const begin = inFirst + static_cast<long long>(i) * inInterval;
				for (long long frame = begin; frame < std::min(inEnd, begin + inInterval); ++frame)
				{
					frames.push_back(inGetFrame(frame));
				}
				Column const expected = MakeColumn(channel, frames);
				ASSERT_EQ(values[3 * i], expected.mMinimum) << "column " << i << " of channel " << channel;
				ASSERT_EQ(values[3 * i + 1], expected.mMaximum)
					<< "column " << i << " of channel " << channel;
				ASSERT_NEAR(
					static_cast<double>(values[3 * i + 2]), expected.mRms, 1e-5 * expected.mRms + 1e-9);
			}
		}
	}

	SN::InterfaceRef<FakeGenerator> mGraph = zorvcore::classref::MakeObject<FakeGenerator>(2u, GetNoise);
	SN::InterfaceRef<PeakWaveformGenerator> mGenerator =
		zorvcore::classref::MakeObject<PeakWaveformGenerator>(mGraph, At(0), At(kFrames), kBlock);
	SN::InterfaceRef<SN::IAudioWaveformBuffer> mBuffer = SN::AudioWaveformQueue::CreateAudioWaveformBuffer();
};

TEST_F(PeakWaveform, ColumnsAreThoseOfAPlainWalk)
{
	struct Case
	{
		long long mFirst;
		long long mEnd;
		long long mInterval;
	};
	// Within blocks, across their edges, partial last columns, beyond both ends, and nothing.
	constexpr Case kCases[] = {{0, kFrames, 1}, {0, kFrames, 7}, {0, kFrames, kBlock}, {0, kFrames, 1000},
		{0, kFrames, kFrames}, {0, kFrames, 1000000}, {123, 9876, 64}, {699, 701, 1}, {-500, 400, 300},
		{kFrames - 50, kFrames + 1000, 200}, {-1000, -500, 100}, {50, 50, 10}, {60, 50, 10}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(testing::Message() << test.mFirst << " to " << test.mEnd << " by " << test.mInterval);
		mBuffer = SN::AudioWaveformQueue::CreateAudioWaveformBuffer();
		EXPECT_EQ(
			Generate(test.mFirst, test.mEnd, static_cast<unsigned long long>(test.mInterval)), SN::kSuccess);
		ExpectColumns(test.mFirst, std::max(test.mFirst, test.mEnd), test.mInterval,
			[](long long inFrame) { return inFrame; });
	}
}

TEST_F(PeakWaveform, NothingOutsideOfTheRangeIsPulledNorAnythingTwice)
{
	Generate(1000, 3000, 10);
	std::vector<long long> pulled;
	for (SN::Testing::Call const& call : mGraph->mCalls)
	{
		if (call.mName == "GetAudioData")
		{
			long long const first = call.mTime.ToFrame64(k48000Hz);
			EXPECT_GE(first, 0);
			EXPECT_LE(first + call.mAmount, kFrames);
			EXPECT_TRUE(pulled.empty() || first >= pulled.back()) << "again at " << first;
			pulled.push_back(first + call.mAmount);
		}
	}
	ASSERT_FALSE(pulled.empty());
	EXPECT_LT(pulled.back(), 3000 + kBlock);
	EXPECT_EQ(std::count_if(mGraph->mCalls.begin(), mGraph->mCalls.end(),
				  [](SN::Testing::Call const& inCall) { return inCall.mName == "Preroll"; }),
		1);
}

// Speeds at which whole frames meet whole frames: one naive walk tells them all.
TEST_F(PeakWaveform, TransformsShowWhatTheirTimePassesOver)
{
	auto const make = [](double inSpeed, long long inOffset)
	{
		return SN::InterfaceRef<VX::ITimeTransform>(
			zorvcore::classref::MakeObject<SpeedTimeTransform>(inSpeed, At(inOffset)));
	};
	for (long long const interval : {1, 64, 100, 1000})
	{
		SCOPED_TRACE(interval);
		auto const columns = static_cast<unsigned long long>(interval);
		ASSERT_EQ(Generate(-100, 3000, columns, zorvcore::classref::MakeObject<IdentityTimeTransform>()),
			SN::kSuccess);
		ExpectColumns(-100, 3000, interval, [](long long inFrame) { return inFrame; });
		ASSERT_EQ(Generate(0, 3000, columns, make(-1.0, 2500)), SN::kSuccess);
		ExpectColumns(0, 3000, interval, [](long long inFrame) { return 2500 - inFrame; });
		ASSERT_EQ(Generate(0, 500, columns, make(0.0, 4321)), SN::kSuccess);
		ExpectColumns(0, 500, interval, [](long long) { return 4321; });
		ASSERT_EQ(Generate(0, 500, columns, make(1.0, kFrames)), SN::kSuccess);
		ExpectColumns(0, 500, interval, [](long long) { return kFrames; });
	}
	// Five times as fast: all five frames of each, and not one of them.
	ASSERT_EQ(Generate(0, 1000, 100, make(5.0, 0)), SN::kSuccess);
	for (std::size_t i = 0; i < 10; ++i)
	{
		std::vector<long long> frames(500);
		std::iota(frames.begin(), frames.end(), static_cast<long long>(i) * 500);
		Column const expected = MakeColumn(0, frames);
		EXPECT_EQ(mBuffer->GetChannels()[0][3 * i], expected.mMinimum);
		EXPECT_EQ(mBuffer->GetChannels()[0][3 * i + 1], expected.mMaximum);
		EXPECT_NEAR(static_cast<double>(mBuffer->GetChannels()[0][3 * i + 2]), expected.mRms, 1e-5);
	}
}

// Half of the column's time stands on one frame, half passes over 6400 others: each counts by its time.
TEST_F(PeakWaveform, TimeAndNotSamplesWeighTheRms)
{
	SN::InterfaceRef<VX::ITimeTransform> const keys = zorvcore::classref::MakeObject<KeyframedTimeTransform>(
		std::vector<TimeKey>{{At(0), At(0)}, {At(64), At(0)}, {At(128), At(6400)}});
	ASSERT_EQ(Generate(0, 128, 128, keys), SN::kSuccess);
	std::vector<long long> frames(6400);
	std::iota(frames.begin(), frames.end(), 0);
	double const standing = static_cast<double>(GetNoise(0, 0));
	double const moving = MakeColumn(0, frames).mRms;
	EXPECT_NEAR(static_cast<double>(mBuffer->GetChannels()[0][2]),
		std::sqrt((standing * standing + moving * moving) / 2.0), 1e-5);
}

TEST_F(PeakWaveform, StrangeSamplesAreToldAsTheyAre)
{
	constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
	constexpr float kInfinity = std::numeric_limits<float>::infinity();
	struct Case
	{
		char const* mName;
		std::vector<float> mSamples;
		float mMinimum;
		float mMaximum;
		float mRms;
	};
	std::vector<float> run(40, 0.5f);
	std::vector<float> withNaN = run;
	withNaN[3] = kNaN;
	withNaN[37] = kNaN;
	std::vector<float> withInfinity = run;
	withInfinity[5] = -kInfinity;
	Case const cases[] = {
		{"none", {}, 0.0f, 0.0f, 0.0f},
		{"one", {-0.25f}, -0.25f, -0.25f, 0.25f},
		{"the same throughout", run, 0.5f, 0.5f, 0.5f},
		{"some no numbers", withNaN, 0.5f, 0.5f, 0.5f * std::sqrt(38.0f / 40.0f)},
		{"no number at all", {kNaN, kNaN}, 0.0f, 0.0f, 0.0f},
		{"infinite", withInfinity, -kInfinity, 0.5f, kInfinity},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		PeakColumn column;
		column.Add(test.mSamples.data(), static_cast<unsigned>(test.mSamples.size()));
		EXPECT_EQ(column.GetMinimum(), test.mMinimum);
		EXPECT_EQ(column.GetMaximum(), test.mMaximum);
		EXPECT_FLOAT_EQ(column.GetRms(), test.mRms);
	}
}

TEST_F(PeakWaveform, FlaggedSilenceIsZerosWhateverTheSamplesHold)
{
	// A stream is flagged silent beyond the end of its file, and pulled there when its bounds say so.
	TemporaryFolder const folder;
	WriteSound(folder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {1, 48000, std::vector<float>(1000, 0.5f)});
	auto const source = AudioFileSource::Open(folder / "a.wav");
	RenderContextScope const context(100, At(4000), source->GetName());
	SN::InterfaceRef<SN::IAudioGenerator> stream;
	ASSERT_EQ(SN::SonaroFactory::CreateClassRef()->CreateAudioStreamRenderer(
				  context.Get(), k48000Hz, source, -1, 1.0, nullptr, &stream),
		SN::kSuccess);
	mGenerator = zorvcore::classref::MakeObject<PeakWaveformGenerator>(stream, At(0), At(4000), 100u);
	ASSERT_EQ(Generate(900, 1200, 100), SN::kSuccess);
	EXPECT_EQ(mBuffer->GetChannels()[0], (std::vector<float>{0.5f, 0.5f, 0.5f, 0, 0, 0, 0, 0, 0}));
}

TEST_F(PeakWaveform, WhatIsNotWantedIsGivenUp)
{
	using SN::AudioWaveformQueue::Clear;
	using SN::AudioWaveformQueue::GetQueue;
	EXPECT_EQ(mGenerator->GenerateWaveform(At(0), At(10), 1, {}, false, false), SN::eNullPointer);
	EXPECT_EQ(Generate(0, kFrames, 0), SN::eInvalidArgument);
	EXPECT_EQ(Generate(0, 3000000000, 1), SN::eInvalidArgument);
	EXPECT_FALSE(mBuffer->IsComplete());

	Clear();
	EXPECT_EQ(Generate(0, kFrames, 10), zorvcore::eWaitFailed);
	GetQueue();
	EXPECT_FALSE(mBuffer->IsComplete());
	EXPECT_EQ(mBuffer->GetSampleCount(), 0u);

	// In the middle: by the time it is heard, one more block may have been pulled.
	long long pulled = 0;
	auto const graph = zorvcore::classref::MakeObject<FakeGenerator>(2u,
		[&](unsigned long long inChannel, long long inFrame)
		{
			pulled = std::max(pulled, inFrame);
			if (inFrame == 3 * kBlock)
			{
				mBuffer->Cancel();
			}
			return GetNoise(inChannel, inFrame);
		});
	mGenerator = zorvcore::classref::MakeObject<PeakWaveformGenerator>(graph, At(0), At(kFrames), kBlock);
	EXPECT_EQ(Generate(0, kFrames, 10), zorvcore::eWaitFailed);
	EXPECT_EQ(pulled, 4 * kBlock - 1);
	EXPECT_FALSE(mBuffer->IsComplete());
	EXPECT_EQ(mBuffer->GetSampleCount(), 4 * kBlock / 10);
}

TEST_F(PeakWaveform, AClosedGateHoldsItUntilItOpensOrNobodyWaits)
{
	auto const gate = std::make_shared<zorvcore::threads::Gate>(false);
	std::thread cancelled([&] { EXPECT_EQ(Generate(0, kFrames, 10, {}, gate), zorvcore::eWaitFailed); });
	mBuffer->Cancel();
	cancelled.join();
	EXPECT_TRUE(mGraph->mCalls.empty());

	mBuffer = SN::AudioWaveformQueue::CreateAudioWaveformBuffer();
	std::thread held([&] { EXPECT_EQ(Generate(0, kFrames, 10, {}, gate), SN::kSuccess); });
	gate->Open();
	held.join();
	ExpectColumns(0, kFrames, 10, [](long long inFrame) { return inFrame; });
}

// As an application draws: columns below the count while the waveform thread writes those above.
TEST_F(PeakWaveform, ColumnsMayBeReadWhileTheyCome)
{
	SN::AudioWaveformQueue::GetQueue();
	auto const request = SN::AudioWaveformRequest::CreateAudioWaveformRequest(
		{.mGenerator = mGenerator, .mEndTime = At(kFrames), .mBuffer = mBuffer});
	request->Complete(SN::kSuccess);
	std::size_t seen = 0;
	while (seen < static_cast<std::size_t>(kFrames))
	{
		std::size_t const count = mBuffer->GetSampleCount();
		for (; seen < count; ++seen)
		{
			ASSERT_EQ(mBuffer->GetChannels()[1][3 * seen], GetNoise(1, static_cast<long long>(seen)));
		}
	}
	SN::AudioWaveformQueue::Clear();
	SN::AudioWaveformQueue::GetQueue();
	EXPECT_TRUE(mBuffer->IsComplete());
}

} // namespace SonaroHost::Testing::PeakWaveformGeneratorTest
