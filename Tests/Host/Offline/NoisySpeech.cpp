#include "NoisySpeech.h"

#include "zorvaudiodsp/FFT.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>

namespace SonaroHost::Testing
{

namespace
{

constexpr double kTau = 2.0 * std::numbers::pi;
constexpr double kSyllableSeconds = 0.22;
constexpr double kPauseSeconds = 0.5;
constexpr int kSyllables = 4;
// What is left out of a pause at either end.
constexpr double kMarginSeconds = 0.1;

// Frequencies and bandwidths of three vowels' formants.
constexpr std::array<std::array<double, 3>, 3> kVowels{
	{{730, 1090, 2440}, {270, 2290, 3010}, {300, 870, 2240}}};
constexpr std::array<double, 3> kWidths{90, 110, 170};

// A resonator of two poles.
struct Formant
{
	double Process(double inSample, double inFrequency, double inWidth, double inRate)
	{
		double const radius = std::exp(-std::numbers::pi * inWidth / inRate);
		double const out = inSample * (1.0 - radius) +
						   2.0 * radius * std::cos(kTau * inFrequency / inRate) * mLast -
						   radius * radius * mBefore;
		mBefore = mLast;
		mLast = out;
		return out;
	}

	double mLast = 0.0;
	double mBefore = 0.0;
};

// Near to normal, and the same everywhere.
double Draw(std::mt19937& ioRandom)
{
	double sum = 0.0;
	for (int i = 0; i < 6; ++i)
	{
		sum += static_cast<double>(ioRandom()) / static_cast<double>(std::mt19937::max()) - 0.5;
	}
	return sum;
}

double GetPower(std::vector<double> const& inSamples)
{
	double sum = 0.0;
	for (double const sample : inSamples)
	{
		sum += sample * sample;
	}
	return sum / static_cast<double>(inSamples.size());
}

double GetKurtosis(std::vector<double> const& inSamples, std::vector<bool> const& inIsPause)
{
	constexpr std::size_t kFrame = 1024;
	dsp::FFT transform(kFrame);
	std::vector<std::vector<double>> powers(kFrame / 2);
	std::array<float, kFrame> frame{};
	for (std::size_t first = 0; first + kFrame <= inSamples.size(); first += kFrame / 2)
	{
		if (!inIsPause[first] || !inIsPause[first + kFrame - 1])
		{
			continue;
		}
		for (std::size_t i = 0; i < kFrame; ++i)
		{
			double const window = std::sin(std::numbers::pi * (static_cast<double>(i) + 0.5) / kFrame);
			frame[i] = static_cast<float>(window * window * inSamples[first + i]);
		}
		transform.Forward(frame.data());
		for (std::size_t bin = 4; bin < kFrame / 2; ++bin)
		{
			powers[bin].push_back(std::norm(std::complex<double>(frame[bin], frame[kFrame - bin])));
		}
	}
	double second = 0.0;
	double fourth = 0.0;
	double count = 0.0;
	for (std::vector<double> const& ofBin : powers)
	{
		double mean = 0.0;
		for (double const power : ofBin)
		{
			mean += power / static_cast<double>(ofBin.size());
		}
		for (double const power : ofBin)
		{
			double const deviation = power / mean - 1.0;
			second += deviation * deviation;
			fourth += deviation * deviation * deviation * deviation;
			count += 1.0;
		}
	}
	return fourth * count / (second * second);
}

} // namespace

NoisySpeech::NoisySpeech(Noise inNoise, int inSampleRate, double inSeconds, double inRatioDecibels)
	: mSampleRate(inSampleRate)
{
	std::mt19937 random(18);
	std::array<Formant, 3> formants;
	double const wordSeconds = kSyllables * kSyllableSeconds;
	double phase = 0.0;
	double dark = 0.0;
	for (std::size_t i = 0; i < static_cast<std::size_t>(inSeconds * inSampleRate); ++i)
	{
		double const time = static_cast<double>(i) / inSampleRate;
		double const inWord = std::fmod(time, wordSeconds + kPauseSeconds);
		auto const syllable = static_cast<std::size_t>(time / kSyllableSeconds);
		double const envelope =
			inWord < wordSeconds ? std::pow(std::sin(std::numbers::pi * inWord / kSyllableSeconds), 2) : 0.0;
		phase += (120.0 + 20.0 * std::sin(kTau * time)) / inSampleRate;
		double voice = phase >= 1.0 ? 1.0 : 0.0;
		phase -= std::floor(phase);
		for (std::size_t formant = 0; formant < formants.size(); ++formant)
		{
			voice = formants[formant].Process(
				voice, kVowels[syllable % kVowels.size()][formant], kWidths[formant], inSampleRate);
		}
		mSpeech.push_back(envelope * voice);
		mIsPause.push_back(
			inWord > wordSeconds + kMarginSeconds && inWord < wordSeconds + kPauseSeconds - kMarginSeconds);

		double noise = Draw(random);
		dark += (noise - dark) * kTau * 200.0 / inSampleRate;
		noise = inNoise == Noise::kDark ? dark : noise;
		for (int harmonic = 1; inNoise == Noise::kHum && harmonic < 8; ++harmonic)
		{
			noise += 3.0 * std::sin(kTau * 50.0 * harmonic * time) / harmonic;
		}
		mNoise.push_back(noise);
	}
	double const gain =
		std::sqrt(GetPower(mSpeech) / GetPower(mNoise)) * std::pow(10.0, -inRatioDecibels / 20.0);
	double const level = 0.1 / std::sqrt(GetPower(mSpeech));
	std::ranges::for_each(mNoise, [&](double& ioSample) { ioSample *= gain * level; });
	std::ranges::for_each(mSpeech, [&](double& ioSample) { ioSample *= level; });
}

Sound NoisySpeech::Mix() const
{
	Sound sound{1, mSampleRate, {}};
	for (std::size_t i = 0; i < mSpeech.size(); ++i)
	{
		sound.mSamples.push_back(static_cast<float>(mSpeech[i] + mNoise[i]));
	}
	return sound;
}

double NoisySpeech::MeasureReduction(Sound const& inSound) const
{
	double before = 0.0;
	double after = 0.0;
	for (std::size_t i = 0; i < mNoise.size(); ++i)
	{
		before += mIsPause[i] ? mNoise[i] * mNoise[i] : 0.0;
		after += mIsPause[i] ? std::pow(static_cast<double>(inSound.mSamples[i]), 2) : 0.0;
	}
	return 10.0 * std::log10(before / after);
}

double NoisySpeech::MeasureSpeech(Sound const& inSound) const
{
	double alike = 0.0;
	double speech = 0.0;
	for (std::size_t i = 0; i < mSpeech.size(); ++i)
	{
		alike += mSpeech[i] * static_cast<double>(inSound.mSamples[i]);
		speech += mSpeech[i] * mSpeech[i];
	}
	return 20.0 * std::log10(alike / speech);
}

double NoisySpeech::MeasurePeaks(Sound const& inSound) const
{
	std::vector<double> const samples(inSound.mSamples.begin(), inSound.mSamples.end());
	return GetKurtosis(samples, mIsPause) / GetKurtosis(mNoise, mIsPause);
}

} // namespace SonaroHost::Testing
