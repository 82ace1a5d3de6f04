// What a device gets of frames that come too late, next to those that come in time.

#include "Playback/Feed/DeviceFeed.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace SonaroHost::Playback::Testing::DeviceFeedTest
{
namespace
{

using testing::Each;
using testing::ElementsAre;

constexpr unsigned kBlockFrames = 4;
// 2 ms are four frames.
constexpr DeviceFormat kFormat{2000, 1, kBlockFrames};

class Device
{
public:
	void Write(unsigned inFrames, float inValue)
	{
		dsp::AudioBuffer block(1, inFrames);
		std::fill_n(block.GetChannel(0), inFrames, inValue);
		mFeed.GetRing().Write(block);
	}
	std::vector<float> Fill()
	{
		std::vector<float> samples(kBlockFrames, -1.0f);
		mFeed.Fill(samples.data(), kBlockFrames);
		return samples;
	}

	WakeUp mWakes;
	DeviceFeed mFeed{kFormat, 64, mWakes};
};

TEST(DeviceFeed, MissesFadeOutAndInAgain)
{
	Device device;
	device.Write(7, 1.0f);
	device.mFeed.Open();
	EXPECT_THAT(device.Fill(), Each(1.0f));
	EXPECT_THAT(device.Fill(), ElementsAre(1.0f, 1.0f, 1.0f, 0.75f));
	EXPECT_THAT(device.Fill(), ElementsAre(0.5f, 0.25f, 0.0f, 0.0f));
	device.Write(4, 1.0f);
	EXPECT_THAT(device.Fill(), ElementsAre(0.0f, 0.25f, 0.5f, 0.75f));
	EXPECT_EQ(device.mFeed.CountMisses(), 2u);
	EXPECT_EQ(device.mFeed.CountMissedFrames(), 5u);
}

TEST(DeviceFeed, AnEndAfterAMissIsAsExactAsWithoutOne)
{
	Device device;
	device.Write(7, 1.0f);
	device.mFeed.Open();
	EXPECT_THAT(device.Fill(), Each(1.0f));
	EXPECT_THAT(device.Fill(), ElementsAre(1.0f, 1.0f, 1.0f, 0.75f));
	device.mFeed.CloseAt(13);
	device.Write(6, 1.0f);
	// What fades in joins what still fades out.
	EXPECT_THAT(device.Fill(), ElementsAre(0.5f, 0.5f, 0.5f, 0.75f));
	EXPECT_THAT(device.Fill(), ElementsAre(1.0f, 1.0f, 0.0f, 0.0f));
	device.Write(4, 1.0f);
	device.mFeed.Open();
	EXPECT_THAT(device.Fill(), Each(1.0f));
	EXPECT_EQ(device.mFeed.CountMisses(), 1u);
}

// The gate opens, closes and opens again while the device looks at it, and meanwhile there is more in the ring than is
// heard.
TEST(DeviceFeed, WhatIsTakenBackIsNeverHeard)
{
	constexpr float kHeard = 1.0f;
	constexpr float kTakenBack = 1000.0f;
	dsp::AudioBuffer heard(1, 1);
	heard.GetChannel(0)[0] = kHeard;
	heard.NoteChannelWrite(0, 1);
	dsp::AudioBuffer takenBack(1, 2 * kBlockFrames);
	std::fill_n(takenBack.GetChannel(0), 2 * kBlockFrames, kTakenBack);
	takenBack.NoteChannelWrite(0, 2 * kBlockFrames);

	Device device;
	std::atomic<bool> isOver{false};
	std::atomic<int> wrongs{0};
	std::thread player(
		[&]
		{
			std::vector<float> samples(kBlockFrames);
			while (!isOver)
			{
				device.mFeed.Fill(samples.data(), kBlockFrames);
				wrongs += static_cast<int>(
					std::ranges::count_if(samples, [](float inSample) { return inSample > kHeard; }));
			}
		});
	SampleRing& ring = device.mFeed.GetRing();
	std::mt19937 random(1);
	auto const linger = [&]
	{
		for (auto left = random() % 32; left > 0 && ring.CountRead() >= 0; --left)
		{
		}
	};
	for (int openings = 0; openings < 20000 && wrongs == 0; ++openings)
	{
		while (ring.CountFree() <= 2 * kBlockFrames)
		{
			std::this_thread::yield();
		}
		ring.Write(heard);
		device.mFeed.Open();
		linger();
		device.mFeed.CloseAt(ring.CountWritten());
		ring.Write(takenBack);
		linger();
		device.mFeed.TakeBackUnheard();
	}
	isOver = true;
	player.join();
	EXPECT_EQ(wrongs, 0);
	EXPECT_LE(ring.CountRead(), ring.CountWritten());
}

} // namespace
} // namespace SonaroHost::Playback::Testing::DeviceFeedTest
