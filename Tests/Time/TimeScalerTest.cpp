#include "ReferenceTimeScaler.h"
#include "ResamplerRuns.h"
#include "Sonaro/IAudioTimeScalerFactory.h"
#include "Support/Engine.h"
#include "Support/Trials.h"
#include "Time/Scaler/AudioTimeScaler.h"
#include "Time/Scaler/ScalerFrame.h"

namespace SN::TimeScalerTest
{

FrameRate const kRate = FrameRate::FromSamplesPerSecond(48000);

InterfaceRef<AudioTimeScaler> MakeScaler(ScalerRequest const& inRequest, unsigned inChannels = 1)
{
	auto const scaler = MakeObject<AudioTimeScaler>();
	if (inRequest.mEndOfInput == ScalerRequest().mEndOfInput)
	{
		scaler->Init(inRequest.mRatio, FrameRate::FromSamplesPerSecond(inRequest.mSampleRate), inChannels,
			inRequest.mPitchFactor, inRequest.mFFTSize, inRequest.mWindowMode);
	}
	else
	{
		scaler->Init({.mRatio = static_cast<float>(inRequest.mRatio),
						 .mPitchFactor = static_cast<float>(inRequest.mPitchFactor),
						 .mSampleRate = static_cast<float>(inRequest.mSampleRate),
						 .mFFTSize = inRequest.mFFTSize,
						 .mWindowMode = inRequest.mWindowMode,
						 .mEndOfInput = inRequest.mEndOfInput},
			inChannels);
	}
	return scaler;
}

// A signal without an end: tones with some noise, of which the first part may be faint.
class Source
{
public:
	explicit Source(unsigned inSeed, unsigned inFaint = 0)
		: mRandom(inSeed),
		  mFaint(inFaint)
	{
	}

	Signal Take(unsigned inCount)
	{
		Signal samples(inCount);
		for (float& sample : samples)
		{
			double const noise = static_cast<double>(mRandom() % 2001) / 1000.0 - 1.0;
			double const tones = 0.5 * std::sin(0.05 * mTime) + 0.1 * std::sin(0.31 * mTime);
			sample = static_cast<float>((tones + 0.1 * noise) * (mTime < mFaint ? 1.0e-4 : 1.0));
			mTime += 1.0;
		}
		return samples;
	}

private:
	std::mt19937 mRandom;
	double mTime = 0.0;
	double mFaint;
};

struct Outputs
{
	// What was written of each block, and zeros to its end.
	Signal mSamples;
	std::vector<unsigned> mWritten;
};

void Append(Signal const& inSamples, Signal& ioAll)
{
	ioAll.insert(ioAll.end(), inSamples.begin(), inSamples.end());
}

// Blocks of one channel as a caller drives them.
Outputs Drive(IAudioTimeScaler& ioScaler, Source inSource, unsigned inBlocks, unsigned inBlock)
{
	Outputs outputs;
	for (unsigned block = 0; block < inBlocks; ++block)
	{
		unsigned const numInput = ioScaler.GetInputSampleCount(inBlock);
		dsp::AudioBuffer input(1, numInput);
		dsp::AudioBuffer output = MakeStaleBuffer(1, inBlock);
		Signal const samples = inSource.Take(numInput);
		std::copy(samples.begin(), samples.end(), input.GetChannel(0));
		outputs.mWritten.push_back(ioScaler.Process(input, output, numInput, inBlock));
		Append(Heard(output), outputs.mSamples);
	}
	return outputs;
}

double Distance(Signal const& inA, Signal const& inB)
{
	double worst = inA.size() == inB.size() ? 0.0 : HUGE_VAL;
	for (std::size_t i = 0; i < std::min(inA.size(), inB.size()); ++i)
	{
		worst = std::max(worst, std::abs(static_cast<double>(inA[i]) - static_cast<double>(inB[i])));
	}
	return worst;
}

// The engine's scaler and a reference for each of two channels, of which one is silent now and then.
class Duel
{
public:
	Duel(ScalerRequest const& inRequest, bool inUsesOwnTransform, unsigned inFaint)
		: mScaler(MakeScaler(inRequest, kChannels)),
		  mReferences(kChannels, ReferenceTimeScaler(inRequest, inUsesOwnTransform)),
		  mSources{Source(1, inFaint), Source(2, inFaint)}
	{
		EXPECT_EQ(mScaler->GetRatio(), mReferences[0].GetRatio());
	}

