// What a device gets of frames that come too late, next to those that come in time.

#include "Playback/Feed/DeviceFeed.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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
	EXPECT_THAT(device.Fill(), ElementsAre(0.0f, 0.25f, 0.5f, 0.75f));
	EXPECT_THAT(device.Fill(), ElementsAre(1.0f, 1.0f, 0.0f, 0.0f));
	device.Write(4, 1.0f);
	device.mFeed.Open();
	EXPECT_THAT(device.Fill(), Each(1.0f));
	EXPECT_EQ(device.mFeed.CountMisses(), 1u);
}

} // namespace
} // namespace SonaroHost::Playback::Testing::DeviceFeedTest
