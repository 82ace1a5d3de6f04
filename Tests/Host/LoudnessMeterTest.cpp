#include "SonaroHost/Metering/LoudnessMeter.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Metering/LoudnessBank.h"
#include "SonaroHost/Metering/LoudnessMeterSetter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <vector>

namespace SonaroHost::Testing::LoudnessMeterTest
{

using Memory = LoudnessMeter::Memory;

// A sine in channels of a programme, for so long.
struct Tone
{
	double mSeconds;
	double mDecibels;
	double mHertz = 1000.0;
	// Of the sine at its start, in periods.
	double mPhase = 0.0;
	// Bit i for channel i.
	unsigned mChannels = 3;
};

// Hands the programme on in blocks of 1 to inLongestBlock frames.
void Play(std::vector<Tone> const& inTones, unsigned inChannels, int inSampleRate, unsigned inLongestBlock,
	std::function<void(dsp::AudioBuffer const&)> const& inListener)
{
	dsp::AudioBuffer block(inChannels, inLongestBlock);
	for (Tone const& tone : inTones)
	{
		auto const frames = static_cast<unsigned>(std::lround(tone.mSeconds * inSampleRate));
		double const amplitude = std::pow(10.0, tone.mDecibels / 20.0);
		// Tones of whole Hertz are the same in each second.
		unsigned const period =
			tone.mHertz == std::floor(tone.mHertz) ? static_cast<unsigned>(inSampleRate) : frames;
		std::vector<float> samples;
		samples.reserve(frames);
		for (unsigned i = 0; i < frames; ++i)
		{
			if (i >= period)
			{
				samples.push_back(samples[i - period]);
				continue;
			}
			double const turns = tone.mHertz * i / inSampleRate + tone.mPhase;
			samples.push_back(static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * turns)));
		}
		for (unsigned done = 0; done < frames;)
		{
			unsigned const count = std::min(1 + done * 7919 % inLongestBlock, frames - done);
			block.SetUseSize(count);
			block.Zero();
			for (unsigned channel = 0; channel < inChannels; ++channel)
			{
				if ((tone.mChannels >> channel & 1) != 0)
				{
					block.NoteChannelWrite(channel, count);
					std::copy_n(samples.begin() + done, count, block.GetChannel(channel));
				}
			}
			inListener(block);
			done += count;
		}
	}
}

LoudnessReading Measure(std::vector<Tone> const& inTones, char const* inLayout = "stereo",
	int inSampleRate = 48000, Memory inMemory = Memory::kGrowing, unsigned inLongestBlock = 4096)
{
	auto const layout = ParseLayout(inLayout).value();
	LoudnessMeter meter(layout, inSampleRate, inMemory);
	Play(inTones, static_cast<unsigned>(layout.size()), inSampleRate, inLongestBlock,
		[&](dsp::AudioBuffer const& inBlock) { meter.Add(inBlock); });
	return meter.GetReading();
}

// Test signals of EBU Tech 3341, table 1, and the weights of ITU-R BS.1770 by tones in single channels.
TEST(LoudnessMeter, ReferenceTonesMeasureAsTheStandardSays)
{
	constexpr double kSilent = LoudnessReading::kSilent;
	// Two channels are 3 dB louder than one, surrounds 1.5 dB.
	struct Case
	{
		char const* mName;
		char const* mLayout;
		int mSampleRate;
		std::vector<Tone> mTones;
		double mMomentary;
		double mShortTerm;
		double mIntegrated;
	};
	Case const cases[] = {
		{"-23 dBFS", "stereo", 48000, {{20, -23}}, -23, -23, -23},
		{"-33 dBFS", "stereo", 48000, {{20, -33}}, -33, -33, -33},
		{"at another rate", "stereo", 44100, {{20, -23}}, -23, -23, -23},
		{"997 Hz at a high rate", "stereo", 96000, {{20, -23, 997}}, -23, -23, -23},
		{"relative gate", "stereo", 48000, {{10, -36}, {60, -23}, {10, -36}}, -36, -36, -23},
		{"both gates", "stereo", 48000, {{10, -72}, {10, -36}, {60, -23}, {10, -36}, {10, -72}}, -72, -72,
			-23},
		{"long loud middle", "stereo", 48000, {{20, -26}, {20.1, -20}, {20, -26}}, -26, -26, -23},
		{"one channel", "mono", 48000, {{20, -23, 1000, 0, 1}}, -26.01, -26.01, -26.01},
		{"LFE alone", "5.1", 48000, {{20, -10, 1000, 0, 8}}, kSilent, kSilent, kSilent},
		{"one surround", "5.1", 48000, {{20, -23, 1000, 0, 16}}, -24.52, -24.52, -24.52},
		{"six alike", "6", 48000, {{20, -23, 1000, 0, 63}}, -18.23, -18.23, -18.23},
		{"silence", "stereo", 48000, {{5, -23, 1000, 0, 0}}, kSilent, kSilent, kSilent},
		{"less than the windows", "stereo", 48000, {{0.3, -23}}, -24.25, -33, kSilent},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		for (Memory const memory : {Memory::kGrowing, Memory::kFixed})
		{
			LoudnessReading const reading = Measure(test.mTones, test.mLayout, test.mSampleRate, memory);
			auto const expectNear = [kSilent](double inValue, double inExpected)
			{
				if (inExpected == kSilent)
				{
					EXPECT_EQ(inValue, kSilent);
					return;
				}
				EXPECT_NEAR(inValue, inExpected, 0.1);
			};
			expectNear(reading.mMomentary, test.mMomentary);
			expectNear(reading.mShortTerm, test.mShortTerm);
			expectNear(reading.mIntegrated, test.mIntegrated);
		}
	}
}

