#include "SonaroHost/Metering/PeakLimiter.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <vector>

namespace SonaroHost::Testing::PeakLimiterTest
{

using Signal = std::vector<float>;

// Two channels, the second one half as loud and late, through the limiter in blocks of such sizes; what comes out of
// the first one and, behind it, of the second.
struct Limited
{
	Signal mSamples;
	double mTruePeak = 0.0;
};

Limited Limit(Signal const& inSignal, int inRate, double inLimit, std::function<unsigned()> const& inBlocks)
{
	PeakLimiter limiter(2, inRate, inLimit);
	LoudnessMeter meter(MakeLayoutOfChannels(2), inRate, LoudnessMeter::Memory::kGrowing);
	Limited result;
	Signal second;
	for (std::size_t done = 0; done < inSignal.size();)
	{
		std::size_t const count = std::min<std::size_t>(inBlocks(), inSignal.size() - done);
		dsp::AudioBuffer block(2, static_cast<unsigned>(count));
		for (std::size_t i = 0; i < count; ++i)
		{
			block.GetChannel(0)[i] = inSignal[done + i];
			block.GetChannel(1)[i] = done + i < 7 ? 0.0f : 0.5f * inSignal[done + i - 7];
		}
		limiter.Process(block);
		meter.Add(block);
		result.mSamples.insert(result.mSamples.end(), block.GetChannel(0), block.GetChannel(0) + count);
		second.insert(second.end(), block.GetChannel(1), block.GetChannel(1) + count);
		done += count;
	}
	result.mSamples.insert(result.mSamples.end(), second.begin(), second.end());
	result.mTruePeak = meter.GetReading().mTruePeak;
	return result;
}

TEST(PeakLimiter, NothingComesOutAboveTheLimitWhateverGoesIn)
{
	std::mt19937 random(5);
	auto const noise = [&](double) { return std::uniform_real_distribution<>(-4.0, 4.0)(random); };
	struct Case
	{
		char const* mName;
		// Of time in samples.
		std::function<double(double)> mSample;
	};
	Case const cases[] = {
		{"noise", noise},
		{"noise in bursts",
			[&](double inTime) { return std::fmod(inTime, 700.0) < 40.0 ? noise(0.0) : 0.1 * noise(0.0); }},
		{"peaks between the samples",
			[](double inTime) { return 3.0 * std::sin(std::numbers::pi * (inTime / 2.0 + 0.25)); }},
		{"near the highest frequency",
			[](double inTime) { return 2.0 * std::sin(std::numbers::pi * 0.97 * inTime); }},
		{"steps", [](double inTime) { return std::fmod(inTime, 300.0) < 150.0 ? 2.0 : -2.0; }},
		{"impulses", [](double inTime) { return std::fmod(inTime, 997.0) == 0.0 ? 8.0 : 0.0; }},
	};
	for (Case const& test : cases)
		for (int const rate : {44100, 48000, 96000, 192000})
			for (double const decibels : {-1.0, -12.0})
			{
				SCOPED_TRACE(testing::Message() << test.mName << " at " << rate << " below " << decibels);
				Signal signal(20000);
				for (std::size_t i = 0; i < signal.size(); ++i)
				{
					signal[i] = static_cast<float>(test.mSample(static_cast<double>(i)));
				}
				Limited const limited =
					Limit(signal, rate, std::pow(10.0, decibels / 20.0), [] { return 512u; });
				EXPECT_LE(ToDecibels(limited.mTruePeak), decibels + 0.05);
				// Nor does it duck further than it must.
				EXPECT_GE(ToDecibels(limited.mTruePeak), decibels - 0.5);
			}
}

TEST(PeakLimiter, WhatIsSoftPassesBitForBitAndTheLatencyIsTold)
{
	std::mt19937 random(6);
	std::uniform_real_distribution<float> soft(-0.2f, 0.2f);
	Signal signal(4000);
	std::generate(signal.begin(), signal.end(), [&] { return soft(random); });
	auto const latency = static_cast<std::ptrdiff_t>(PeakLimiter(2, 48000, 0.9).GetLatencyFrames());
	EXPECT_GE(latency, 72);
	Limited const limited = Limit(signal, 48000, 0.9, [] { return 333u; });
	EXPECT_TRUE(std::equal(signal.begin(), signal.end() - latency, limited.mSamples.begin() + latency));
	EXPECT_TRUE(std::all_of(limited.mSamples.begin(), limited.mSamples.begin() + latency,
		[](float inSample) { return inSample == 0.0f; }));
}

TEST(PeakLimiter, AnySplitEqualsWhole)
{
	std::mt19937 random(7);
	Signal signal(6000);
	std::generate(signal.begin(), signal.end(),
		[&] { return std::uniform_real_distribution<float>(-2.0f, 2.0f)(random); });
	Signal const whole = Limit(signal, 48000, 0.5, [] { return 6000u; }).mSamples;
	EXPECT_EQ(Limit(signal, 48000, 0.5, [] { return 1u; }).mSamples, whole);
	EXPECT_EQ(Limit(signal, 48000, 0.5, [&] { return 1u + random() % 500u; }).mSamples, whole);
}

} // namespace SonaroHost::Testing::PeakLimiterTest
