#include "ResamplerRuns.h"
#include "Sonaro/AudioResamplerFactory.h"
#include "Support/Engine.h"
#include "Time/Resampler/CubicCoefficientTable.h"

namespace SN::ResamplerTest
{

dsp::AudioBuffer BufferOf(Signal const& inSamples)
{
	dsp::AudioBuffer buffer(1, static_cast<unsigned>(inSamples.size()));
	std::copy(inSamples.begin(), inSamples.end(), buffer.GetChannel(0));
	return buffer;
}

Signal Convert(IAudioResampler& ioResampler, Signal const& inInput, unsigned inNumOutput)
{
	dsp::AudioBuffer const input = BufferOf(inInput);
	dsp::AudioBuffer output(1, inNumOutput);
	ioResampler.Process(input, output, input.GetCapacity(), inNumOutput);
	return Heard(output);
}

TEST(Resamplers, QualityChoosesTheClass)
{
	struct Case
	{
		int mQuality;
		bool mIsMade;
		bool mSupportsFrameRateChange;
		// Samples that one output needs at equal rates, in which the three differ.
		unsigned mNumInput;
	};
	constexpr Case kCases[] = {
		{0, false, false, 0},
		{1, true, true, 2},
		{2, true, true, 3},
		{3, true, true, 3},
		{4, true, false, 384},
		{5, true, false, 384},
		{6, false, false, 0},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mQuality);
		auto const resampler =
			AudioResamplerFactory::CreateAudioResampler(static_cast<RenderQuality>(test.mQuality));
		ASSERT_EQ(resampler.IsValid(), test.mIsMade);
		if (!test.mIsMade)
		{
			continue;
		}
		EXPECT_FALSE(resampler->GetInputFrameRate().IsValid());
		RatePair const rates(1.0);
		resampler->Init(rates.mInput, rates.mOutput, 1, false);
		EXPECT_EQ(resampler->SupportsFrameRateChange(), test.mSupportsFrameRateChange);
		EXPECT_EQ(resampler->GetInputSampleCount(1), test.mNumInput);
		EXPECT_EQ(resampler->GetSelfReference(), resampler);
	}
}

TEST(Resamplers, CountWhatTheyNeedAndGive)
{
	struct Case
	{
		char const* mName;
		ResamplerKind mKind;
		double mRatio;
		unsigned mOutputs;
		unsigned mInputs;
		// For 1000 inputs.
		unsigned mOutputsOfThousand;
	};
	constexpr unsigned kLargest = std::numeric_limits<unsigned>::max();
	constexpr Case kCases[] = {
		{"linear, equal rates", ResamplerKind::kLinear, 1.0, 100, 101, 999},
		{"linear, half", ResamplerKind::kLinear, 0.5, 100, 51, 1998},
		{"linear, none wraps around", ResamplerKind::kLinear, 0.5, 0, 2147483649u, 1998},
		{"linear, none at twice the rate", ResamplerKind::kLinear, 2.0, 0, kLargest, 500},
		{"cubic, equal rates", ResamplerKind::kCubic, 1.0, 100, 102, 998},
		{"cubic, none", ResamplerKind::kCubic, 1.0, 0, 2, 998},
		{"cubic, twice", ResamplerKind::kCubic, 2.0, 100, 201, 499},
		{"sinc, first block", ResamplerKind::kSinc, 1.0, 100, 384, 1000},
		{"sinc, twice", ResamplerKind::kSinc, 2.0, 100, 768, 2000},
		{"sinc, high quality", ResamplerKind::kSincHighQuality, 1.0, 100, 3072, 1000},
		{"sinc beyond its range", ResamplerKind::kSinc, 100.01, 10, 1000, 1},
		{"sinc beyond its range, clamped", ResamplerKind::kSinc, 100.01, 100, 2048, 1},
		{"sinc below its range", ResamplerKind::kSinc, 0.0399, 10, 1, 1},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		auto const resampler = MakeResampler(test.mKind, RatePair(test.mRatio));
		EXPECT_EQ(resampler->GetInputSampleCount(test.mOutputs), test.mInputs);
		EXPECT_EQ(resampler->GetOutputSampleCount(1000), test.mOutputsOfThousand);
	}
}

TEST(Resamplers, SincAsksForPrimingOnceAndAgainAfterResetOrInit)
{
	RatePair const rates(1.0);
	auto const resampler = MakeResampler(ResamplerKind::kSinc, rates);
	EXPECT_EQ(resampler->GetInputSampleCount(100), 384u);
	EXPECT_EQ(resampler->GetInputSampleCount(100), 128u);
	EXPECT_EQ(resampler->GetInputSampleCount(0), 0u);
	resampler->Reset();
	EXPECT_EQ(resampler->GetInputSampleCount(129), 512u);
	resampler->Init(rates.mInput, rates.mOutput, 1, false);
	EXPECT_EQ(resampler->GetInputSampleCount(129), 512u);
	// 384 samples in, 256 of them after the priming lag.
	Convert(*resampler, Signal(384), 100);
	EXPECT_EQ(resampler->GetInputSampleCount(156), 0u);
	EXPECT_EQ(resampler->GetInputSampleCount(157), 256u);
}