	void RunBlock(unsigned inNumOutput, bool inMayBeSilent)
	{
		// The first channel alone is asked.
		unsigned const numInput = mScaler->GetInputSampleCount(inNumOutput);
		ASSERT_EQ(numInput, mReferences[0].CountInput(inNumOutput));
		dsp::AudioBuffer input(kChannels, numInput);
		dsp::AudioBuffer output = MakeStaleBuffer(kChannels, inNumOutput);
		unsigned const heard = inMayBeSilent && numInput > 0 ? 1 : kChannels;
		std::vector<Signal> expected;
		for (unsigned channel = 0; channel < heard; ++channel)
		{
			Signal const samples = mSources[channel].Take(numInput);
			std::copy(samples.begin(), samples.end(), input.GetChannel(channel));
			expected.push_back(mReferences[channel].Process(samples, inNumOutput));
		}
		input.SetChannelZero(1, heard == 1);
		ASSERT_EQ(mScaler->Process(input, output, numInput, inNumOutput), expected.back().size());
		EXPECT_EQ(output.IsChannelSilent(1), heard == 1);
		for (unsigned channel = 0; channel < heard; ++channel)
		{
			expected[channel].resize(inNumOutput);
			mWorst = std::max(mWorst, Distance(Heard(output, channel), expected[channel]));
		}
		mLargestGain = std::max(mLargestGain, mReferences[0].GetEnergyGain());
	}

	double GetWorst() const { return mWorst; }
	float GetLargestGain() const { return mLargestGain; }

private:
	static constexpr unsigned kChannels = 2;

