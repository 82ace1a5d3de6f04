#include "SonaroHost/Offline/DenoiseProcessor.h"
#include "NoisySpeech.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <chrono>
#include <cmath>
#include <future>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>

namespace SonaroHost::Testing::DenoiseProcessorTest
{

using zorvcore::async::FutureStatus;
using zorvcore::async::WaitForUntypedUntil;
using zorvcore::classref::MakeObject;

using Settings = DenoiseProcessor::Settings;

SN::TickTime GetTime(std::int64_t inFrames, int inSampleRate)
{
	return {inFrames, SN::FrameRate::FromSamplesPerSecond(inSampleRate)};
}

Settings MakeSettings(Sound const& inSound, Denoise const& inDenoise)
{
	return {inDenoise, inSound.mSampleRate, static_cast<unsigned>(inSound.mChannels), inSound.GetFrames(), 0,
		{}, {}};
}

SN::OfflineAudioReadCallback ReadFrom(Sound const& inSound)
{
	return [&inSound](float** ioChannels, long long inStart, int inCount)
	{ std::copy_n(inSound.mSamples.begin() + inStart, inCount, ioChannels[0]); };
}

// What one stream gives, up to the end of the sound.
Sound Process(Sound const& inSound, Settings const& inSettings)
{
	auto const processor = MakeObject<DenoiseProcessor>(inSettings);
	std::int64_t const frames = inSound.GetFrames() - inSettings.mFirstFrame;
	auto const stream =
		processor->CreateProcessedStream(ReadFrom(inSound), 0, GetTime(frames, inSound.mSampleRate));
	Sound result{inSound.mChannels, inSound.mSampleRate, {}};
	while (result.GetFrames() < frames)
	{
		auto const future = stream->GetNextBuffer();
		WaitForUntypedUntil(future, std::chrono::steady_clock::now() + std::chrono::hours(1));
		dsp::AudioBuffer const& chunk = *future.Get();
		for (unsigned i = 0; i < chunk.GetUseSize(); ++i)
		{
			for (unsigned channel = 0; channel < chunk.GetNumChannels(); ++channel)
			{
				result.mSamples.push_back(chunk.GetChannel(channel)[i]);
			}
		}
	}
	EXPECT_EQ(processor->GetFailure(), nullptr);
	return result;
}

Sound Process(Sound const& inSound, Denoise const& inDenoise = {})
{
	return Process(inSound, MakeSettings(inSound, inDenoise));
}

TEST(DenoiseProcessor, TakesSteadyNoiseAndLeavesSpeech)
{
	struct Case
	{
		char const* mName;
		NoisySpeech::Noise mNoise;
		int mSampleRate;
		bool mLearnsFromPause;
	};
	Case const cases[] = {
		{"white", NoisySpeech::Noise::kWhite, 48000, false},
		{"white, from a pause", NoisySpeech::Noise::kWhite, 48000, true},
		{"dark", NoisySpeech::Noise::kDark, 48000, false},
		{"hum", NoisySpeech::Noise::kHum, 48000, false},
		{"8 kHz", NoisySpeech::Noise::kWhite, 8000, false},
		{"44.1 kHz", NoisySpeech::Noise::kDark, 44100, true},
		{"96 kHz", NoisySpeech::Noise::kWhite, 96000, false},
		{"192 kHz", NoisySpeech::Noise::kHum, 192000, true},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		NoisySpeech const speech(test.mNoise, test.mSampleRate, 8.0);
		Denoise denoise;
		if (test.mLearnsFromPause)
		{
			denoise.mLearn = {test.mSampleRate * 95 / 100, test.mSampleRate * 130 / 100};
		}
		Sound const clean = Process(speech.Mix(), denoise);
		EXPECT_GT(speech.MeasureReduction(clean), 12.0);
		EXPECT_LT(speech.MeasureReduction(clean), denoise.mReduction + 0.5);
		EXPECT_NEAR(speech.MeasureSpeech(clean), 0.0, 1.0);
		// What is left is as smooth as the noise was.
		EXPECT_LT(speech.MeasurePeaks(clean), 1.3);
	}
}

TEST(DenoiseProcessor, NothingToReduceKeepsEveryBit)
{
	Sound sound = MakeSound(2, 48000, 30000);
	sound.mSamples[777] = -0.0f;
	sound.mSamples[778] = std::numeric_limits<float>::denorm_min();
	EXPECT_TRUE(SameBits(Process(sound, Denoise{0.0, {}}), sound));
	// The noise is silence, as far as it is there at all.
	for (int const frames : {1, 100, 2047})
	{
		Sound const few = sound.Cut(0, frames);
		EXPECT_TRUE(SameBits(Process(few), few)) << frames;
	}
	Sound const silence{6, 48000, std::vector<float>(60000)};
	EXPECT_TRUE(SameBits(Process(silence), silence));
}

TEST(DenoiseProcessor, StreamsFromAnyPlaceArePartsOfTheWhole)
{
	std::mt19937 random(18);
	for (int const rate : {8000, 11025, 48000})
	{
		Sound const sound = MakeSound(rate == 8000 ? 3 : 1, rate, rate * 4);
		Sound const whole = Process(sound);
		Settings settings = MakeSettings(sound, {});
		settings.mProfile = std::make_shared<SharedNoiseProfile>();
		for (int i = 0; i < 12; ++i)
		{
			settings.mFirstFrame =
				i == 0 ? 1 : std::uniform_int_distribution<std::int64_t>(0, sound.GetFrames() - 1)(random);
			std::int64_t const frames = sound.GetFrames() - settings.mFirstFrame;
			EXPECT_TRUE(SameBits(Process(sound, settings), whole.Cut(settings.mFirstFrame, frames)))
				<< rate << " Hz from " << settings.mFirstFrame;
		}
	}
}

TEST(DenoiseProcessor, ChannelsStayLinked)
{
	// A voice that is panned to one side, in noise that differs between the channels; a channel that is silent.
	NoisySpeech const speech(NoisySpeech::Noise::kWhite, 48000, 5.0);
	Sound const mono = speech.Mix();
	Sound sound{3, 48000, {}};
	for (std::size_t i = 0; i < mono.mSamples.size(); ++i)
	{
		sound.mSamples.insert(sound.mSamples.end(), {mono.mSamples[i], 0.25f * mono.mSamples[i], 0.0f});
	}
	Sound const clean = Process(sound);
	double level = 0.0;
	for (std::size_t i = 0; i < mono.mSamples.size(); ++i)
	{
		double const left = static_cast<double>(clean.mSamples[3 * i]);
		EXPECT_NEAR(static_cast<double>(clean.mSamples[3 * i + 1]), 0.25 * left, 1.0e-6);
		EXPECT_EQ(clean.mSamples[3 * i + 2], 0.0f);
		level += left * left;
	}
	EXPECT_GT(level, 0.0);
	EXPECT_NEAR(speech.MeasureSpeech(clean.Pick({0})), 0.0, 1.0);
	EXPECT_GT(speech.MeasureReduction(clean.Pick({0})), 12.0);
}

TEST(DenoiseProcessor, AnythingInGivesFiniteSamples)
{
	Sound sound = MakeSound(2, 48000, 60000);
	Sound const before = sound;
	constexpr float kOdd[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
		-std::numeric_limits<float>::infinity(), std::numeric_limits<float>::max(), 1.0e9f, -1.0e30f};
	for (std::size_t i = 0; i < std::size(kOdd); ++i)
	{
		sound.mSamples[20000 + 5 * i] = kOdd[i];
	}
	Sound const clean = Process(sound);
	for (std::size_t i = 0; i < sound.mSamples.size(); ++i)
	{
		ASSERT_TRUE(std::isfinite(clean.mSamples[i])) << i;
		if (!std::isfinite(sound.mSamples[i]))
		{
			EXPECT_EQ(clean.mSamples[i], 0.0f);
		}
	}
	// What is far away knows nothing of it.
	Denoise const learning{18.0, Denoise::Span{40000 / 2 + 5000, 60000}};
	EXPECT_TRUE(
		SameBits(Process(sound, learning).Cut(25000, 35000), Process(before, learning).Cut(25000, 35000)));
}

TEST(DenoiseProcessor, WhatIsSteadyIsNoise)
{
	// A constant and a tone; what is learned where they are not does not touch them.
	Sound tone{1, 48000, {}};
	for (int i = 0; i < 96000; ++i)
	{
		double const isOn = i < 24000 ? 0.0 : 1.0;
		tone.mSamples.push_back(
			static_cast<float>(isOn * (0.3 + 0.2 * std::sin(2.0 * std::numbers::pi * 997.0 * i / 48000.0)) +
							   1.0e-4 * std::sin(static_cast<double>(i) * i)));
	}
	Sound const kept = Process(tone, Denoise{30.0, Denoise::Span{0, 20000}});
	Sound const taken = Process(tone, Denoise{30.0, Denoise::Span{30000, 90000}});
	for (int i = 40000; i < 80000; ++i)
	{
		auto const sample = static_cast<std::size_t>(i);
		ASSERT_NEAR(
			static_cast<double>(kept.mSamples[sample]), static_cast<double>(tone.mSamples[sample]), 2.0e-4);
		ASSERT_LT(std::abs(taken.mSamples[sample]), 0.5f / 25.0f);
	}
}

TEST(DenoiseProcessor, LearningIsCancelled)
{
	// Days of noise, which nobody waits for.
	Settings settings{{}, 48000, 1, std::int64_t{1} << 40, 0, std::make_shared<SharedNoiseProfile>(), {}};
	auto const read = [](float** ioChannels, long long inStart, int inCount)
	{
		for (int i = 0; i < inCount; ++i)
		{
			ioChannels[0][i] = static_cast<float>((inStart + i) * 7919 % 1009) / 1009.0f;
		}
	};
	std::promise<void> isLearning;
	bool isFirst = true;
	settings.mReport = [&](std::int64_t)
	{
		if (std::exchange(isFirst, false))
		{
			isLearning.set_value();
		}
	};
	auto const processor = MakeObject<DenoiseProcessor>(settings);
	auto stream = processor->CreateProcessedStream(read, 0, GetTime(48000, 48000));
	auto cancelled = stream->GetNextBuffer();
	isLearning.get_future().wait();
	cancelled.Cancel();
	// The next one begins anew, and goes with the stream.
	auto const dropped = stream->GetNextBuffer();
	EXPECT_EQ(dropped.GetStatus(), FutureStatus::kNotReady);
	stream = SN::InterfaceRef<SN::IProcessedAudioStream>();
	EXPECT_EQ(cancelled.GetStatus(), FutureStatus::kCancelled);
	EXPECT_EQ(dropped.GetStatus(), FutureStatus::kCancelled);
	EXPECT_EQ(processor->GetFailure(), nullptr);
	EXPECT_FALSE(settings.mProfile->IsLearned());
}

TEST(DenoiseProcessor, FailuresComeThroughTheFuture)
{
	auto const getFailure = [](Settings const& inSettings, SN::OfflineAudioReadCallback const& inRead)
	{
		auto const processor = MakeObject<DenoiseProcessor>(inSettings);
		auto const stream = processor->CreateProcessedStream(inRead, 0, GetTime(48000, 48000));
		std::string text;
		for (int i = 0; i < 2; ++i)
		{
			auto const future = stream->GetNextBuffer();
			WaitForUntypedUntil(future, std::chrono::steady_clock::now() + std::chrono::hours(1));
			EXPECT_EQ(future.GetStatus(), FutureStatus::kFailed);
			EXPECT_EQ(future.GetException(), processor->GetFailure());
			try
			{
				future.Get();
			}
			catch (std::exception const& error)
			{
				text = error.what();
			}
		}
		return text;
	};
	auto const fail = [](float**, long long inStart, int)
	{
		if (inStart >= 20000)
		{
			throw std::runtime_error("the disk is gone");
		}
	};
	auto const beSilent = [](float** ioChannels, long long, int inCount)
	{ std::fill_n(ioChannels[0], inCount, 0.0f); };
	EXPECT_EQ(getFailure({}, fail), "the disk is gone");
	Settings learning;
	learning.mDenoise.mLearn = {0, 4800};
	EXPECT_EQ(getFailure(learning, beSilent),
		"there is only silence to learn the noise from; choose another range");
}

} // namespace SonaroHost::Testing::DenoiseProcessorTest