TEST(Resamplers, SilenceAndResetForgetWhatWasHeard)
{
	for (ResamplerKind const kind : {ResamplerKind::kLinear, ResamplerKind::kCubic})
	{
		for (bool const bySilence : {false, true})
		{
			SCOPED_TRACE(std::string(GetName(kind)) + (bySilence ? ", silence" : ", Reset"));
			RatePair const rates(48000, 44100);
			auto const used = MakeResampler(kind, rates);
			Convert(*used, Signal(60, 0.75f), 50);
			if (bySilence)
			{
				dsp::AudioBuffer silence(1, 20);
				silence.Zero();
				dsp::AudioBuffer output(1, 20);
				used->Process(silence, output, 20, 20);
				EXPECT_TRUE(output.IsSilent());
			}
			else
			{
				used->Reset();
			}
			Signal const input = MakeTone(0.05, 100);
			EXPECT_EQ(Convert(*used, input, 80), Convert(*MakeResampler(kind, rates), input, 80));
		}
	}
}

// A silent block of no samples is nothing to a cubic resampler, and silence to a linear one.
TEST(Resamplers, OnlyLinearForgetsInAnEmptySilentBlock)
{
	for (ResamplerKind const kind : {ResamplerKind::kLinear, ResamplerKind::kCubic})
	{
		SCOPED_TRACE(GetName(kind));
		auto const resampler = MakeResampler(kind, RatePair(1.0));
		Convert(*resampler, Signal(10, 0.75f), 9);
		dsp::AudioBuffer silence(1, 4);
		silence.Zero();
		dsp::AudioBuffer output(1, 4);
		resampler->Process(silence, output, 0, 0);
		// From position 0 a linear output needs 2 samples and a cubic one 3; from -1 it is one less.
		EXPECT_EQ(resampler->GetInputSampleCount(1), 2u);
	}
}

TEST(Resamplers, SilenceOfOneChannelIsFlaggedAlone)
{
	for (ResamplerKind const kind : kAllResamplers)
	{
		SCOPED_TRACE(GetName(kind));
		auto const resampler = MakeResampler(kind, RatePair(1.0), 2);
		unsigned const numInput = resampler->GetInputSampleCount(64);
		dsp::AudioBuffer input = MakeBuffer(3, numInput, 0.5f);
		input.MarkChannelSilent(1);
		dsp::AudioBuffer output = MakeBuffer(4, 64, -77.25f);
		output.Zero();
		resampler->Process(input, output, numInput, 64);
		bool const isSinc = kind >= ResamplerKind::kSinc;
		EXPECT_FALSE(output.IsChannelSilent(0));
		EXPECT_EQ(output.IsChannelSilent(1), !isSinc);
		// Channels that the resampler does not have: linear passes flags on, sinc clears all of them, and
		// what is read there are zeros.
		EXPECT_EQ(output.IsChannelSilent(2), kind == ResamplerKind::kCubic);
		EXPECT_EQ(output.IsChannelSilent(3), !isSinc);
		if (!output.IsChannelSilent(2))
		{
			EXPECT_EQ(output.GetChannel(2)[63], 0.0f);
		}
	}
}

// Silence longer than the shared block of zeros, in one of two channels.
TEST(Resamplers, SilenceMayBeLongerThanTheSharedBlock)
{
	for (ResamplerKind const kind : kAllResamplers)
	{
		SCOPED_TRACE(GetName(kind));
		auto const resampler = MakeResampler(kind, RatePair(50.0), 2);
		constexpr unsigned kOutputs = 6000;
		unsigned const numInput = resampler->GetInputSampleCount(kOutputs);
		dsp::AudioBuffer input = MakeBuffer(2, numInput, 0.5f);
		input.MarkChannelSilent(1);
		dsp::AudioBuffer output(2, kOutputs);
		resampler->Process(input, output, numInput, kOutputs);
		EXPECT_NEAR(output.GetChannel(0)[kOutputs - 1], 0.5f, 0.01f);
		EXPECT_TRUE(output.IsChannelSilent(1) || output.GetChannel(1)[kOutputs - 1] == 0.0f);
	}
}

// Windows end where their neighbour's samples begin.
TEST(Resamplers, WritesItsWindowAndNothingElse)
{
	for (ResamplerKind const kind : kAllResamplers)
	{
		SCOPED_TRACE(GetName(kind));
		auto const resampler = MakeResampler(kind, RatePair(48000, 44100));
		unsigned const numInput = resampler->GetInputSampleCount(37);
		dsp::AudioBuffer const input = MakeBuffer(1, numInput, 0.5f);
		dsp::AudioBuffer parent = MakeBuffer(1, 100, -7.0f);
		resampler->Process(input, *WindowOf(parent, 13, 37), numInput, 37);
		float const* const samples = parent.GetChannel(0);
		EXPECT_EQ(std::count(samples, samples + 100, -7.0f), 63);
		EXPECT_EQ(samples[12], -7.0f);
		EXPECT_EQ(samples[50], -7.0f);
	}
}

