// Renders of clips on a track: one or several, with fades, speeds and rates.

#include "ClipRenders.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

namespace SonaroHost::Testing::TrackRenderTest
{

class TrackRenderTest : public ClipRenders
{
protected:
	ClipRenderRequest MakeRequest(Sound const& inSound)
	{
		WriteInput(inSound);
		return ClipRenders::MakeRequest();
	}

	// Without a position it follows the one before.
	void AddInput(
		ClipRenderRequest& ioRequest, Sound const& inSound, std::optional<TimePosition> inPosition = {})
	{
		auto const path = mFolder / ("in" + std::to_string(ioRequest.mInputs.size()) + ".wav");
		WriteSound(path, SF_FORMAT_WAV | SF_FORMAT_FLOAT, inSound);
		ioRequest.mInputs.push_back({path, {}, {}, {}, inPosition});
		ioRequest.mOutput = mFolder / "out.wav";
	}

	// Blocks of any size and a playback give the same bits, which come back.
	Sound RenderInManyWays(ClipRenderRequest inRequest)
	{
		Sound const whole = RenderInBlocks(inRequest);
		inRequest.mBlockFrames = 1000;
		inRequest.mAsPlayback = true;
		EXPECT_TRUE(SameBits(Render(inRequest), whole)) << "as playback";
		return whole;
	}
};

// A sound that shows the gain by itself.
Sound MakeOnes(int inChannels, std::int64_t inFrames)
{
	return {inChannels, 48000, std::vector<float>(static_cast<std::size_t>(inChannels * inFrames), 1.0f)};
}

TEST_F(TrackRenderTest, FadesAreStraightAndEndInSilence)
{
	constexpr std::int64_t kFrames = 48000;
	struct Case
	{
		std::int64_t mIn;
		std::int64_t mOut;
	};
	constexpr Case kCases[] = {{0, 0}, {12000, 0}, {0, 12000}, {9600, 14400}, {24000, 24000}, {48000, 0},
		{0, 48000}, {1, 1}, {100, 20000}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(testing::Message() << test.mIn << " in, " << test.mOut << " out");
		ClipRenderRequest request = MakeRequest(MakeOnes(1, kFrames));
		request.mFadeIn = TimePosition::FromSamples(test.mIn);
		request.mFadeOut = TimePosition::FromSamples(test.mOut);
		std::vector<float> const gains = RenderInManyWays(request).mSamples;
		ASSERT_EQ(gains.size(), static_cast<std::size_t>(kFrames));
		for (std::int64_t i = 0; i < kFrames; ++i)
		{
			auto const get = [](std::int64_t inFrame, std::int64_t inFade) {
				return inFade == 0
						   ? 1.0
						   : std::min(1.0, static_cast<double>(inFrame) / static_cast<double>(inFade));
			};
			ASSERT_NEAR(gains[static_cast<std::size_t>(i)],
				std::min(get(i, test.mIn), get(kFrames - 1 - i, test.mOut)), 1e-6)
				<< i;
		}
	}
}

TEST_F(TrackRenderTest, OutsideOfFadesSamplesPass)
{
	for (int const channels : {1, 2, 6, 7})
	{
		SCOPED_TRACE(channels);
		Sound const sound = MakeSound(channels, 48000, 30000);
		ClipRenderRequest request = MakeRequest(sound);
		request.mFadeIn = TimePosition::FromSamples(5000);
		request.mFadeOut = TimePosition::FromSamples(5000);
		request.mInputs[0].mStart = TimePosition::FromSamples(100);
		request.mInputs[0].mDuration = TimePosition::FromSamples(28000);
		Sound const forward = RenderInManyWays(request);
		EXPECT_TRUE(SameBits(forward.Cut(6000, 15000), sound.Cut(6100, 15000)));
		request.mDirection = RenderDirection::kReverse;
		Sound const backward = RenderInManyWays(request);
		EXPECT_TRUE(SameBits(backward.Cut(6000, 15000), sound.Cut(100, 28000).Reversed().Cut(6000, 15000)));
		EXPECT_EQ(backward.mSamples.front(), 0.0f);
		EXPECT_EQ(backward.mSamples.back(), 0.0f);
	}
}

TEST_F(TrackRenderTest, ASingleSampleFadesToSilence)
{
	for (bool const fadesIn : {true, false})
	{
		ClipRenderRequest request = MakeRequest(MakeOnes(2, 1));
		(fadesIn ? request.mFadeIn : request.mFadeOut) = TimePosition::FromSamples(1);
		EXPECT_THAT(Render(request).mSamples, testing::ElementsAre(0.0f, 0.0f));
	}
}

TEST_F(TrackRenderTest, AnOutputMayEndAfterFiftyHoursAndNoLater)
{
	constexpr std::int64_t kFiftyHours = std::int64_t{50} * 3600 * 48000;
	ClipRenderRequest request = MakeRequest(MakeOnes(1, 1000));
	request.mInputs[0].mPosition = TimePosition::FromSamples(kFiftyHours - 1000);
	EXPECT_EQ(ClipRenderJob(request).GetFrames(), kFiftyHours);
	request.mInputs[0].mPosition = TimePosition::FromSamples(kFiftyHours - 999);
	ExpectRefusal(request, "50 hours");
}

TEST_F(TrackRenderTest, FadesThatDoNotFitAreRefused)
{
	ClipRenderRequest request = MakeRequest(MakeOnes(2, 1000));
	request.mFadeIn = TimePosition::FromSamples(501);
	request.mFadeOut = TimePosition::FromSamples(500);
	ExpectRefusal(request, "the fades are longer than the 0:00.021 (1000 samples) of the output");
	request.mFadeIn = TimePosition::FromSamples(500);
	EXPECT_EQ(Render(request).GetFrames(), 1000);
}

// A tone in both channels, the second one upside down.
Sound MakeTone(std::int64_t inFrames, double inRadians)
{
	Sound sound{2, 48000, {}};
	for (std::int64_t i = 0; i < inFrames; ++i)
	{
		auto const sample = static_cast<float>(0.5 * std::sin(inRadians * static_cast<double>(i)));
		sound.mSamples.insert(sound.mSamples.end(), {sample, -sample});
	}
	return sound;
}

// What floats can tell of a tone of half the full scale, and a little more.
constexpr double kExact = 2e-7;

// The largest distance from the tone that plays from a moment of its own, in samples, at a speed. The ends,
// where a filter hears what is not there, are left out.
double FindWorst(Sound const& inSound, double inRadians, double inStart, double inSpeed)
{
	std::int64_t const ends = 120 + std::llround(120.0 / std::fabs(inSpeed));
	double worst = 0.0;
	for (std::int64_t i = ends; i < inSound.GetFrames() - ends; ++i)
	{
		double const expected = 0.5 * std::sin(inRadians * (inStart + static_cast<double>(i) * inSpeed));
		auto const left = static_cast<std::size_t>(2 * i);
		worst = std::max(worst, std::fabs(inSound.mSamples[left] - expected));
		worst = std::max(worst, std::fabs(inSound.mSamples[left + 1] + expected));
	}
	return worst;
}

TEST_F(TrackRenderTest, ASpeedPlaysEverySampleInItsPlace)
{
	struct Case
	{
		double mSpeed;
		std::int64_t mFrames;
		std::int64_t mOutputFrames;
		// At high speeds the engine's resampler is less than half a sample of the output late.
		double mEnginesLate = 0.0;
		double mEnginesTolerance = 1e-4;
	};
	constexpr Case kCases[] = {
		{0.01, 500, 50000},
		{0.3, 15000, 50000},
		{0.5, 20000, 40000},
		{0.99, 20000, 20202},
		{1.001, 20000, 19980},
		{1.5, 20001, 13334},
		{2.0, 60001, 30001},
		{7.3, 60000, 8219},
		{20.0, 60000, 3000, 8.5, 0.005},
		{1.0594630943592953, 20000, 18877},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mSpeed);
		double const radians = 0.02 / std::max(1.0, test.mSpeed);
		ClipRenderRequest request = MakeRequest(MakeTone(test.mFrames, radians));
		request.mSpeed = test.mSpeed;
		Sound const forward = RenderInManyWays(request);
		EXPECT_EQ(forward.GetFrames(), test.mOutputFrames);
		EXPECT_LT(FindWorst(forward, radians, 0.0, test.mSpeed), kExact);
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(RenderInManyWays(request), forward.Reversed()));
		auto const last = static_cast<double>(test.mFrames - 1);
		request.mResampling = Sequence::Resampling::kEngine;
		EXPECT_LT(FindWorst(Render(request), radians, last - test.mEnginesLate, -test.mSpeed),
			test.mEnginesTolerance);
	}
}