TEST(LoudnessMeter, TruePeakFindsWhatLiesBetweenTheSamples)
{
	// At a quarter of the rate, and 45 degrees off, every sample is 3 dB below the top of the wave.
	for (int const rate : {44100, 48000, 96000})
	{
		LoudnessReading const reading = Measure({{1, 3.0, rate / 4.0, 0.125}}, "stereo", rate);
		EXPECT_NEAR(ToDecibels(reading.mPeak), -0.01, 0.01);
		// The tolerance of EBU Tech 3341 is from -0.4 to +0.2 dB; the onset rings.
		EXPECT_GT(ToDecibels(reading.mTruePeak), 2.6) << rate;
		EXPECT_LT(ToDecibels(reading.mTruePeak), 4.0) << rate;
	}
	LoudnessReading const tone = Measure({{2, -6.0}});
	EXPECT_NEAR(ToDecibels(tone.mTruePeak), -6.0, 0.05);
	EXPECT_NEAR(ToDecibels(tone.mRMS), -9.01, 0.01);
	LoudnessReading const nothing = Measure({});
	EXPECT_EQ(nothing.mTruePeak, 0.0);
	EXPECT_EQ(nothing.mRMS, 0.0);
}

// A reading as a row.
std::vector<double> List(LoudnessReading const& inReading)
{
	return {inReading.mPeak, inReading.mTruePeak, inReading.mRMS, inReading.mMomentary, inReading.mShortTerm,
		inReading.mIntegrated};
}

TEST(LoudnessMeter, AnyCutIntoBlocksGivesTheSameReading)
{
	std::vector<Tone> const tones = {
		{1.7, -12, 440}, {0.9, -30, 3000, 0.3, 1}, {0.8, -18, 90, 0, 0}, {2.2, -18, 90}};
	LoudnessReading const whole = Measure(tones);
	for (unsigned const longest : {1u, 17u, 512u, 100000u})
	{
		LoudnessReading const cut = Measure(tones, "stereo", 48000, Memory::kGrowing, longest);
		EXPECT_EQ(List(cut), List(whole)) << longest;
	}
}

TEST(LoudnessMeter, WhatIsNotFiniteSpoilsNothing)
{
	LoudnessMeter meter(ParseLayout("stereo").value(), 48000, Memory::kGrowing);
	dsp::AudioBuffer bad(2, 3);
	bad.GetChannel(0)[0] = std::numeric_limits<float>::quiet_NaN();
	bad.GetChannel(0)[1] = std::numeric_limits<float>::infinity();
	bad.GetChannel(1)[2] = -std::numeric_limits<float>::infinity();
	meter.Add(bad);
	Play({{10, -23}}, 2, 48000, 4096, [&](dsp::AudioBuffer const& inBlock) { meter.Add(inBlock); });
	EXPECT_NEAR(meter.GetReading().mIntegrated, -23.0, 0.1);
	EXPECT_NEAR(ToDecibels(meter.GetReading().mTruePeak), -23.0, 0.1);

	EXPECT_THROW(LoudnessMeter(ParseLayout("stereo").value(), 1.0, Memory::kFixed), HostError);
	EXPECT_THROW(LoudnessMeter({}, 48000, Memory::kFixed), HostError);
}

