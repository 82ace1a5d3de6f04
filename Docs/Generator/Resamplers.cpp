#include "Resamplers.h"

#include "ResamplerSubject.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace SonaroDocuments
{

namespace
{

using namespace SN::Testing;

struct Rates
{
	unsigned mInput;
	unsigned mOutput;
	// Outputs that are left out at the start, and those that are measured.
	unsigned mSettled = 8000;
	unsigned mMeasured = 48000;
};
constexpr Rates kRates[] = {{44100, 48000}, {48000, 44100}, {96000, 48000}};

// Where speeds end, and a half.
struct RatioRow
{
	char const* mName;
	Rates mRates;
};
constexpr RatioRow kRatios[] = {
	{"0.5", {24000, 48000}}, {"0.04", {1920, 48000}}, {"100", {4800000, 48000, 200, 1000}}};

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
	return static_cast<double>(inRates.mSettled + inRates.mMeasured) / inRates.mOutput;
}

// All at once, since a filter takes longer to work out than to run.
std::vector<Signal> Convert(
	ResamplerSubject const& inSubject, Rates const& inRates, std::vector<Sweep> const& inSweeps)
{
	double const duration = GetDuration(inRates);
	std::vector<Signal> inputs;
	for (Sweep const& sweep : inSweeps)
	{
		Signal& input = inputs.emplace_back(static_cast<std::size_t>((duration + 0.2) * inRates.mInput));
		for (std::size_t i = 0; i < input.size(); ++i)
		{
			double const seconds = static_cast<double>(i) / inRates.mInput;
			input[i] = static_cast<float>(std::sin(sweep.GetAngle(seconds, duration)));
		}
	}
	auto outputs =
		inSubject.mConvert(inputs, inRates.mInput, inRates.mOutput, inRates.mSettled + inRates.mMeasured);
	for (Signal& output : outputs)
	{
		output.erase(output.begin(), output.begin() + inRates.mSettled);
	}
	return outputs;
}

double MeasureNoise(
	ResamplerSubject const& inSubject, Rates const& inRates, Sweep const& inSweep, Signal const& inOutput)
{
	double const ahead = inSubject.mAhead / inRates.mInput;
	return FitWave(inOutput,
		[&](std::size_t inIndex)
		{
			double const seconds = static_cast<double>(inRates.mSettled + inIndex) / inRates.mOutput + ahead;
			return inSweep.GetAngle(seconds, GetDuration(inRates));
		})
		.mSignalToNoise;
}

// Whole decibels, which all machines agree on, as far as single precision reaches.
std::string FormatDecibels(double inDecibels)
{
	return inDecibels > 140.0 ? "over 140" : std::to_string(std::lround(inDecibels));
}

// inScale: of the frequencies, which are those for 48 kHz.
std::string DescribePair(
	ResamplerSubject const& inSubject, std::string const& inName, Rates const& inRates, double inScale)
{
	// The last one goes from a twentieth above the output's band to the end of the input's.
	std::vector<Sweep> const sweeps{{1000.0 * inScale, 1000.0 * inScale},
		{10000.0 * inScale, 10000.0 * inScale}, {20.0 * inScale, 16000.0 * inScale},
		{0.525 * inRates.mOutput, 0.5 * inRates.mInput}};
	auto const outputs = Convert(inSubject, inRates, sweeps);
	std::string text("| ");
	text.append(inSubject.mName).append(" | ").append(inName).append(" |");
	for (std::size_t i = 0; i < 3; ++i)
	{
		double const noise = MeasureNoise(inSubject, inRates, sweeps[i], outputs[i]);
		text.append(" ").append(FormatDecibels(noise)).append(" |");
	}
	bool const losesBand = inRates.mInput > inRates.mOutput;
	return text.append(" ")
		.append(losesBand ? FormatDecibels(-MeasureLevel(outputs[3])) : "·")
		.append(" |\n");
}

} // namespace

std::string DescribeResamplers()
{
	std::vector<ResamplerSubject> const subjects = ListResamplers();
	std::string text =
		"# Resamplers\n\n"
		"How clean a full-scale tone is after resampling, in decibels; higher is better. "
		"`linear`, `cubic` and `sinc` are the engine's, of which `--resampling engine` uses `cubic`; `exact` "
		"and `draft` are those of the host. "
		"`Docs/make-documents.sh` writes this page; the benchmarks measure the cost.\n\n"
		"![Noise and images by frequency](resamplers.svg)\n\n"
		"The first three columns are signal-to-noise ratios: the power of the closest matching tone over "
		"that of everything else. In the sweep, from 20 Hz to 16 kHz, a gain that changes with the frequency "
		"counts as noise too. The last column is the attenuation of a sweep that is beyond the output's "
		"band, "
		"from 5 % above half the output's rate to half the input's rate.\n\n"
		"| Resampler | Rates | 1 kHz | 10 kHz | Sweep | Alias rejection |\n|---|---|---|---|---|---|\n";
	for (ResamplerSubject const& subject : subjects)
	{
		for (Rates const& rates : kRates)
		{
			std::string const name = std::to_string(rates.mInput) + " to " + std::to_string(rates.mOutput);
			text += DescribePair(subject, name, rates, 1.0);
		}
	}
	text +=
		"\nThe same by ratio, in input samples per output sample: 0.5, and the ends of the range of speeds. "
		"Frequencies are fractions of the lower rate here: 1/48, 10/48, and from 1/2400 to 1/3.\n\n"
		"| Resampler | Ratio | 1/48 | 10/48 | Sweep | Alias rejection |\n|---|---|---|---|---|---|\n";
	for (ResamplerSubject const& subject : subjects)
	{
		for (RatioRow const& ratio : kRatios)
		{
			double const lower = std::min(ratio.mRates.mInput, ratio.mRates.mOutput);
			text += DescribePair(subject, ratio.mName, ratio.mRates, lower / 48000.0);
		}
	}
	return text;
}

} // namespace SonaroDocuments