TEST(Resamplers, SincBeyondItsRangeIsSilent)
{
	struct Case
	{
		double mRatio;
		bool mIsInRange;
	};
	constexpr Case kCases[] = {{0.04, true}, {0.03999, false}, {100.0, true}, {100.001, false}, {0.0, false}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mRatio);
		auto const resampler = MakeResampler(ResamplerKind::kSinc, RatePair(test.mRatio));
		Signal const output = Convert(*resampler, Signal(resampler->GetInputSampleCount(200), 0.5f), 200);
		EXPECT_EQ(std::abs(output[199]) > 0.4f, test.mIsInRange);
	}
}

// Ratios that are none, blocks that are too short and a resampler without Init: nothing is heard, and
// nothing else happens.
TEST(Resamplers, MisuseIsSilent)
{
	for (ResamplerKind const kind : kAllResamplers)
	{
		SCOPED_TRACE(GetName(kind));
		auto const resampler = MakeResampler(kind, RatePair(1.0));
		resampler->Init(FrameRate(), FrameRate(), 1, false);
		EXPECT_EQ(MeasureLevel(Convert(*resampler, Signal(64, 0.5f), 64)), -HUGE_VAL);
		resampler->Init(FrameRate(1000), FrameRate(1000), 1, false);
		EXPECT_EQ(MeasureLevel(Convert(*resampler, {}, 16)), -HUGE_VAL);

		// A window that is wider than its parent.
		auto const wide = MakeResampler(kind, RatePair(1.0), 2);
		dsp::AudioBuffer output(1, 16);
		auto const window = WindowOf(output, 0, 16, 2);
		wide->Process(dsp::AudioBuffer(2, 0), *window, 0, 16);
		dsp::AudioBuffer const input(2, wide->GetInputSampleCount(16));
		wide->Process(input, *window, input.GetUseSize(), 16);
		EXPECT_FALSE(output.IsSilent());
	}
	auto const raw = AudioResamplerFactory::CreateAudioResampler(RenderQuality::kMaximum);
	EXPECT_EQ(raw->GetInputSampleCount(64), 0u);
	EXPECT_EQ(MeasureLevel(Convert(*raw, Signal(64, 0.5f), 64)), -HUGE_VAL);
}

// A change of speed in flight: the line goes on from where it was.
TEST(Resamplers, ChangingRatesLeavesNoSeam)
{
	for (ResamplerKind const kind : {ResamplerKind::kLinear, ResamplerKind::kCubic})
	{
		SCOPED_TRACE(GetName(kind));
		auto const resampler = MakeResampler(kind, RatePair(1.0));
		double read = 0.0;
		unsigned fed = 0;
		for (double const ratio : {1.0, 1.5, 0.25, 2.75, 0.5, 1.0})
		{
			RatePair const rates(ratio);
			resampler->SetFrameRates(rates.mInput, rates.mOutput);
			unsigned const numInput = resampler->GetInputSampleCount(40);
			Signal ramp(numInput);
			std::generate(ramp.begin(), ramp.end(), [&] { return static_cast<float>(fed++); });
			for (float const sample : Convert(*resampler, ramp, 40))
			{
				if (kind == ResamplerKind::kLinear || read >= 1.0)
				{
					// The cubic's weights are not symmetric, so that even a line is drawn a little off.
					ASSERT_NEAR(sample, read, kind == ResamplerKind::kLinear ? 1e-4 : 0.4) << "at " << read;
				}
				read += ratio;
			}
		}
	}
}

TEST(CubicCoefficientTable, LivesAsLongAsSomebodyHoldsIt)
{
	std::weak_ptr<CubicCoefficientTable const> watched;
	{
		auto const first = MakeResampler(ResamplerKind::kCubic, RatePair(1.0));
		watched = CubicCoefficientTable::GetShared();
		EXPECT_FALSE(watched.expired());
		auto const second = MakeResampler(ResamplerKind::kCubic, RatePair(2.0));
		EXPECT_EQ(CubicCoefficientTable::GetShared(), watched.lock());
	}
	EXPECT_TRUE(watched.expired());
	// Many at once find one.
	std::vector<std::shared_ptr<CubicCoefficientTable const>> found(8);
	RunOnThreads(8, [&](unsigned inThread) { found[inThread] = CubicCoefficientTable::GetShared(); });
	EXPECT_EQ(std::count(found.begin(), found.end(), found[0]), 8);
}

} // namespace SN::ResamplerTest
