#include "SonaroHost/Metering/LoudnessMeter.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Metering/LoudnessBank.h"
#include "SonaroHost/Metering/LoudnessMeterSetter.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <optional>
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
	int inSampleRate = 48000, Memory inMemory = Memory::kGrowing, unsigned inLongestBlock = 4096,
	LoudnessMeter::Windows inWindows = LoudnessMeter::Windows::kSliding)
{
	auto const layout = ParseLayout(inLayout).value();
	LoudnessMeter meter(layout, inSampleRate, inMemory, inWindows);
	Play(inTones, static_cast<unsigned>(layout.size()), inSampleRate, inLongestBlock,
		[&](dsp::AudioBuffer const& inBlock) { meter.Add(inBlock); });
	return meter.GetReadingAtEnd();
}

LoudnessReading MeasureSeries(
	std::vector<Tone> const& inTones, int inSampleRate = 48000, unsigned inLongestBlock = 4096)
{
	return Measure(
		inTones, "stereo", inSampleRate, Memory::kGrowing, inLongestBlock, LoudnessMeter::Windows::kSeries);
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
	// A programme that ends with full scale is followed by silence.
	for (int const rate : {44100, 48000, 96000, 192000})
	{
		std::vector<Tone> tones = {{0.7, 0, 0, 0, 0}, {2.0 / rate, 0, 0, 0.25}};
		double const peak = Measure(tones, "stereo", rate).mTruePeak;
		tones.push_back({0.1, 0, 0, 0, 0});
		EXPECT_EQ(peak, Measure(tones, "stereo", rate).mTruePeak) << rate;
		EXPECT_NEAR(ToDecibels(peak), rate < 192000 ? 2.0 : 0.0, 0.12) << rate;
	}
	LoudnessReading const nothing = Measure({});
	EXPECT_EQ(nothing.mTruePeak, 0.0);
	EXPECT_EQ(nothing.mRMS, 0.0);
}

// A reading as a row.
std::vector<double> List(LoudnessReading const& inReading)
{
	std::vector<double> values = {inReading.mPeak, inReading.mTruePeak, inReading.mRMS, inReading.mMomentary,
		inReading.mShortTerm, inReading.mIntegrated};
	if (inReading.mSeries)
	{
		for (auto const& maximum :
			{inReading.mSeries->GetMomentaryMaximum(), inReading.mSeries->GetShortTermMaximum()})
		{
			values.insert(values.end(), {maximum.mLoudness, maximum.mSeconds});
		}
	}
	return values;
}

TEST(LoudnessMeter, AnyCutIntoBlocksGivesTheSameReading)
{
	std::vector<Tone> const tones = {
		{1.7, -12, 440}, {0.9, -30, 3000, 0.3, 1}, {0.8, -18, 90, 0, 0}, {2.2, -18, 90}, {0.0871, -6, 5000}};
	LoudnessReading const whole = MeasureSeries(tones);
	for (unsigned const longest : {1u, 17u, 512u, 100000u})
	{
		LoudnessReading const cut = MeasureSeries(tones, 48000, longest);
		EXPECT_EQ(List(cut), List(whole)) << longest;
	}
}

TEST(LoudnessMeter, WhatIsNotFiniteSpoilsNothing)
{
	LoudnessMeter meter(ParseLayout("stereo").value(), 48000, Memory::kGrowing);
	dsp::AudioBuffer bad(2, 4);
	bad.GetChannel(0)[0] = std::numeric_limits<float>::quiet_NaN();
	bad.GetChannel(0)[1] = std::numeric_limits<float>::infinity();
	bad.GetChannel(1)[2] = -std::numeric_limits<float>::infinity();
	meter.Add(bad);
	EXPECT_EQ(meter.GetReading().mPeak, 0.0);
	Play({{10, -23}}, 2, 48000, 4096, [&](dsp::AudioBuffer const& inBlock) { meter.Add(inBlock); });
	EXPECT_NEAR(ToDecibels(meter.GetReading().mTruePeak), -23.0, 0.1);
	EXPECT_EQ(meter.GetReading().mLeftOutSamples, 3);
	// What is far too large is finite: the peaks have it.
	bad.Zero();
	bad.NoteChannelWrite(0, 4);
	std::fill_n(bad.GetChannel(0), 4, 0.0f);
	bad.GetChannel(0)[1] = 1.0e30f;
	meter.Add(bad);
	LoudnessReading const reading = meter.GetReadingAtEnd();
	EXPECT_NEAR(reading.mIntegrated, -23.0, 0.1);
	EXPECT_EQ(reading.mPeak, static_cast<double>(1.0e30f));
	EXPECT_EQ(reading.mTruePeak, reading.mPeak);
	EXPECT_EQ(reading.mLeftOutSamples, 4);

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
		alone.push_back(List(single.GetReadingAtEnd()));
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
		EXPECT_EQ(List(meters[i]->GetReadingAtEnd()), alone[i]) << i;
	}
	EXPECT_THROW(
		LoudnessMeter(ParseLayout("mono").value(), 44100, Memory::kGrowing, Windows::kNone, bank), HostError);
}

