// The loudness meter beside libebur128.

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "Support/Trials.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace SonaroHost::Testing::LoudnessReferenceTest
{

class Reference
{
public:
	Reference(SN::AudioChannelLayout const& inLayout, double inSampleRate)
		: mChannels(static_cast<unsigned>(inLayout.size())),
		  mState(ebur128_init(mChannels, static_cast<unsigned long>(std::llround(inSampleRate)),
			  EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK))
	{
		using Place = zorvmediatypes::AudioChannelDescription;
		for (unsigned channel = 0; channel < mChannels; ++channel)
		{
			Place const place = inLayout[channel];
			ebur128_set_channel(mState, channel,
				place == Place::kLowFrequency    ? EBUR128_UNUSED
				: place == Place::kLeftSurround  ? EBUR128_LEFT_SURROUND
				: place == Place::kRightSurround ? EBUR128_RIGHT_SURROUND
												 : EBUR128_CENTER);
		}
	}
	~Reference() { ebur128_destroy(&mState); }
	Reference(Reference const&) = delete;
	Reference& operator=(Reference const&) = delete;

	void Add(dsp::AudioBuffer const& inBlock) { Add(inBlock, 0, inBlock.GetUseSize()); }

	void Add(dsp::AudioBuffer const& inBlock, unsigned inFirst, unsigned inFrames)
	{
		std::vector<float> frames;
		for (unsigned i = inFirst; i < inFirst + inFrames; ++i)
		{
			for (unsigned channel = 0; channel < mChannels; ++channel)
			{
				frames.push_back(inBlock.IsChannelSilent(channel) ? 0.0f : inBlock.GetChannel(channel)[i]);
			}
		}
		ebur128_add_frames_float(mState, frames.data(), inFrames);
	}

	LoudnessReading GetReading() const
	{
		LoudnessReading reading;
		ebur128_loudness_momentary(mState, &reading.mMomentary);
		ebur128_loudness_shortterm(mState, &reading.mShortTerm);
		ebur128_loudness_global(mState, &reading.mIntegrated);
		for (unsigned channel = 0; channel < mChannels; ++channel)
		{
			double peak = 0.0;
			ebur128_true_peak(mState, channel, &peak);
			reading.mTruePeak = std::max(reading.mTruePeak, peak);
			ebur128_sample_peak(mState, channel, &peak);
			reading.mTruePeak = std::max(reading.mTruePeak, peak);
		}
		return reading;
	}

private:
	unsigned mChannels;
	ebur128_state* mState;
};

// Tones, noise, bursts and silence, each for a while in some of the channels.
class RandomProgramme
{
public:
	RandomProgramme(unsigned inChannels, double inSampleRate, unsigned inSeed)
		: mRandom(inSeed),
		  mSampleRate(inSampleRate),
		  mBlock(inChannels, 6000)
	{
	}

	dsp::AudioBuffer const& GetNext()
	{
		if (mFramesLeft == 0)
		{
			Begin();
		}
		unsigned const frames = std::min(1 + Draw() % 6000, mFramesLeft);
		mFramesLeft -= frames;
		mBlock.SetUseSize(frames);
		mBlock.Zero();
		for (unsigned channel = 0; channel < mBlock.GetNumChannels(); ++channel)
		{
			if ((mMask >> channel & 1) != 0)
			{
				mBlock.NoteChannelWrite(channel, frames);
				std::generate_n(mBlock.GetChannel(channel), frames,
					[&, i = mTime + channel * 7]() mutable { return static_cast<float>(GetSample(i++)); });
			}
		}
		mTime += frames;
		return mBlock;
	}

private:
	unsigned Draw() { return static_cast<unsigned>(mRandom()); }

	void Begin()
	{
		mKind = Draw() % 5;
		mMask = Draw();
		mAmplitude = std::pow(10.0, -static_cast<double>(Draw() % 60) / 20.0);
		mHertz = 20.0 * std::pow(0.45 * mSampleRate / 20.0, static_cast<double>(Draw() % 100) / 100.0);
		mFramesLeft = 1 + Draw() % static_cast<unsigned>(2.0 * mSampleRate);
	}

	double GetSample(std::int64_t inFrame)
	{
		double const wave =
			std::sin(2.0 * std::numbers::pi * mHertz * static_cast<double>(inFrame) / mSampleRate);
		double const noise = static_cast<double>(Draw() % 20001) / 10000.0 - 1.0;
		double const values[] = {
			wave, noise, wave > 0.99 ? noise : 0.0, 0.3 + 0.7 * wave * noise, wave > 0.0 ? 1.0 : -1.0};
		return mAmplitude * values[mKind];
	}

	std::mt19937 mRandom;
	double mSampleRate;
	dsp::AudioBuffer mBlock;
	std::int64_t mTime = 0;
	unsigned mFramesLeft = 0;
	unsigned mKind = 0;
	unsigned mMask = 0;
	double mAmplitude = 0.0;
	double mHertz = 0.0;
};

// As near as 0.01 LU or dB, or both as far down as nobody hears.
void ExpectNear(double inValue, double inReference)
{
	constexpr double kInaudible = -100.0;
	if (inReference > kInaudible)
	{
		EXPECT_NEAR(inValue, inReference, 0.01);
	}
	else
	{
		EXPECT_LT(inValue, kInaudible + 0.01);
	}
}

TEST(LoudnessReference, RandomProgrammesMeasureAsLibebur128HasThem)
{
	std::pair<char const*, double> const cases[] = {{"mono", 48000}, {"stereo", 48000}, {"5.1", 48000},
		{"8", 48000}, {"stereo", 8000}, {"3", 11025}, {"mono", 22050}, {"5.1", 44100},
		{"stereo", 48000.0 * 1000 / 1001}, {"stereo", 88200}, {"5.1", 96000}, {"4", 176400},
		{"stereo", 192000}};
	// More than the longest window.
	double const seconds = SN::Testing::GetNumTrials(2) == 2 ? 8.0 : 4.0;
	unsigned seed = 1;
	for (auto const& [name, rate] : cases)
	{
		auto const layout = ParseLayout(name).value();
		for (unsigned trial = 0; trial < SN::Testing::GetNumTrials(2); ++trial)
		{
			SCOPED_TRACE(testing::Message() << name << " at " << rate << ", seed " << ++seed);
			LoudnessMeter growing(
				layout, rate, LoudnessMeter::Memory::kGrowing, LoudnessMeter::Windows::kNone);
			LoudnessMeter fixed(layout, rate, LoudnessMeter::Memory::kFixed);
			Reference reference(layout, rate);
			RandomProgramme programme(static_cast<unsigned>(layout.size()), rate, seed);
			for (double done = 0.0; done < seconds;)
			{
				dsp::AudioBuffer const& block = programme.GetNext();
				done += block.GetUseSize() / rate;
				growing.Add(block);
				fixed.Add(block);
				reference.Add(block);
				if (block.GetUseSize() % 32 != 0)
				{
					continue;
				}
				LoudnessReading const expected = reference.GetReading();
				LoudnessReading const reading = fixed.GetReading();
				ExpectNear(reading.mMomentary, expected.mMomentary);
				ExpectNear(reading.mShortTerm, expected.mShortTerm);
				for (LoudnessReading const& each : {reading, growing.GetReading()})
				{
					ExpectNear(each.mIntegrated, expected.mIntegrated);
					ExpectNear(ToDecibels(each.mTruePeak), ToDecibels(expected.mTruePeak));
				}
			}
		}
	}
}

TEST(LoudnessReference, SeriesFollowLibebur128StepByStep)
{
	constexpr unsigned kSteps = 80;
	for (auto const& [name, rate] :
		{std::pair("stereo", 48000), std::pair("5.1", 44100), std::pair("mono", 8000)})
	{
		SCOPED_TRACE(testing::Message() << name << " at " << rate);
		auto const layout = ParseLayout(name).value();
		LoudnessMeter meter(layout, rate, LoudnessMeter::Memory::kFixed, LoudnessMeter::Windows::kSeries);
		Reference reference(layout, rate);
		RandomProgramme programme(static_cast<unsigned>(layout.size()), rate, 77);
		std::vector<LoudnessReading> expected;
		auto const stepFrames = static_cast<unsigned>(rate / 10);
		for (unsigned framesToStep = stepFrames; expected.size() < kSteps;)
		{
			dsp::AudioBuffer const& block = programme.GetNext();
			meter.Add(block);
			for (unsigned first = 0; first < block.GetUseSize();)
			{
				unsigned const frames = std::min(framesToStep, block.GetUseSize() - first);
				reference.Add(block, first, frames);
				first += frames;
				framesToStep -= frames;
				if (framesToStep == 0)
				{
					expected.push_back(reference.GetReading());
					framesToStep = stepFrames;
				}
			}
		}
		LoudnessReading const reading = meter.GetReading();
		for (std::size_t step = 0; step < kSteps; ++step)
		{
			SCOPED_TRACE(step);
			if (step >= 3)
			{
				ExpectNear(reading.mSeries->GetMomentary(step), expected[step].mMomentary);
			}
			if (step >= 29)
			{
				ExpectNear(reading.mSeries->GetShortTerm(step), expected[step].mShortTerm);
			}
			ExpectNear(reading.mSeries->ListIntegrated(1)[step], expected[step].mIntegrated);
		}
	}
}

} // namespace SonaroHost::Testing::LoudnessReferenceTest