TEST_F(TrackRenderTest, ARateKeepsPitchAndLength)
{
	struct Case
	{
		int mRate;
		double mSpeed;
		std::int64_t mOutputFrames;
	};
	constexpr Case kCases[] = {
		{44100, 1.0, 55125},
		{96000, 1.0, 120000},
		{8000, 1.0, 10000},
		{22050, 0.5, 55125},
		{96000, 2.0, 60000},
		{47999, 1.0, 59999},
	};
	constexpr double kRadians = 0.003;
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(testing::Message() << test.mRate << " Hz at " << test.mSpeed);
		ClipRenderRequest request = MakeRequest(MakeTone(60000, kRadians));
		request.mSampleRate = test.mRate;
		request.mSpeed = test.mSpeed;
		double const speed = test.mSpeed * 48000.0 / test.mRate;
		Sound const forward = RenderInManyWays(request);
		EXPECT_EQ(forward.mSampleRate, test.mRate);
		EXPECT_EQ(forward.GetFrames(), test.mOutputFrames);
		EXPECT_LT(FindWorst(forward, kRadians, 0.0, speed), kExact);
		request.mInputs[0].mStart = TimePosition::FromSamples(100);
		Sound const later = Render(request);
		EXPECT_LT(FindWorst(later, kRadians, 100.0, speed), kExact);
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(Render(request), later.Reversed()));
		request.mResampling = Sequence::Resampling::kDraft;
		double const last = 100.0 + static_cast<double>(later.GetFrames() - 1) * speed;
		double const draft = FindWorst(Render(request), kRadians, last, -speed);
		EXPECT_LT(draft, 1e-5);
		EXPECT_TRUE(draft > kExact || speed == 1.0) << draft;
	}
	ClipRenderRequest request = MakeRequest(MakeTone(60000, kRadians));
	request.mSampleRate = 48000;
	EXPECT_TRUE(SameBits(Render(request), MakeTone(60000, kRadians))) << "the input's own rate";
	for (int const rate : {0, -48000, 999, 768001})
	{
		request.mSampleRate = rate;
		ExpectRefusal(request, "Hz is out of range; use 1000 to 768000");
	}
	// A thousand samples for each of the output, and no more; fewer for the engine.
	request.mSampleRate = 1000;
	request.mSpeed = 20.0;
	EXPECT_EQ(Render(request).GetFrames(), 63);
	request.mResampling = Sequence::Resampling::kEngine;
	ExpectRefusal(request, "converting 48000 Hz to 1000 Hz at this speed is out of range");
	request.mResampling = Sequence::Resampling::kExact;
	request.mSpeed = 21.0;
	ExpectRefusal(request, "converting 48000 Hz to 1000 Hz at this speed is out of range");
}