// The maxima of EBU Tech 3341, table 1, cases 9 to 14, and the loudness ranges of EBU Tech 3342, table 1.
TEST(LoudnessSeries, MaximaAndRangesMeasureAsTheStandardsSay)
{
	constexpr double kNever = 0.0;
	struct Case
	{
		char const* mName;
		std::vector<Tone> mTones;
		double mMomentary;
		double mMomentaryAt;
		double mShortTerm;
		double mShortTermAt;
		std::optional<double> mRange;
		int mSampleRate = 48000;
	};
	Case const cases[] = {
		{"steady", {{20, -23}}, -23, 0.4, -23, 3, 0},
		{"steady at another rate", {{20, -23}}, -23, 0.4, -23, 3, 0, 44100},
		{"a loud middle", {{5, -33}, {4, -23}, {5, -33}}, -23, 5.4, -23, 8, 10},
		{"0.4 s off the grid", {{1.005, -60}, {0.4, -23}, {4, -60}}, -23, 1.41, -31.75, 3, std::nullopt},
		{"0.4 s off the grid again", {{1.055, -60}, {0.4, -23}, {4, -60}}, -23, 1.46, -31.75, 3,
			std::nullopt},
		{"3 s off the grid", {{1.15, -60}, {3, -23}, {3, -60}}, -23, 1.55, -23, 4.15, std::nullopt},
		{"0.09 s at an end off the grid", {{3.003, -90}, {0.09, -23}}, -29.48, 3.093, -38.23, 3.093,
			std::nullopt},
		{"less than 3 s", {{2, -23}}, -23, 0.4, LoudnessReading::kSilent, kNever, std::nullopt},
		{"silence", {{5, -23, 1000, 0, 0}}, LoudnessReading::kSilent, kNever, LoudnessReading::kSilent,
			kNever, std::nullopt},
		{"10 LU", {{20, -20}, {20, -30}}, -20, 0.4, -20, 3, 10},
		{"5 LU", {{20, -20}, {20, -15}}, -15, 20.4, -15, 23, 5},
		{"20 LU", {{20, -40}, {20, -20}}, -20, 20.4, -20, 23, 20},
		{"15 LU", {{20, -50}, {20, -35}, {20, -20}, {20, -35}, {20, -50}}, -20, 40.4, -20, 43, 15},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		LoudnessReading const reading = MeasureSeries(test.mTones, test.mSampleRate);
		auto const expectNear =
			[](LoudnessSeries::Maximum const& inMaximum, double inLoudness, double inSeconds)
		{
			// Two silences are equal, but not near.
			EXPECT_TRUE(
				inMaximum.mLoudness == inLoudness || std::fabs(inMaximum.mLoudness - inLoudness) <= 0.1)
				<< inMaximum.mLoudness << " instead of " << inLoudness;
			EXPECT_NEAR(inMaximum.mSeconds, inSeconds, 0.03);
		};
		expectNear(reading.mSeries->GetMomentaryMaximum(), test.mMomentary, test.mMomentaryAt);
		expectNear(reading.mSeries->GetShortTermMaximum(), test.mShortTerm, test.mShortTermAt);
		if (test.mRange)
		{
			ASSERT_TRUE(reading.mSeries->GetRange());
			EXPECT_NEAR(*reading.mSeries->GetRange(), *test.mRange, 0.5);
		}
		else if (test.mShortTerm == LoudnessReading::kSilent)
		{
			EXPECT_FALSE(reading.mSeries->GetRange());
		}
	}
}

TEST(LoudnessSeries, EndsWithWhatItsMeterReads)
{
	std::vector<Tone> const tones = {{3.7, -12, 440}, {2, -90}, {0.9, -30, 3000, 0.3, 1}, {5.4, -18, 90}};
	LoudnessReading const reading = MeasureSeries(tones);
	LoudnessSeries const& series = *reading.mSeries;
	ASSERT_EQ(series.GetNumSteps(), 120u);
	EXPECT_DOUBLE_EQ(series.GetStepSeconds(), 0.1);
	EXPECT_NEAR(series.GetMomentary(119), reading.mMomentary, 0.001);
	EXPECT_NEAR(series.GetShortTerm(119), reading.mShortTerm, 0.001);
	EXPECT_EQ(series.GetMomentary(2), LoudnessReading::kSilent);
	EXPECT_EQ(series.GetShortTerm(28), LoudnessReading::kSilent);
	EXPECT_GT(series.GetShortTerm(29), -20.0);
	for (std::size_t const stride : {1u, 7u, 1000u})
	{
		std::vector<double> const integrated = series.ListIntegrated(stride);
		ASSERT_EQ(integrated.size(), (120 + stride - 1) / stride);
		EXPECT_NEAR(integrated.back(), reading.mIntegrated, 0.01);
	}
	EXPECT_NEAR(series.ListIntegrated(36).front(), MeasureSeries({{3.6, -12, 440}}).mIntegrated, 0.01);
	for (std::size_t step = 0; step < series.GetNumSteps(); ++step)
	{
		EXPECT_LE(series.GetMomentary(step), series.GetMomentaryMaximum().mLoudness + 0.002);
		EXPECT_LE(series.GetShortTerm(step), series.GetShortTermMaximum().mLoudness + 0.002);
	}
	// Only those who ask for it pay for it.
	EXPECT_EQ(Measure(tones).mSeries, nullptr);
	// Any cut into blocks gives the same.
	LoudnessSeries const cut = *MeasureSeries(tones, 48000, 23).mSeries;
	EXPECT_EQ(cut.ListIntegrated(1), series.ListIntegrated(1));
	EXPECT_EQ(cut.GetMomentaryMaximum().mLoudness, series.GetMomentaryMaximum().mLoudness);
	EXPECT_EQ(cut.GetShortTermMaximum().mSeconds, series.GetShortTermMaximum().mSeconds);
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