	InterfaceRef<AudioTimeScaler> mScaler;
	std::vector<ReferenceTimeScaler> mReferences;
	Source mSources[kChannels];
	double mWorst = 0.0;
	float mLargestGain = 0.0f;
};

// With a transform in double precision, the last bits of phases differ, which add up.
void RunDuel(ScalerRequest const& inRequest, bool inUsesOwnTransform, unsigned inFaint = 0)
{
	Duel duel(inRequest, inUsesOwnTransform, inFaint);
	std::mt19937 random(81);
	// The exact transform takes its time.
	unsigned const enough = inFaint > 0 ? 40000 : GetNumTrials(inUsesOwnTransform ? 40000 : 10000);
	for (unsigned block = 0, compared = 0; compared < enough; ++block)
	{
		unsigned const numOutput = 1 + static_cast<unsigned>(random() % 2000);
		duel.RunBlock(numOutput, block % 7 == 5);
		ASSERT_FALSE(testing::Test::HasFatalFailure()) << "block " << block;
		compared += numOutput;
	}
	EXPECT_LE(duel.GetWorst(), inUsesOwnTransform ? 1.0e-6 : 1.0e-4);
	EXPECT_EQ(duel.GetLargestGain() > 5.0f, inFaint > 0) << duel.GetLargestGain();
}

struct DuelCase
{
	char const* mName;
	ScalerRequest mRequest;
	// Input samples that come before the loud ones: the gain that would match them is out of its range.
	unsigned mFaint = 0;
};
DuelCase const kDuels[] = {
	{"lowest", {.mRatio = 0.1}},
	{"0.7", {.mRatio = 0.7}},
	{"0.8", {.mRatio = 0.8}},
	{"1", {.mRatio = 1.0}},
	{"1.25", {.mRatio = 1.25}},
	{"5.1, where nothing is lost yet", {.mRatio = 5.1}},
	{"highest, which loses audio", {.mRatio = 10.0}},
	{"quiet, then loud", {.mRatio = 1.25}, 15000},
	{"long window", {.mRatio = 1.5, .mFFTSize = 512, .mWindowMode = 0}},
	{"window of one frame", {.mRatio = 0.9, .mFFTSize = 1024, .mWindowMode = 2}},
	{"window of half a frame", {.mRatio = 1.1, .mFFTSize = 1024, .mWindowMode = 3}},
	{"an octave up", {.mRatio = 1.0, .mPitchFactor = 2.0}},
	{"an octave down", {.mRatio = 0.9, .mPitchFactor = 0.5}},
	{"a fifth up", {.mRatio = 1.0, .mPitchFactor = 1.5}},
	{"a third down", {.mRatio = 1.2, .mPitchFactor = 0.8}},
	{"memory of the energy at its limit", {.mRatio = 0.8, .mSampleRate = 1000.0}},
	{"end of the input", {.mRatio = 0.8, .mEndOfInput = 40000}},
	{"end of the input, slowed down", {.mRatio = 1.5, .mFFTSize = 1024, .mEndOfInput = 12345}},
};

TEST(TimeScaler, EqualsItsDefinition)
{
	for (DuelCase const& test : kDuels)
	{
		SCOPED_TRACE(test.mName);
		RunDuel(test.mRequest, true, test.mFaint);
		if (testing::Test::HasFatalFailure())
		{
			return;
		}
	}
}

TEST(TimeScaler, ComesNearItsDefinitionWithAnExactTransform)
{
	for (double const ratio : {0.7, 1.25})
	{
		RunDuel({.mRatio = ratio, .mFFTSize = 256}, false);
	}
}

// Blocks do not matter, once the first one has asked for its head start.
TEST(TimeScaler, AnyCutGivesTheSameOutputs)
{
	for (double const ratio : {0.8, 1.25})
	{
		std::vector<Signal> results;
		for (unsigned const block : {100u, 512u, 4000u})
		{
			auto const scaler = MakeScaler({.mRatio = ratio});
			Outputs const outputs = Drive(*scaler, Source(3), 16000 / block, block);
			EXPECT_THAT(outputs.mWritten, ::testing::Each(block));
			results.push_back(outputs.mSamples);
			results.back().resize(15000);
		}
		EXPECT_TRUE(SameBits(results[0], results[1]));
		EXPECT_TRUE(SameBits(results[0], results[2]));
	}
}

// Whatever was there before, with and without a Reset.
TEST(TimeScaler, InitForgetsWhatWasHeard)
{
	ScalerRequest const kFormer[] = {
		{.mRatio = 0.8},
		{.mRatio = 1.25},
		{.mRatio = 0.8, .mPitchFactor = 2.0},
		{.mRatio = 0.8, .mFFTSize = 512},
		{.mRatio = 0.8, .mWindowMode = 0},
		{.mRatio = 20.0},
		{.mRatio = 0.8, .mFFTSize = 1000},
	};
	Signal const fresh = Drive(*MakeScaler({.mRatio = 0.8}), Source(4), 5, 1000).mSamples;
	for (ScalerRequest const& former : kFormer)
	{
		for (bool const resets : {false, true})
		{
			SCOPED_TRACE(std::to_string(former.mRatio) + ", " + std::to_string(former.mFFTSize));
			auto const scaler = MakeScaler(former, 3);
			Drive(*scaler, Source(5), 5, 1000);
			if (resets)
			{
				scaler->Reset();
				EXPECT_EQ(scaler->GetRatio(), 0.0);
				EXPECT_EQ(scaler->GetInputSampleCount(1000), 0u);
				EXPECT_EQ(scaler->GetOutputSampleCount(1000), 0u);
				EXPECT_EQ(Drive(*scaler, Source(5), 1, 1000).mSamples, Signal(1000));
			}
			scaler->Init(0.8, kRate, 1, 1.0, 2048, 1);
			EXPECT_TRUE(SameBits(Drive(*scaler, Source(4), 5, 1000).mSamples, fresh));
		}
	}
}

TEST(TimeScaler, RatiosAndSizesAtTheEdges)
{
	struct Case
	{
		char const* mName;
		ScalerRequest mRequest;
		// The ratio that is reported, and whether a block is heard.
		double mRatio;
		bool mIsHeard;
		unsigned mInputForThousand;
		unsigned mOutputForThousand;
	};
	double const none = std::numeric_limits<double>::quiet_NaN();
	Case const cases[] = {
		{"lowest", {.mRatio = 0.1}, 51.0 / 512.0, true, 25088 + 9728, 0},
		{"highest", {.mRatio = 10.0}, 10.0, true, 8704, 0},
		{"0.7", {.mRatio = 0.7}, 358.0 / 512.0, true, 25088 + 1024, 0},
		{"below", {.mRatio = 0.09}, 0.0, false, 1000, 1},
		{"above", {.mRatio = 10.1}, 0.0, false, 1000, 1},
		{"no number", {.mRatio = none}, 0.0, false, 1000, 1},
		{"no power of two", {.mFFTSize = 1000}, 0.0, false, 0, 0},
		{"no frame", {.mFFTSize = 0}, 0.0, false, 0, 0},
		{"huge frame", {.mFFTSize = 1u << 31}, 0.0, false, 0, 0},
		{"smallest frame", {.mFFTSize = 2}, 1.0, true, 25088 + 512, 0},
		{"odd frame", {.mFFTSize = 2047}, 1.0, true, 25088 + 512, 0},
		{"no hop", {.mFFTSize = 2, .mWindowMode = 2}, 0.0, false, 0, 0},
		{"no such window", {.mWindowMode = 4}, 0.0, false, 0, 0},
		{"no pitch", {.mPitchFactor = 0.0}, 0.0, false, 0, 0},
		{"pitch below 0", {.mPitchFactor = -1.0}, 0.0, false, 0, 0},
		{"pitch is no number", {.mPitchFactor = none}, 0.0, false, 0, 0},
		{"pitch too high for a hop", {.mPitchFactor = 1.0e6}, 0.0, false, 0, 0},
		{"pitch too low for a hop", {.mPitchFactor = 1.0e-6}, 0.0, false, 0, 0},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_FLOAT_EQ(
			static_cast<float>(MakeScaler(test.mRequest)->GetRatio()), static_cast<float>(test.mRatio));
		EXPECT_EQ(MakeScaler(test.mRequest)->GetInputSampleCount(1000), test.mInputForThousand);
		EXPECT_EQ(MakeScaler(test.mRequest)->GetOutputSampleCount(1000), test.mOutputForThousand);
		auto const scaler = MakeScaler(test.mRequest);
		dsp::AudioBuffer input = MakeBuffer(1, 40000, 0.25f);
		dsp::AudioBuffer output = MakeStaleBuffer(1, 500);
		unsigned const written = scaler->Process(input, output, 40000, 500);
		EXPECT_EQ(written, test.mIsHeard || test.mInputForThousand == 1000 ? 500u : 0u);
		EXPECT_EQ(output.IsSilent(), !test.mIsHeard);
	}
}

TEST(TimeScaler, CountsSamplesInStepsAfterAHeadStart)
{
	struct Case
	{
		double mRatio;
		unsigned mCount;
		unsigned mFirstInput;
		unsigned mNextInput;
		unsigned mFirstOutput;
		unsigned mNextOutput;
		unsigned mMostInput;
	};
	constexpr Case kCases[] = {
		{0.5, 0, 25088, 0, 0, 512, 25088},
		{0.5, 255, 25088, 512, 0, 512, 25088},
		{0.5, 256, 25600, 1024, 0, 512, 25600},
		{1.0, 24575, 25088 + 24064, 24576, 0, 24576, 25088 + 24064},
		{1.0, 24576, 25088 + 24576, 25088, 512, 25088, 25088 + 24576},
		{2.0, 8191, 8704 + 3584, 4096, 0, 16384 - 512 + 512, 8704 + 3584},
		{2.0, 8192, 8704 + 4096, 4608, 16384 - 7680, 16896, 8704 + 4096},
		{0.25, 30000, 25088 + 119808, 120320, 0, 7680, 25088 + 119808},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(std::to_string(test.mRatio) + ", " + std::to_string(test.mCount));
		auto const forInput = MakeScaler({.mRatio = test.mRatio});
		EXPECT_EQ(forInput->GetMaxInputSampleCount(test.mCount, 0.0), test.mMostInput);
		EXPECT_EQ(forInput->GetInputSampleCount(test.mCount), test.mFirstInput);
		EXPECT_EQ(forInput->GetInputSampleCount(test.mCount), test.mNextInput);
		auto const forOutput = MakeScaler({.mRatio = test.mRatio});
		EXPECT_EQ(forOutput->GetOutputSampleCount(test.mCount), test.mFirstOutput);
		EXPECT_EQ(forOutput->GetOutputSampleCount(test.mCount), test.mNextOutput);
		// Both ask for the head start once.
		EXPECT_EQ(forOutput->GetInputSampleCount(test.mCount), test.mNextInput);
		EXPECT_EQ(forInput->GetOutputSampleCount(test.mCount), test.mNextOutput);
	}
	auto const before = MakeObject<AudioTimeScaler>();
	EXPECT_EQ(before->GetMaxInputSampleCount(1000, 0.0), 25088u);
	EXPECT_EQ(before->GetMaxInputSampleCount(1000, 2.0), 8704u);
	EXPECT_EQ(before->GetMaxInputSampleCount(1000, 0.5), 25088u + 1536u);
	EXPECT_EQ(before->GetMinRatio(), 0.1);
	EXPECT_EQ(before->GetMaxRatio(), 10.0);
}

// A wholly silent block is answered with silence, and none of it counts. Channels that the scaler, or its room, has not
// are silent or left alone.
TEST(TimeScaler, SilenceStandsStillAndMissingChannelsAreSilent)
{
	auto const scaler = MakeScaler({.mRatio = 0.8});
	Signal const plain = Drive(*MakeScaler({.mRatio = 0.8}), Source(6), 4, 1000).mSamples;
	Signal first = Drive(*scaler, Source(6), 4, 1000).mSamples;
	EXPECT_TRUE(SameBits(first, plain));
	auto const other = MakeScaler({.mRatio = 0.8});
	dsp::AudioBuffer silence = MakeStaleBuffer(1, 5000);
	dsp::AudioBuffer output = MakeBuffer(1, 1000, 0.5f);
	EXPECT_EQ(other->Process(silence, output, 5000, 1000), 1000u);
	EXPECT_TRUE(output.IsSilent());
	EXPECT_TRUE(SameBits(Drive(*other, Source(6), 4, 1000).mSamples, plain));

	auto const wide = MakeScaler({.mRatio = 0.8}, 40);
	EXPECT_EQ(wide->GetNumChannels(), 40u);
	dsp::AudioBuffer input = MakeBuffer(41, 30000, 0.25f);
	dsp::AudioBuffer many = MakeBuffer(41, 1000, 0.5f);
	EXPECT_EQ(wide->Process(input, many, 30000, 1000), 1000u);
	EXPECT_FALSE(many.IsChannelSilent(31));
	EXPECT_TRUE(many.IsChannelSilent(32));
	EXPECT_EQ(Heard(many, 40), Signal(1000, 0.5f));
	dsp::AudioBuffer narrow = MakeStaleBuffer(2, 100);
	EXPECT_EQ(wide->Process(input, narrow, 30000, 1000), 100u);
	EXPECT_FALSE(narrow.IsChannelSilent(1));
}

TEST(TimeScaler, OutputsStayWithinFullScale)
{
	auto const scaler = MakeScaler({.mRatio = 1.25});
	dsp::AudioBuffer input(1, 20000);
	dsp::AudioBuffer output(1, 8000);
	std::mt19937 random(82);
	std::generate_n(input.GetChannel(0), 20000, [&] { return random() % 2 == 0 ? 1.0f : -1.0f; });
	scaler->Process(input, output, 20000, 8000);
	Signal const heard = Heard(output);
	EXPECT_EQ(*std::max_element(heard.begin(), heard.end()), 1.0f);
	EXPECT_EQ(*std::min_element(heard.begin(), heard.end()), -1.0f);
}

// In decibels over what is no tone.
TEST(TimeScaler, TonesStayPureAndKeepTheirLevel)
{
	struct Case
	{
		double mRatio;
		double mDecibels;
	};
	constexpr Case kCases[] = {{0.7, 54.0}, {1.0, 57.0}, {1.5, 46.0}};
	for (Case const& test : kCases)
	{
		for (double const hertz : {100.0, 220.0, 440.0, 1000.0, 3000.0, 10000.0})
		{
			SCOPED_TRACE(std::to_string(test.mRatio) + ", " + std::to_string(hertz) + " Hz");
			auto const scaler = MakeScaler({.mRatio = test.mRatio});
			dsp::AudioBuffer input(1, 120000);
			dsp::AudioBuffer output(1, 60000);
			Signal tone = MakeTone(hertz / 48000.0, 120000);
			std::transform(
				tone.begin(), tone.end(), input.GetChannel(0), [](float inX) { return 0.5f * inX; });
			ASSERT_EQ(scaler->Process(input, output, 120000, 60000), 60000u);
			Signal const heard = Heard(output);
			ToneFit const fit =
				FitTone(Signal(heard.begin() + 40000, heard.begin() + 56384), hertz / 48000.0, 0.0, 1.0);
			EXPECT_GE(fit.mSignalToNoise, test.mDecibels);
			EXPECT_NEAR(fit.mGain, 0.5, 0.02);
		}
	}
}

class NoScalers final : public Implements<NoScalers, IAudioTimeScalerFactory>
{
public:
	InterfaceRef<IAudioTimeScaler> CreateAudioTimeScaler(RenderQuality) override { return {}; }
};

TEST(TimeScaler, AHostCanPutAnotherFactoryInPlace)
{
	auto const own = GetAudioTimeScalerFactory();
	ASSERT_TRUE(own);
	for (RenderQuality const quality : {RenderQuality::kDraft, RenderQuality::kMaximum})
	{
		auto const scaler = own->CreateAudioTimeScaler(quality);
		ASSERT_TRUE(scaler);
		EXPECT_EQ(scaler->GetSelfReference(), scaler);
	}
	InterfaceRef<IAudioTimeScalerFactory> const other = MakeObject<NoScalers>();
	SetAudioTimeScalerFactory(other);
	EXPECT_EQ(GetAudioTimeScalerFactory(), other);
	SetAudioTimeScalerFactory(own);
	EXPECT_EQ(GetAudioTimeScalerFactory(), own);
}

} // namespace SN::TimeScalerTest
