#include "ResamplerRuns.h"

#include "Sonaro/AudioResamplerFactory.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace SN::Testing
{

char const* GetName(ResamplerKind inKind)
{
	constexpr char const* kNames[] = {"linear", "cubic", "sinc", "sinc, high quality"};
	return kNames[static_cast<unsigned>(inKind)];
}

RatePair::RatePair(double inRatio)
	: mInput(FrameRate::FromSamplesPerSecond(inRatio)),
	  mOutput(zorvmediatypes::kTicksPerSecond)
{
}

RatePair::RatePair(unsigned inInputRate, unsigned inOutputRate)
	: mInput(FrameRate::FromSamplesPerSecond(inInputRate)),
	  mOutput(FrameRate::FromSamplesPerSecond(inOutputRate))
{
}

InterfaceRef<IAudioResampler> MakeResampler(
	ResamplerKind inKind, RatePair const& inRates, unsigned inNumChannels)
{
	constexpr RenderQuality kQualities[] = {
		RenderQuality::kDraft, RenderQuality::kMedium, RenderQuality::kMaximum, RenderQuality::kMaximum};
	auto const resampler =
		AudioResamplerFactory::CreateAudioResampler(kQualities[static_cast<unsigned>(inKind)]);
	resampler->Init(
		inRates.mInput, inRates.mOutput, inNumChannels, inKind == ResamplerKind::kSincHighQuality);
	return resampler;
}

Signal PullThrough(
	IAudioResampler& ioResampler, Signal const& inInput, unsigned inNumOutput, unsigned inBlock)
{
	return PullChannelsThrough(ioResampler, {inInput}, inNumOutput, inBlock)[0];
}

std::vector<Signal> PullChannelsThrough(
	IAudioResampler& ioResampler, std::vector<Signal> const& inInputs, unsigned inNumOutput, unsigned inBlock)
{
	std::vector<Signal> results(inInputs.size());
	std::size_t cursor = 0;
	for (unsigned done = 0; done < inNumOutput; done += inBlock)
	{
		unsigned const numInput = ioResampler.GetInputSampleCount(inBlock);
		dsp::AudioBuffer input(inInputs.size(), numInput);
		dsp::AudioBuffer output(inInputs.size(), inBlock);
		for (std::size_t channel = 0; channel < inInputs.size(); ++channel)
		{
			Signal const& samples = inInputs[channel];
			std::size_t const first = std::min(cursor, samples.size());
			std::copy_n(samples.data() + first, std::min<std::size_t>(samples.size() - first, numInput),
				input.GetChannel(channel));
		}
		ioResampler.Process(input, output, numInput, inBlock);
		unsigned const count = std::min(inBlock, inNumOutput - done);
		for (std::size_t channel = 0; channel < inInputs.size(); ++channel)
		{
			float const* const samples = output.GetChannel(channel);
			results[channel].insert(results[channel].end(), samples, samples + count);
		}
		cursor += numInput;
	}
	return results;
}

Signal MakeTone(double inFrequency, unsigned inCount)
{
	Signal samples(inCount);
	for (unsigned i = 0; i < inCount; ++i)
	{
		samples[i] = static_cast<float>(std::sin(2.0 * std::numbers::pi * inFrequency * i));
	}
	return samples;
}

ToneFit FitTone(Signal const& inMeasured, double inFrequency, double inFirst, double inStep)
{
	return FitWave(inMeasured, [=](std::size_t inIndex)
		{ return 2.0 * std::numbers::pi * inFrequency * (inFirst + static_cast<double>(inIndex) * inStep); });
}

ToneFit FitWave(Signal const& inMeasured, std::function<double(std::size_t)> const& inAngle)
{
	// The normal equations of sine and cosine.
	double ss = 0.0;
	double cc = 0.0;
	double sc = 0.0;
	double sm = 0.0;
	double cm = 0.0;
	double power = 0.0;
	std::vector<double> sines;
	std::vector<double> cosines;
	for (std::size_t i = 0; i < inMeasured.size(); ++i)
	{
		double const angle = inAngle(i);
		double const s = sines.emplace_back(std::sin(angle));
		double const c = cosines.emplace_back(std::cos(angle));
		double const m = static_cast<double>(inMeasured[i]);
		ss += s * s;
		cc += c * c;
		sc += s * c;
		sm += s * m;
		cm += c * m;
		power += m * m;
	}
	double const determinant = ss * cc - sc * sc;
	double const sine = (sm * cc - cm * sc) / determinant;
	double const cosine = (cm * ss - sm * sc) / determinant;
	// The rest by itself: in the difference of the powers, what lies below -130 dB would be lost.
	double rest = 0.0;
	for (std::size_t i = 0; i < inMeasured.size(); ++i)
	{
		double const off = static_cast<double>(inMeasured[i]) - sine * sines[i] - cosine * cosines[i];
		rest += off * off;
	}
	return {std::hypot(sine, cosine), std::atan2(cosine, sine),
		10.0 * std::log10((sine * sm + cosine * cm) / std::max(rest, 1e-17 * power))};
}

double MeasureLevel(Signal const& inSamples)
{
	double power = 0.0;
	for (float const sample : inSamples)
	{
		power += static_cast<double>(sample) * static_cast<double>(sample);
	}
	return 10.0 * std::log10(2.0 * power / static_cast<double>(inSamples.size()));
}

} // namespace SN::Testing
