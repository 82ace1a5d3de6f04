// Sound files at other speeds that keep their pitch, and at other pitches.

#include "ClipRenders.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

namespace SonaroHost::Testing::StretchTest
{

constexpr double kToneHertz = 997.0;

class StretchTest : public ClipRenders
{
protected:
	// By the scaler, which no default may change.
	ClipRenderRequest MakeRequest(Sound const& inSound, double inSpeed, double inSemitones = 0.0) const
	{
		WriteInput(inSound);
		ClipRenderRequest request = ClipRenders::MakeRequest();
		request.mSpeed = inSpeed;
		request.mKeepsPitch = true;
		request.mSemitones = inSemitones;
		request.mStretchEngine = StretchEngine::kScaler;
		return request;
	}
};

Sound MakeTone(int inSampleRate, std::int64_t inFrames)
{
	Sound tone{1, inSampleRate, {}};
	for (std::int64_t i = 0; i < inFrames; ++i)
	{
		double const time = static_cast<double>(i) / inSampleRate;
		tone.mSamples.push_back(
			static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * kToneHertz * time)));
	}
	return tone;
}

// By how much its phase turns between two places, seen against a frequency that it has nearly.
double MeasureHertz(Sound const& inTone, double inNearHertz)
{
	constexpr std::int64_t kWindow = 9600;
	constexpr std::int64_t kDistance = 4800;
	std::int64_t const middle = inTone.GetFrames() / 2;
	auto const measure = [&](std::int64_t inFirst)
	{
		std::complex<double> sum;
		for (std::int64_t i = 0; i < kWindow; ++i)
		{
			double const weight =
				1.0 - std::cos(2.0 * std::numbers::pi * (static_cast<double>(i) + 0.5) / kWindow);
			double const time = static_cast<double>(inFirst + i) / inTone.mSampleRate;
			sum += static_cast<double>(inTone.mSamples[static_cast<std::size_t>(inFirst + i)]) * weight *
				   std::polar(1.0, -2.0 * std::numbers::pi * inNearHertz * time);
		}
		return sum;
	};
	double const turn = std::arg(measure(middle) / measure(middle - kDistance));
	return inNearHertz + turn * inTone.mSampleRate / (2.0 * std::numbers::pi * kDistance);
}

TEST_F(StretchTest, TonesHaveTheirPitchAndFilesTheirExactLength)
{
	constexpr std::int64_t kFrames = 150001;
	struct Case
	{
		double mSpeed;
		double mSemitones;
		// The scaler's whole hops miss the ratio by at most half a sample of the shorter hop.
		double mTolerance;
	};
	constexpr Case kCases[] = {{1.25, 0.0, 0.001}, {0.8, 0.0, 0.001}, {1.5, 0.0, 0.001}, {0.5, 0.0, 0.001},
		{2.0, 0.0, 0.0001}, {1.234567, 0.0, 0.0013}, {0.1, 0.0, 0.001}, {10.0, 0.0, 0.01}, {1.0, 4.0, 0.001},
		{1.0, -7.0, 0.0015}, {0.9, 12.0, 0.001}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(
			testing::Message() << "speed " << test.mSpeed << ", " << test.mSemitones << " semitones");
		std::int64_t const frames = test.mSpeed > 5.0 ? 6 * kFrames : kFrames;
		Sound const output = Render(MakeRequest(MakeTone(48000, frames), test.mSpeed, test.mSemitones));
		EXPECT_EQ(output.GetFrames(), std::llround(static_cast<double>(frames) / test.mSpeed));
		double const expected = kToneHertz * std::exp2(test.mSemitones / 12.0);
		EXPECT_NEAR(MeasureHertz(output, expected) / expected, 1.0, test.mTolerance);
	}
}