TEST(LoudnessMeter, MetersOfABankReadAsEachByItself)
{
	struct Case
	{
		char const* mLayout;
		LoudnessMeter::Windows mWindows;
		std::vector<Tone> mTones;
		unsigned mLongestBlock;
	};
	using Windows = LoudnessMeter::Windows;
	// More channels than are run at once, blocks of all lengths, silence between, and meters of which nothing is heard.
	std::vector<Case> const cases = {
		{"stereo", Windows::kNone, {{3, -20}, {1, -20, 100, 0, 0}, {1, -15}}, 512},
		{"5.1", Windows::kSliding, {{2, -12, 440, 0.3, 63}, {1.7, -30, 90, 0, 20}}, 6000},
		{"mono", Windows::kNone, {{5, -6, 997, 0, 1}}, 64},
		{"20", Windows::kSliding, {{0.9, -23, 2000, 0, 0xfffff}}, 4096},
		{"8", Windows::kNone, {}, 1},
		{"5.1", Windows::kNone, {{1, -12, 30, 0.3, 32}}, 4096},
		{"stereo", Windows::kSliding, {{4, -20, 5000}}, 100000},
	};
	auto const bank = std::make_shared<LoudnessBank>(48000.0);
	std::vector<std::unique_ptr<LoudnessMeter>> meters;
	std::vector<std::vector<double>> alone;
	// In turns of a block each.
	std::vector<std::vector<dsp::AudioBuffer>> blocks(cases.size());
	for (std::size_t i = 0; i < cases.size(); ++i)
	{
		auto const layout = ParseLayout(cases[i].mLayout).value();
		meters.push_back(
			std::make_unique<LoudnessMeter>(layout, 48000, Memory::kGrowing, cases[i].mWindows, bank));
		LoudnessMeter single(layout, 48000, Memory::kGrowing, cases[i].mWindows);
		Play(cases[i].mTones, static_cast<unsigned>(layout.size()), 48000, cases[i].mLongestBlock,
			[&](dsp::AudioBuffer const& inBlock)
			{
				single.Add(inBlock);
				dsp::AudioBuffer& copy = blocks[i].emplace_back(layout.size(), inBlock.GetUseSize());
				copy.CopyFrom(inBlock);
			});
		alone.push_back(List(single.GetReading()));
	}
	auto forgotten = std::make_unique<LoudnessMeter>(
		ParseLayout("mono").value(), 48000, Memory::kGrowing, Windows::kNone, bank);
	for (std::size_t turn = 0; turn < 5000; ++turn)
	{
		for (std::size_t i = 0; i < cases.size(); ++i)
		{
			if (turn < blocks[i].size())
			{
				meters[i]->Add(blocks[i][turn]);
			}
		}
		if (forgotten)
		{
			forgotten->Add(blocks[2][turn]);
		}
		if (turn == 7)
		{
			forgotten.reset();
		}
	}
	for (std::size_t i = 0; i < cases.size(); ++i)
	{
		EXPECT_EQ(List(meters[i]->GetReading()), alone[i]) << i;
	}
	EXPECT_THROW(
		LoudnessMeter(ParseLayout("mono").value(), 44100, Memory::kGrowing, Windows::kNone, bank), HostError);
}

TEST(LoudnessMeterSetter, EachRunIsMeasuredByItself)
{
	auto const meter = zorvcore::classref::MakeObject<LoudnessMeterSetter>(ParseLayout("stereo").value());
	SN::FrameRate const rate = SN::FrameRate::FromSamplesPerSecond(48000);
	EXPECT_THROW(meter->Init(rate, 3), HostError);
	meter->Init(rate, 2);
	auto const play = [&](double inDecibels)
	{
		Play({{5, inDecibels}}, 2, 48000, 512,
			[&](dsp::AudioBuffer const& inBlock) { meter->SetMeterData(inBlock, SN::kTimeZero); });
	};
	for (double const level : {-10.0, -40.0, -23.0})
	{
		SCOPED_TRACE(level);
		play(level);
		LoudnessReading const reading = meter->GetReading();
		EXPECT_NEAR(reading.mIntegrated, level, 0.1);
		EXPECT_NEAR(reading.mShortTerm, level, 0.1);
		EXPECT_NEAR(ToDecibels(reading.mPeak), level, 0.1);
		meter->Reset();
		meter->Reset();
		EXPECT_EQ(meter->GetReading().mIntegrated, LoudnessReading::kSilent);
		EXPECT_EQ(meter->GetReading().mPeak, 0.0);
	}
	// Nobody looks between two runs: there is no meter for the third, until somebody does.
	play(-10.0);
	meter->Reset();
	play(-20.0);
	meter->Reset();
	play(-30.0);
	EXPECT_EQ(meter->GetReading().mPeak, 0.0);
	play(-40.0);
	EXPECT_NEAR(meter->GetReading().mIntegrated, -40.0, 0.1);
	meter->Shutdown();
	play(-10.0);
	EXPECT_EQ(meter->GetReading().mPeak, 0.0);
}

} // namespace SonaroHost::Testing::LoudnessMeterTest