TEST_F(TrackRenderTest, FadesCountTheTimeOfTheOutput)
{
	ClipRenderRequest request = MakeRequest(MakeOnes(1, 48000));
	request.mSpeed = 2.0;
	request.mFadeIn = TimePosition::FromSamples(12000);
	Sound const out = RenderInManyWays(request);
	ASSERT_EQ(out.GetFrames(), 24000);
	EXPECT_NEAR(out.mSamples[6000], 0.5f, 0.03f);
	EXPECT_NEAR(out.mSamples[13000], 1.0f, 1e-4f);
	request.mFadeIn = TimePosition::FromSamples(24001);
	ExpectRefusal(request, "the fades are longer than the 0:00.500 (24000 samples) of the output");
}

TEST_F(TrackRenderTest, SpeedsOutOfRangeAreRefused)
{
	ClipRenderRequest request = MakeRequest(MakeOnes(1, 40));
	for (double const speed : {0.0, -1.0, 0.0099, 100.1, std::nan("")})
	{
		request.mSpeed = speed;
		ExpectRefusal(request, "is out of range; use 0.01 to 100");
	}
	request.mSpeed = 100.0;
	ExpectRefusal(request, "shorter than one sample");
}

TEST_F(TrackRenderTest, InputsLieWhereTheyArePutAndTheLaterOneIsHeard)
{
	std::mt19937 random(1);
	auto const draw = [&](int inFirst, int inLast)
	{ return std::uniform_int_distribution<std::int64_t>(inFirst, inLast)(random); };
	for (int round = 0; round < 30; ++round)
	{
		SCOPED_TRACE(round);
		ClipRenderRequest request;
		// Every sample says which input it is of and where it stood there.
		Sound expected{1, 48000, {}};
		std::int64_t end = 0;
		for (std::int64_t input = draw(1, 6); input > 0; --input)
		{
			Sound sound{1, 48000, {}};
			for (std::int64_t i = draw(1, round % 3 == 0 ? 20 : 3000); i > 0; --i)
			{
				sound.mSamples.push_back(static_cast<float>(input * 100000 + i));
			}
			bool const follows = draw(0, 2) == 0;
			std::int64_t const start = follows ? end : draw(0, 5000);
			AddInput(
				request, sound, follows ? std::nullopt : std::optional(TimePosition::FromSamples(start)));
			end = start + sound.GetFrames();
			expected.mSamples.resize(std::max(expected.mSamples.size(), static_cast<std::size_t>(end)));
			std::copy(sound.mSamples.begin(), sound.mSamples.end(), expected.mSamples.begin() + start);
		}
		EXPECT_TRUE(SameBits(RenderInManyWays(request), expected));
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(RenderInManyWays(request), expected.Reversed()));
	}
}

