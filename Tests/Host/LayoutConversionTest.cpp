// Conversions of layouts and pans, through whole renders.

#include "ClipRenders.h"
#include "Sonaro/AudioChannelMix.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace SonaroHost::Testing::LayoutConversionTest
{

using namespace SN::AudioChannelMix;

// A row for each output channel, with a column for each input channel.
using Gains = std::vector<std::vector<double>>;

// Each output channel is the input channel of its position, or silent where there is none.
Gains TakeFirst(std::size_t inInputChannels, std::size_t inOutputChannels)
{
	Gains gains(inOutputChannels);
	for (std::size_t i = 0; i < inOutputChannels && i < inInputChannels; ++i)
	{
		gains[i].resize(inInputChannels);
		gains[i][i] = 1.0;
	}
	return gains;
}

struct Conversion
{
	int mInputChannels;
	// Nothing when empty.
	char const* mLayout = "";
	std::optional<double> mPan = std::nullopt;
	std::optional<MixdownType51> mMixdown = std::nullopt;
};

void PrintTo(Conversion const& inConversion, std::ostream* ioStream)
{
	*ioStream << inConversion.mInputChannels << " channels to '" << inConversion.mLayout << "', pan "
			  << inConversion.mPan.value_or(-1.0) << ", mixdown "
			  << inConversion.mMixdown.value_or(MixdownType51{});
}

class LayoutConversionTest : public ClipRenders
{
protected:
	ClipRenderRequest MakeRequest(Conversion const& inConversion)
	{
		ClipRenderRequest request = ClipRenders::MakeRequest();
		if (inConversion.mLayout[0] != 0)
		{
			request.mLayout.mLayout = ParseLayout(inConversion.mLayout).value();
		}
		request.mLayout.mPan = inConversion.mPan;
		request.mLayout.mMixdown = inConversion.mMixdown;
		return request;
	}

	Sound WriteInput(int inChannels, int inFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT)
	{
		Sound sound = MakeSound(inChannels, 48000, 9001);
		ClipRenders::WriteInput(sound, inFormat);
		return sound;
	}

	// Renders a sound and expects that each output sample is the sum of the frame's, times the gains.
	void ExpectGains(Conversion const& inConversion, Gains const& inGains)
	{
		SCOPED_TRACE(testing::PrintToString(inConversion));
		Sound const sound = WriteInput(inConversion.mInputChannels);
		Sound const result = Render(MakeRequest(inConversion));
		ASSERT_EQ(result.mChannels, static_cast<int>(inGains.size()));
		ASSERT_EQ(result.GetFrames(), sound.GetFrames());
		double largest = 0.0;
		for (std::size_t i = 0; i < result.mSamples.size(); ++i)
		{
			float const* const frame =
				&sound.mSamples[i / inGains.size() * static_cast<std::size_t>(sound.mChannels)];
			double expected = 0.0;
			for (std::size_t channel = 0; channel < inGains[i % inGains.size()].size(); ++channel)
			{
				expected += inGains[i % inGains.size()][channel] * static_cast<double>(frame[channel]);
			}
			largest = std::fmax(largest, std::fabs(static_cast<double>(result.mSamples[i]) - expected));
		}
		EXPECT_LT(largest, 1e-6);
	}
};

TEST_F(LayoutConversionTest, FixedConversionsGoByTheirGains)
{
	constexpr double kAll = 0.521739;
	constexpr double kThree = 0.63157;
	constexpr double kFour = 0.85714;
	// What tracks give the channels that they fold in last.
	constexpr double kThird = 0.33;
	std::pair<Conversion, Gains> const cases[] = {
		{{1, "stereo"}, {{1}, {1}}},
		{{2, "mono"}, {{0.5, 0.5}}},
		{{1, "5.1"}, {{}, {}, {1}, {}, {}, {}}},
		{{2, "5.1"}, {{1, 0}, {0, 1}, {}, {}, {}, {}}},
		{{6, "mono"}, {{1.0 / 3, 1.0 / 3, 1.0 / 3}}},
		{{6, "mono", {}, kMixdownFront}, {{1.0 / 3, 1.0 / 3, 1.0 / 3}}},
		{{6, "mono", {}, kMixdownFrontRear}, {{0.25, 0.25, 0.25, 0, 0.125, 0.125}}},
		{{6, "mono", {}, kMixdownFrontLFE}, {{kFour / 3, kFour / 3, kFour / 3, kFour / 6}}},
		{{6, "mono", {}, kMixdownFrontRearLFE}, {{2.0 / 9, 2.0 / 9, 2.0 / 9, 1.0 / 9, 1.0 / 9, 1.0 / 9}}},
		{{6, "stereo", {}, kMixdownFront}, {{0.6, 0, 0.4}, {0, 0.6, 0.4}}},
		{{6, "stereo", {}, kMixdownFrontRear}, {{kThree * 0.75, 0, kThree / 2, 0, kThree * kThird},
												   {0, kThree * 0.75, kThree / 2, 0, 0, kThree * kThird}}},
		{{6, "stereo", {}, kMixdownFrontLFE}, {{kThree * 0.75, 0, kThree / 2, kThree * kThird},
												  {0, kThree * 0.75, kThree / 2, kThree * kThird}}},
		{{6, "stereo", {}, kMixdownFrontRearLFE},
			{{kAll * 0.75, 0, kAll / 2, kAll * kThird, kAll * kThird},
				{0, kAll * 0.75, kAll / 2, kAll * kThird, 0, kAll * kThird}}},
		// Without places, channels go by position.
		{{8, "5"}, TakeFirst(8, 5)},
		{{2, "4"}, {{1, 0}, {0, 1}, {}, {}}},
		{{6, "2"}, {{1}, {0, 1}}},
		{{8, "mono"}, {{1}}},
		{{32, "33"}, TakeFirst(32, 33)},
	};
	for (auto const& [conversion, gains] : cases)
	{
		ExpectGains(conversion, gains);
	}
	// A render leaves the choice of the process as it was.
	EXPECT_EQ(Get51MixdownType(), kMixdownFront);
}

TEST_F(LayoutConversionTest, PansGoByTheirLaws)
{
	constexpr double kHalfPower = std::numbers::sqrt2 / 2.0;
	std::pair<Conversion, Gains> const cases[] = {
		{{1, "", 0.0}, {{1}, {0}}},
		{{1, "", 0.5}, {{kHalfPower}, {kHalfPower}}},
		{{1, "stereo", 1.0}, {{0}, {1}}},
		{{2, "", 0.0}, {{1, 0}, {0, 0}}},
		{{2, "", 0.25}, {{1, 0}, {0, kHalfPower}}},
		{{2, "stereo", 0.5}, {{1, 0}, {0, 1}}},
		{{2, "", 1.0}, {{0, 0}, {0, 1}}},
		{{1, "5.1", 0.0}, {{1}, {}, {}, {}, {}, {}}},
		{{1, "5.1", 0.5}, {{kHalfPower}, {kHalfPower}, {}, {}, {}, {}}},
		{{1, "5.1", 1.0}, {{}, {1}, {}, {}, {}, {}}},
		{{2, "5.1", 0.0}, {{1, 0}, {}, {}, {}, {}, {}}},
		{{2, "5.1", 0.5}, {{1, 0}, {0, 1}, {}, {}, {}, {}}},
		{{2, "5.1", 1.0}, {{}, {0, 1}, {}, {}, {}, {}}},
		{{3, "", 0.75}, {{kHalfPower}, {0, 1}, {0, 0, kHalfPower}}},
		{{4, "4", 0.25}, {{1}, {0, kHalfPower}, {0, 0, 1}, {0, 0, 0, kHalfPower}}},
	};
	for (auto const& [conversion, gains] : cases)
	{
		ExpectGains(conversion, gains);
	}
}

TEST_F(LayoutConversionTest, ChannelsArePickedFirst)
{
	Sound const sound = WriteInput(6);
	ClipRenderRequest request = MakeRequest({6, "mono"});
	request.mInputs[0].mChannels = {4, 5};
	Sound const result = Render(request);
	for (std::size_t i = 0; i < result.mSamples.size(); ++i)
	{
		ASSERT_NEAR(
			result.mSamples[i], 0.5f * (sound.mSamples[6 * i + 4] + sound.mSamples[6 * i + 5]), 1e-6f);
	}
	EXPECT_EQ(GetLayoutName(ClipRenderJob(request).GetOutputLayout()), "mono");
}

TEST_F(LayoutConversionTest, DitherComesWhereSamplesAreComputed)
{
	std::pair<Conversion, Dither> const cases[] = {
		{{2, "stereo"}, Dither::kNone},
		{{2, "mono"}, Dither::kTriangular},
		{{2, "5.1"}, Dither::kNone},
		{{2, "1"}, Dither::kNone},
		{{2, "", 0.5}, Dither::kNone},
		{{2, "", 0.4}, Dither::kTriangular},
		{{1, "", 0.5}, Dither::kTriangular},
		{{6, "stereo"}, Dither::kTriangular},
		{{6, "4"}, Dither::kNone},
	};
	for (auto const& [conversion, dither] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(conversion));
		WriteInput(conversion.mInputChannels, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
		ClipRenderRequest request = MakeRequest(conversion);
		request.mSamples = OutputSamples::kInteger16;
		EXPECT_EQ(ClipRenderJob(request).GetOutputFormat().mDither, dither);
	}
}

TEST_F(LayoutConversionTest, RefusesWhatHasNoConversionAndNamesARemedy)
{
	constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
	std::tuple<Conversion, char const*, char const*> const cases[] = {
		{{1, "", -0.1}, "is out of range; use 0 (left)", "to 1 (right)"},
		{{1, "", 1.001}, "is out of range; use 0 (left)", "to 1 (right)"},
		{{1, "", kNaN}, "is out of range; use 0 (left)", "to 1 (right)"},
		{{1, "", 1e300}, "is out of range; use 0 (left)", "to 1 (right)"},
		{{1, "mono", 0.5}, "mono to mono", "choose other channels"},
		{{2, "mono", 0.5}, "stereo to mono", "choose other channels"},
		{{6, "", 0.5}, "5.1 to 5.1", "leave out the pan"},
		{{6, "stereo", 0.5}, "5.1 to stereo", "leave out the pan"},
		{{4, "3", 0.5}, "4 channels to 3 channels", "to the same number"},
		{{33, "", 0.5}, "33 channels to 33 channels", "3 to 32 channels"},
		{{2, "", {}, kMixdownFront}, "stereo to stereo", "leave out the mixdown"},
		{{2, "mono", {}, kMixdownFront}, "stereo to mono", "leave out the mixdown"},
		{{6, "", {}, kMixdownFrontRear}, "5.1 to 5.1", "choose another layout"},
		{{6, "2", {}, kMixdownFrontRear}, "5.1 to 2 channels", "choose another layout"},
	};
	for (auto const& [conversion, reason, remedy] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(conversion));
		WriteInput(conversion.mInputChannels);
		ExpectRefusal(MakeRequest(conversion), reason);
		ExpectRefusal(MakeRequest(conversion), remedy);
	}
}

} // namespace SonaroHost::Testing::LayoutConversionTest
