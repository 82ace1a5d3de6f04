#include "ResamplerRuns.h"

#include "Support/Engine.h"

#include <numbers>

namespace SN::ResamplerQualityTest
{

// Long after priming, so that only the filter itself is measured.
constexpr unsigned kSettled = 6000;
constexpr unsigned kMeasured = 20000;

Signal MeasureTone(ResamplerKind inKind, RatePair const& inRates, double inFrequency)
{
	auto const resampler = MakeResampler(inKind, inRates);
	unsigned const count = kSettled + kMeasured;
	Signal const input = MakeTone(inFrequency, static_cast<unsigned>(count * inRates.GetRatio()) + 10000u);
	Signal const output = PullThrough(*resampler, input, count);
	return Signal(output.begin() + kSettled, output.end());
}

struct ToneCase
{
	ResamplerKind mKind;
	RatePair mRates;
	// In cycles an input sample.
	double mFrequency;
	double mDecibels;
};

std::string Describe(ToneCase const& inCase)
{
	return std::string(GetName(inCase.mKind)) + ", ratio " + std::to_string(inCase.mRates.GetRatio()) +
		   ", frequency " + std::to_string(inCase.mFrequency);
}

TEST(ResamplerQuality, TonesComeOutCleanAndInPlace)
{
	using enum ResamplerKind;
	RatePair const up(44100, 48000);
	RatePair const down(48000, 44100);
	ToneCase const cases[] = {
		{kLinear, down, 0.02, 62.0},
		{kLinear, down, 0.2, 22.5},
		{kCubic, down, 0.02, 80.0},
		{kCubic, down, 0.2, 24.0},
		{kSinc, down, 0.02, 60.0},
		{kSinc, down, 0.2, 43.5},
		{kSinc, up, 0.02, 63.0},
		{kSinc, up, 0.2, 43.5},
		{kSinc, RatePair(2.0), 0.02, 70.0},
		{kSincHighQuality, down, 0.02, 88.0},
		{kSincHighQuality, down, 0.2, 69.0},
		// Every position stands on a step of the filter.
		{kSincHighQuality, up, 0.02, 94.0},
		{kSincHighQuality, up, 0.2, 94.0},
		{kSincHighQuality, RatePair(2.0), 0.05, 94.0},
	};
	for (ToneCase const& test : cases)
	{
		SCOPED_TRACE(Describe(test));
		bool const isSinc = test.mKind >= kSinc;
		double const ratio = test.mRates.GetRatio();
		ToneFit const fit = FitTone(MeasureTone(test.mKind, test.mRates, test.mFrequency), test.mFrequency,
			kSettled * ratio + (isSinc ? 1.0 : 0.0), ratio);
		EXPECT_GE(fit.mSignalToNoise, test.mDecibels);
		// In samples. The coarse filter has 120 steps of a sample; the cubic weights lean forward.
		double const tolerance = test.mKind == kCubic ? 0.04 : 1.5 / 120.0;
		EXPECT_NEAR(fit.mPhase / (2.0 * std::numbers::pi * test.mFrequency), 0.0, tolerance);
	}
}

TEST(ResamplerQuality, TonesAboveTheOutputsBandAreRejected)
{
	using enum ResamplerKind;
	ToneCase const cases[] = {
		{kSinc, RatePair(96000, 48000), 0.35, -50.0},
		{kSinc, RatePair(3.7), 0.3, -75.0},
		{kSincHighQuality, RatePair(96000, 48000), 0.27, -78.0},
		{kSincHighQuality, RatePair(96000, 48000), 0.35, -85.0},
		{kSincHighQuality, RatePair(3.7), 0.3, -95.0},
		{kSincHighQuality, RatePair(48000, 44100), 0.48, -75.0},
	};
	for (ToneCase const& test : cases)
	{
		SCOPED_TRACE(Describe(test));
		EXPECT_LE(MeasureLevel(MeasureTone(test.mKind, test.mRates, test.mFrequency)), test.mDecibels);
	}
}

// The normalising sum strides one step short of a sample, so that the gain is not quite 1.
TEST(ResamplerQuality, GainAtEqualRates)
{
	struct Case
	{
		ResamplerKind mKind;
		float mGain;
		float mTolerance;
	};
	constexpr Case kCases[] = {
		{ResamplerKind::kLinear, 1.0f, 0.0f},
		{ResamplerKind::kCubic, 1.0f, 0.0f},
		{ResamplerKind::kSinc, 0.98899f, 0.000005f},
		{ResamplerKind::kSincHighQuality, 0.9994f, 0.00005f},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(GetName(test.mKind));
		auto const resampler = MakeResampler(test.mKind, RatePair(48000, 48000));
		EXPECT_NEAR(PullThrough(*resampler, Signal(9000, 1.0f), 5000).back(), test.mGain, test.mTolerance);
	}
}

} // namespace SN::ResamplerQualityTest