TEST_F(TrackRenderTest, InputsOfAnyRateKeepTheirPlaces)
{
	// The first input's rate, the output's, the speed, and whether it runs backwards.
	constexpr std::tuple<int, int, double, bool> kCases[] = {{48000, 48000, 1.0, false},
		{44100, 44100, 1.0, true}, {48000, 96000, 1.0, false}, {22050, 32000, 1.7, false},
		{48000, 48000, 0.3, true}};
	for (auto const& [firstRate, rate, speed, isReverse] : kCases)
	{
		SCOPED_TRACE(testing::Message() << rate << " Hz at " << speed);
		ClipRenderRequest request;
		request.mSampleRate = rate;
		request.mSpeed = speed;
		request.mDirection = isReverse ? RenderDirection::kReverse : RenderDirection::kForward;
		// Each begins at its time in tenths of a second, plays for 0.4 s, and its samples are the seconds since
		// its start, to which its number is added.
		constexpr int kTenths[] = {0, 6, 12, 3};
		int const rates[] = {firstRate, 44100, 8000, 96000};
		for (int input = 0; input < 4; ++input)
		{
			Sound sound{1, rates[input], {}};
			for (int i = 0; i < rates[input] * 4 / 10; ++i)
			{
				sound.mSamples.push_back(static_cast<float>(input + 1.0 * i / rates[input]));
			}
			AddInput(request, sound, TimePosition::FromSamples(rate * kTenths[input] / 10));
		}
		Sound const whole = RenderInManyWays(request);
		Sound const sound = isReverse ? whole.Reversed() : whole;
		// Starts and lengths are rounded by themselves.
		ASSERT_NEAR(static_cast<double>(sound.GetFrames()), 1.6 * rate / speed, 1.0);
		// The last input covers the end of the first and the start of the second.
		constexpr int kHeard[] = {0, 0, 0, 3, 3, 3, 3, 1, 1, 1, -1, -1, 2, 2, 2, 2};
		for (std::int64_t i = 0; i < sound.GetFrames(); ++i)
		{
			double const tenths = static_cast<double>(i) / rate * speed * 10.0;
			int const input = kHeard[std::min(static_cast<int>(tenths), 15)];
			// Where clips meet, half of the filter hears what is not there.
			double const reach = input < 0 ? 0.0 : 10.0 * 115.0 * std::max(1.0 / rates[input], speed / rate);
			if (input < 0 || std::fabs(tenths - std::round(tenths)) < reach)
			{
				continue;
			}
			auto const start = std::llround(rate * kTenths[input] / 10 / speed);
			double const expected = input + static_cast<double>(i - start) * speed / rate;
			ASSERT_NEAR(sound.mSamples[static_cast<std::size_t>(i)], expected, 1e-5) << i;
		}
	}
}

TEST_F(TrackRenderTest, EachInputSoundsAsItWouldAlone)
{
	constexpr auto kMixdown = SN::AudioChannelMix::kMixdownFrontRear;
	std::tuple<std::vector<int>, LayoutRequest, char const*> const cases[] = {
		{{1, 6, 2}, {}, "5.1"},
		{{2, 7, 1}, {}, "7 channels"},
		{{6, 1, 2}, {ParseLayout("stereo"), std::nullopt, kMixdown}, "stereo"},
		{{1, 2}, {std::nullopt, 0.3, std::nullopt}, "stereo"},
		{{2, 1}, {ParseLayout("5.1"), 0.3, std::nullopt}, "5.1"},
	};
	for (auto const& [allChannels, layoutRequest, layout] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(allChannels) + " to " + layout);
		ClipRenderRequest request;
		request.mLayout = layoutRequest;
		request.mGain = 0.7f;
		for (int const channels : allChannels)
		{
			AddInput(request, MakeSound(channels, 48000, 3000 + channels));
		}
		request.mLayout.mLayout = ClipRenderJob(request).GetOutputLayout();
		EXPECT_EQ(GetLayoutName(*request.mLayout.mLayout), layout);
		Sound const whole = RenderInManyWays(request);
		std::int64_t first = 0;
		for (std::size_t i = 0; i < allChannels.size(); ++i)
		{
			ClipRenderRequest alone = request;
			alone.mInputs = {request.mInputs[i]};
			alone.mLayout.mMixdown = allChannels[i] == 6 ? layoutRequest.mMixdown : std::nullopt;
			Sound const part = Render(alone);
			EXPECT_TRUE(SameBits(whole.Cut(first, part.GetFrames()), part));
			first += part.GetFrames();
		}
	}
}

} // namespace SonaroHost::Testing::TrackRenderTest
