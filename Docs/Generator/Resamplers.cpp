#include "Resamplers.h"

#include "Time/ResamplerRuns.h"

#include <cmath>
#include <numbers>

namespace SonaroDocuments
{

namespace
{

using namespace SN::Testing;

struct Rates
{
	unsigned mInput;
	unsigned mOutput;
};
constexpr Rates kRates[] = {{44100, 48000}, {48000, 44100}, {96000, 48000}};

// Outputs that are left out at the start, and those that are measured.
constexpr unsigned kSettled = 8000;
constexpr unsigned kMeasured = 48000;

// A wave whose frequency goes from one to the other in a straight line, over what is measured.
struct Sweep
{
	double mFromHertz;
	double mToHertz;

	double GetAngle(double inSeconds, double inLength) const
	{
		double const rise = (mToHertz - mFromHertz) / inLength;
		return 2.0 * std::numbers::pi * (mFromHertz + rise * inSeconds / 2.0) * inSeconds;
	}
};

double GetDuration(Rates const& inRates)
{
	return static_cast<double>(kSettled + kMeasured) / inRates.mOutput;
}

Samples Convert(ResamplerKind inKind, Rates const& inRates, Sweep const& inSweep)
{
	double const duration = GetDuration(inRates);
	Samples input(static_cast<std::size_t>((duration + 0.2) * inRates.mInput));
	for (std::size_t i = 0; i < input.size(); ++i)
	{
		double const seconds = static_cast<double>(i) / inRates.mInput;
		input[i] = static_cast<float>(std::sin(inSweep.GetAngle(seconds, duration)));
	}
	auto const resampler = MakeResampler(inKind, RatePair(inRates.mInput, inRates.mOutput));
	Samples const output = PullThrough(*resampler, input, kSettled + kMeasured);
	return Samples(output.begin() + kSettled, output.end());
}

double MeasureNoise(ResamplerKind inKind, Rates const& inRates, Sweep const& inSweep)
{
	// The sinc resamplers stand one input sample ahead.
	double const ahead = inKind >= ResamplerKind::kSinc ? 1.0 / inRates.mInput : 0.0;
	return FitWave(Convert(inKind, inRates, inSweep),
		[&](std::size_t inIndex)
		{
			double const seconds = static_cast<double>(kSettled + inIndex) / inRates.mOutput + ahead;
			return inSweep.GetAngle(seconds, GetDuration(inRates));
		})
		.mSignalToNoise;
}

// Whole decibels, which all machines agree on, as far as single precision reaches.
std::string Format(double inDecibels)
{
	return inDecibels > 120.0 ? "over 120" : std::to_string(std::lround(inDecibels));
}

std::string DescribePair(ResamplerKind inKind, Rates const& inRates)
{
	std::string text("| ");
	text.append(GetName(inKind)).append(" | ").append(std::to_string(inRates.mInput)).append(" to ");
	text.append(std::to_string(inRates.mOutput)).append(" |");
	for (Sweep const& sweep : {Sweep{1000.0, 1000.0}, Sweep{10000.0, 10000.0}, Sweep{20.0, 16000.0}})
	{
		text.append(" ").append(Format(MeasureNoise(inKind, inRates, sweep))).append(" |");
	}
	if (inRates.mInput <= inRates.mOutput)
	{
		return text + " · |\n";
	}
	// From a twentieth above the output's band to the end of the input's.
	Sweep const beyond{0.525 * inRates.mOutput, 0.5 * inRates.mInput};
	return text.append(" ").append(Format(-MeasureLevel(Convert(inKind, inRates, beyond)))).append(" |\n");
}

} // namespace

std::string DescribeResamplers()
{
	std::string text =
		"# Resamplers\n\n"
		"How clean a tone of full scale comes out, measured on the engine in decibels; more is better. "
		"`Docs/make-documents.sh` writes this page, and the benchmarks tell what it costs.\n\n"
		"The first three columns are signal-to-noise ratios: the power of the tone that comes nearest over "
		"that of all else. In the sweep, from 20 Hz to 16 kHz, a gain that changes with the frequency counts "
		"as noise too. The last column tells how far down a sweep is that the output has no room for, from "
		"a twentieth above half the output's rate to half the input's.\n\n"
		"| Resampler | Rates | 1 kHz | 10 kHz | Sweep | Alias rejection |\n|---|---|---|---|---|---|\n";
	for (ResamplerKind const kind : kAllResamplers)
	{
		for (Rates const& rates : kRates)
		{
			text += DescribePair(kind, rates);
		}
	}
	return text;
}

} // namespace SonaroDocuments