// Other engines reach any ratio.
TEST_F(StretchTest, OmegaKeepsThePitchAtAnyRatioWithTheSameBits)
{
	constexpr std::int64_t kFrames = 200000;
	for (double const speed : {0.1, 0.8, 1.2345, 1.5, 10.0})
	{
		SCOPED_TRACE(speed);
		Sound const tone = MakeTone(48000, speed > 5.0 ? 6 * kFrames : kFrames);
		ClipRenderRequest request = MakeRequest(tone, speed);
		request.mStretchEngine = StretchEngine::kOmega;
		Sound const output = Render(request);
		EXPECT_EQ(output.GetFrames(), std::llround(static_cast<double>(tone.GetFrames()) / speed));
		EXPECT_NEAR(MeasureHertz(output, kToneHertz) / kToneHertz, 1.0, 0.001);
	}
	ClipRenderRequest request = MakeRequest(MakeSound(2, 44100, 100000), 0.8);
	request.mStretchEngine = StretchEngine::kOmega;
	request.mSampleRate = 48000;
	Sound const whole = RenderInBlocks(request);
	request.mJobs = 3;
	EXPECT_TRUE(SameBits(Render(request), whole));
	request.mDirection = RenderDirection::kReverse;
	EXPECT_TRUE(SameBits(Render(request), whole.Reversed()));
}

TEST_F(StretchTest, ClicksStandAtTheirTimesToTheEnd)
{
	constexpr std::int64_t kDistance = 24000;
	constexpr std::int64_t kFrames = 20 * kDistance;
	Sound clicks{1, 48000, std::vector<float>(kFrames)};
	for (std::int64_t i = kDistance / 2; i < kFrames; i += kDistance)
	{
		clicks.mSamples[static_cast<std::size_t>(i)] = 0.8f;
	}
	for (double const speed : {0.5, 0.8, 1.25, 2.0, 3.3})
	{
		SCOPED_TRACE(speed);
		Sound const output = Render(MakeRequest(clicks, speed));
		double meanError = 0.0;
		auto const reach = static_cast<std::int64_t>(kDistance / speed / 2.0);
		for (std::int64_t i = kDistance / 2; i < kFrames; i += kDistance)
		{
			double const place = static_cast<double>(i) / speed;
			double energy = 0.0;
			double moment = 0.0;
			std::int64_t const first = std::llround(place) - reach;
			for (std::int64_t k = std::max<std::int64_t>(first, 0);
				 k < std::min(first + 2 * reach, output.GetFrames()); ++k)
			{
				double const sample = static_cast<double>(output.mSamples[static_cast<std::size_t>(k)]);
				energy += sample * sample;
				moment += sample * sample * static_cast<double>(k);
			}
			// A click becomes as long as the scaler's window, 4095 samples.
			EXPECT_GT(energy, 0.01) << i;
			EXPECT_NEAR(moment / energy, place, 400.0) << i;
			meanError += (moment / energy - place) * kDistance / kFrames;
		}
		EXPECT_NEAR(meanError, 0.0, 64.0);
	}
}

TEST_F(StretchTest, AnyBlocksThreadsAndDirectionGiveTheSameBits)
{
	for (double const rate : {48000.0, 44100.0})
	{
		SCOPED_TRACE(rate);
		ClipRenderRequest request = MakeRequest(MakeSound(2, static_cast<int>(rate), 100000), 1.25);
		request.mSampleRate = 48000;
		Sound const whole = RenderInBlocks(request);
		for (unsigned const jobs : {2u, 3u})
		{
			request.mJobs = jobs;
			EXPECT_TRUE(SameBits(Render(request), whole)) << jobs << " jobs";
		}
		request.mAsPlayback = true;
		EXPECT_TRUE(SameBits(Render(request), whole)) << "as playback";
		request.mAsPlayback = false;
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(RenderInBlocks(request), whole.Reversed()));
		request.mDirection = RenderDirection::kForward;
		request.mInputs[0].mChannels = {1, 0};
		EXPECT_TRUE(SameBits(Render(request), whole.Pick({1, 0})));
	}
}

TEST_F(StretchTest, APartIsACutOfTheWhole)
{
	constexpr std::int64_t kFirst = 30000;
	constexpr std::int64_t kFirstOfOutput = 37500;
	for (int const format : {SF_FORMAT_WAV | SF_FORMAT_FLOAT, SF_FORMAT_OGG | SF_FORMAT_VORBIS})
	{
		for (StretchEngine const engine : {StretchEngine::kScaler, StretchEngine::kOmega})
		{
			SCOPED_TRACE(testing::Message() << format << ", engine " << static_cast<int>(engine));
			WriteInput(MakeSound(2, 44100, 90000), format);
			ClipRenderRequest request = ClipRenders::MakeRequest();
			request.mSpeed = 0.8;
			request.mKeepsPitch = true;
			request.mStretchEngine = engine;
			Sound const whole = Render(request);
			request.mInputs[0].mStart = TimePosition::FromSamples(kFirst);
			EXPECT_TRUE(
				SameBits(Render(request), whole.Cut(kFirstOfOutput, whole.GetFrames() - kFirstOfOutput)));
			request.mInputs[0].mDuration = TimePosition::FromSamples(20000);
			Sound const part = whole.Cut(kFirstOfOutput, 25000);
			EXPECT_TRUE(SameBits(Render(request), part));
			request.mDirection = RenderDirection::kReverse;
			EXPECT_TRUE(SameBits(Render(request), part.Reversed()));
		}
	}
}

TEST_F(StretchTest, EachOfManyChannelsIsStretchedByItself)
{
	Sound const sound = MakeSound(40, 48000, 20000);
	Sound const output = Render(MakeRequest(sound, 1.25));
	for (unsigned const channel : {0u, 31u, 32u, 39u})
	{
		SCOPED_TRACE(channel);
		EXPECT_TRUE(SameBits(Render(MakeRequest(sound.Pick({channel}), 1.25)), output.Pick({channel})));
	}
}

TEST_F(StretchTest, NothingClipsAndWhatIsNotFiniteEnds)
{
	Sound tone = MakeTone(48000, 96000);
	for (float& sample : tone.mSamples)
	{
		sample *= 4.0f;
	}
	auto const getPeak = [](Sound const& inSound)
	{
		std::vector<float> const samples = inSound.Cut(60000, 50000).mSamples;
		return std::abs(
			*std::ranges::max_element(samples, {}, [](float inSample) { return std::abs(inSample); }));
	};
	EXPECT_NEAR(getPeak(Render(MakeRequest(tone, 0.8))), 2.0f, 0.1f);
	tone.mSamples[10000] = std::numeric_limits<float>::quiet_NaN();
	tone.mSamples[20000] = std::numeric_limits<float>::infinity();
	Sound const output = Render(MakeRequest(tone, 0.8));
	EXPECT_TRUE(std::ranges::all_of(output.mSamples, [](float inSample) { return std::isfinite(inSample); }));
	EXPECT_NEAR(getPeak(output), 2.0f, 0.1f);
}

TEST_F(StretchTest, WhatCannotBeStretchedIsRefused)
{
	struct Case
	{
		double mSpeed;
		double mSemitones;
		StretchEngine mEngine;
		char const* mText;
	};
	constexpr Case kCases[] = {
		{0.09, 0.0, StretchEngine::kScaler, "a speed of 0.09 cannot keep its pitch; use 0.1 to 10"},
		{10.0000001, 0.0, StretchEngine::kOmega,
			"a speed of 10.0000001 cannot keep its pitch; use 0.1 to 10"},
		{10.1, 0.0, StretchEngine::kScaler, "a speed of 10.1 cannot keep its pitch; use 0.1 to 10"},
		{15.0, -12.0, StretchEngine::kScaler,
			"a speed of 15 cannot keep its pitch with a pitch of -12 semitones; use 0.05 to 5"},
		{1.0, 24.5, StretchEngine::kScaler, "a pitch of 24.5 semitones is out of range; use -24 to 24"},
		{1.0, std::numeric_limits<double>::quiet_NaN(), StretchEngine::kScaler, "use -24 to 24"},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mText);
		ClipRenderRequest request = MakeRequest(MakeTone(48000, 1000), test.mSpeed, test.mSemitones);
		request.mStretchEngine = test.mEngine;
		ExpectRefusal(request, test.mText);
	}
}

} // namespace SonaroHost::Testing::StretchTest
