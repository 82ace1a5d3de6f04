// Prints what stretchers do to tones, a chord, clicks, speech and a stereo image, as tables in Markdown with a row for
// each stretcher and speed. With an argument, the rows of that stretcher alone. Everything is synthesised, so that what
// comes out is compared with the same sound synthesised at the new speed.
//
// Tables  Purity in dB, higher is better. In all others less is better: clicks in milliseconds; speech in dB, the
//         distance of its spectrum from the ideal; the phase between the channels of a chord in degrees, and the level
//         of their sum in dB.

#include "StretchPeers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <random>

namespace
{

using namespace StretchPeers;
using Spectrum = std::vector<std::complex<double>>;

constexpr double kTau = 2.0 * std::numbers::pi;
// C, E, G and C in equal temperament.
constexpr std::array<double, 4> kChord{261.626, 329.628, 391.995, 523.251};

// In place; the size is a power of 2.
void Transform(Spectrum& ioData)
{
	std::size_t const size = ioData.size();
	for (std::size_t i = 1, j = 0; i < size; ++i)
	{
		std::size_t bit = size >> 1;
		for (; j & bit; bit >>= 1)
		{
			j ^= bit;
		}
		j ^= bit;
		if (i < j)
		{
			std::swap(ioData[i], ioData[j]);
		}
	}
	for (std::size_t length = 2; length <= size; length *= 2)
	{
		for (std::size_t k = 0; k < length / 2; ++k)
		{
			std::complex<double> const turn =
				std::polar(1.0, -kTau * static_cast<double>(k) / static_cast<double>(length));
			for (std::size_t start = k; start < size; start += length)
			{
				std::complex<double> const odd = ioData[start + length / 2] * turn;
				ioData[start + length / 2] = ioData[start] - odd;
				ioData[start] += odd;
			}
		}
	}
}

// Of a part of a sound in a Blackman-Harris window.
Spectrum SpectrumOf(std::vector<float> const& inSound, std::size_t inStart, std::size_t inSize)
{
	Spectrum spectrum(inSize);
	for (std::size_t i = 0; i < inSize && inStart + i < inSound.size(); ++i)
	{
		double const phase = kTau * static_cast<double>(i) / static_cast<double>(inSize);
		double const window = 0.35875 - 0.48829 * std::cos(phase) + 0.14128 * std::cos(2.0 * phase) -
							  0.01168 * std::cos(3.0 * phase);
		spectrum[i] = window * static_cast<double>(inSound[inStart + i]);
	}
	Transform(spectrum);
	return spectrum;
}

// With noise at -90 dB, as every recording has it: in its absence, stretchers that follow peaks of a spectrum or look for
// transients take rounding errors for sound.
std::vector<float> MakeTones(std::vector<double> const& inFrequencies, double inSeconds, double inPhase = 0.0)
{
	std::mt19937 random(11);
	std::normal_distribution<double> noise(0.0, 3e-5);
	std::vector<float> sound(static_cast<std::size_t>(inSeconds * kSampleRate));
	for (std::size_t i = 0; i < sound.size(); ++i)
	{
		double sum = noise(random);
		for (double const frequency : inFrequencies)
		{
			sum += 0.2 * std::sin(kTau * frequency * static_cast<double>(i) / kSampleRate + inPhase);
		}
		sound[i] = static_cast<float>(sum);
	}
	return sound;
}

// What is within 6 Hz of the frequencies, against all the rest, in decibels.
double MeasurePurity(std::vector<float> const& inSound, std::vector<double> const& inFrequencies)
{
	constexpr std::size_t size = 65536;
	Spectrum const spectrum = SpectrumOf(inSound, inSound.size() / 4, size);
	double inside = 0.0;
	double outside = 0.0;
	for (std::size_t i = 0; i < size / 2; ++i)
	{
		double const frequency = static_cast<double>(i) * kSampleRate / size;
		bool const isInside = std::any_of(inFrequencies.begin(), inFrequencies.end(),
			[&](double inFrequency) { return std::fabs(frequency - inFrequency) < 6.0; });
		(isInside ? inside : outside) += std::norm(spectrum[i]);
	}
	return 10.0 * std::log10(inside / outside);
}

// Bursts of noise that fade within two milliseconds, 241 milliseconds apart.
constexpr double kClickSpacing = 0.241;

std::vector<float> MakeClicks(double inSeconds)
{
	std::mt19937 random(3);
	std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
	std::vector<float> sound(static_cast<std::size_t>(inSeconds * kSampleRate));
	for (double time = kClickSpacing; time + kClickSpacing < inSeconds; time += kClickSpacing)
	{
		auto const start = static_cast<std::size_t>(time * kSampleRate);
		for (std::size_t i = 0; i < 200; ++i)
		{
			sound[start + i] = noise(random) * std::exp(-0.03f * static_cast<float>(i));
		}
	}
	return sound;
}

struct ClickMeasures
{
	// All in milliseconds: from the first sample that is within 40 dB of the largest to the first within 6 dB; the time that holds 98 percent of
	// the energy; and how far clicks are off their place, apart from a delay of all. A row has the differences of the
	// first two from those of the clicks themselves.
	double mPreEcho = 0.0;
	double mSmear = 0.0;
	double mOff = 0.0;
};

// Of a click within a stretch of sound; its place counts from the start of that.
ClickMeasures MeasureClick(std::vector<float> const& inSound, std::size_t inStart, std::size_t inCount)
{
	constexpr double milliseconds = 1000.0 / kSampleRate;
	std::vector<double> energies;
	double total = 0.0;
	for (std::size_t i = inStart; i < inStart + inCount; ++i)
	{
		energies.push_back(std::pow(static_cast<double>(inSound[i]), 2.0));
		total += energies.back();
	}
	double const largest = *std::max_element(energies.begin(), energies.end());
	auto const findAbove = [&](double inPart)
	{
		return std::find_if(
			energies.begin(), energies.end(), [&](double inEnergy) { return inEnergy > inPart * largest; });
	};
	double sum = 0.0;
	double width = 0.0;
	for (double const energy : energies)
	{
		sum += energy;
		width += sum > 0.01 * total && sum < 0.99 * total ? 1.0 : 0.0;
	}
	auto const first = findAbove(1e-4);
	return {static_cast<double>(findAbove(0.25) - first) * milliseconds, width * milliseconds,
		static_cast<double>(first - energies.begin()) * milliseconds};
}

ClickMeasures MeasureClicks(std::vector<float> const& inSound, double inRatio)
{
	ClickMeasures measures;
	std::vector<double> places;
	double const spacing = kClickSpacing * inRatio * kSampleRate;
	auto const half = static_cast<std::size_t>(spacing / 2.0);
	for (double place = 4.0 * spacing; place + spacing < static_cast<double>(inSound.size());
		 place += spacing)
	{
		ClickMeasures const click = MeasureClick(inSound, static_cast<std::size_t>(place) - half, 2 * half);
		measures.mPreEcho += click.mPreEcho;
		measures.mSmear += click.mSmear;
		places.push_back(click.mOff);
	}
	auto const middle = places.begin() + static_cast<std::ptrdiff_t>(places.size() / 2);
	std::nth_element(places.begin(), middle, places.end());
	double const delay = *middle;
	for (double const place : places)
	{
		measures.mOff += std::fabs(place - delay);
	}
	auto const count = static_cast<double>(places.size());
	return {measures.mPreEcho / count, measures.mSmear / count, measures.mOff / count};
}

// A voice: pulses at a moving pitch and noise, through three resonances that move, syllable by syllable.
std::vector<float> MakeSpeech(double inSeconds, double inRatio)
{
	std::mt19937 random(5);
	std::uniform_real_distribution<double> noise(-1.0, 1.0);
	std::vector<float> sound(static_cast<std::size_t>(inSeconds * inRatio * kSampleRate));
	std::array<std::array<double, 2>, 3> states{};
	double phase = 0.0;
	for (std::size_t i = 0; i < sound.size(); ++i)
	{
		double const time = static_cast<double>(i) / kSampleRate / inRatio;
		double const syllable = std::fmod(time, 0.22) / 0.22;
		double const pitch = 120.0 + 25.0 * std::sin(kTau * 0.7 * time) + 10.0 * std::sin(kTau * 2.9 * time);
		phase += pitch / kSampleRate;
		double const pulse = phase >= 1.0 ? 1.0 : 0.0;
		phase -= pulse;
		bool const isVoiced = syllable > 0.22;
		double const loudness = isVoiced ? std::sin(std::numbers::pi * (syllable - 0.22) / 0.78) : 0.3;
		double value = loudness * (isVoiced ? pulse : 0.15 * noise(random));
		std::array<double, 3> const centres{500.0 + 250.0 * std::sin(kTau * 1.3 * time),
			1500.0 + 600.0 * std::sin(kTau * 1.9 * time + 1.0), isVoiced ? 2600.0 : 5200.0};
		double sum = 0.0;
		for (std::size_t k = 0; k < 3; ++k)
		{
			double const radius = std::exp(-std::numbers::pi * 90.0 / kSampleRate);
			double const next = value +
								2.0 * radius * std::cos(kTau * centres[k] / kSampleRate) * states[k][0] -
								radius * radius * states[k][1];
			states[k] = {next, states[k][0]};
			sum += next * (k == 0 ? 1.0 : k == 1 ? 0.6 : 0.35);
		}
		sound[i] = static_cast<float>(0.02 * sum);
	}
	return sound;
}

// Levels in decibels of bands a third of an octave wide.
std::vector<std::vector<double>> BandsOf(std::vector<float> const& inSound)
{
	constexpr std::size_t size = 1024;
	std::vector<std::vector<double>> frames;
	for (std::size_t start = 0; start + size <= inSound.size(); start += size / 2)
	{
		Spectrum const spectrum = SpectrumOf(inSound, start, size);
		std::vector<double> bands;
		for (double frequency = 200.0; frequency < 8000.0; frequency *= std::cbrt(2.0))
		{
			double energy = 1e-7;
			for (auto i = static_cast<std::size_t>(frequency * size / kSampleRate);
				 i <= static_cast<std::size_t>(frequency * std::cbrt(2.0) * size / kSampleRate); ++i)
			{
				energy += std::norm(spectrum[i]);
			}
			bands.push_back(10.0 * std::log10(energy));
		}
		frames.push_back(bands);
	}
	return frames;
}

// The mean over time of the root mean square of differences over bands, at the delay that gives the least.
double MeasureSpectralDistance(std::vector<float> const& inSound, std::vector<float> const& inIdeal)
{
	auto const ideal = BandsOf(inIdeal);
	double least = 1e9;
	for (std::size_t delay = 0; delay < 9600; delay += 160)
	{
		auto const frames =
			BandsOf(std::vector<float>(inSound.begin() + static_cast<std::ptrdiff_t>(delay), inSound.end()));
		double sum = 0.0;
		// What a late output lacks at its end is not compared.
		std::size_t const count = std::min(frames.size(), ideal.size()) * 9 / 10;
		for (std::size_t i = 0; i < count; ++i)
		{
			double squares = 0.0;
			for (std::size_t band = 0; band < ideal[i].size(); ++band)
			{
				squares += std::pow(frames[i][band] - ideal[i][band], 2.0);
			}
			sum += std::sqrt(squares / static_cast<double>(ideal[i].size()));
		}
		least = std::min(least, sum / static_cast<double>(count));
	}
	return least;
}

struct ImageMeasures
{
	// Root mean square of how far the phase between the channels is off, in degrees, and the level of their sum, in
	// decibels, over time and notes.
	double mPhase = 0.0;
	double mLevel = 0.0;
};

// A chord of which each note has a phase of its own between the channels: 0, 30, 60 and 90 degrees.
Sound MakePannedChord(double inSeconds)
{
	Sound sound(2, std::vector<float>(static_cast<std::size_t>(inSeconds * kSampleRate)));
	for (std::size_t note = 0; note < kChord.size(); ++note)
	{
		double const angle = static_cast<double>(note) * std::numbers::pi / 6.0;
		double const pan = (static_cast<double>(note) + 0.5) * std::numbers::pi / 8.0;
		auto const left = MakeTones({kChord[note]}, inSeconds);
		auto const right = MakeTones({kChord[note]}, inSeconds, angle);
		for (std::size_t i = 0; i < left.size(); ++i)
		{
			sound[0][i] += static_cast<float>(std::cos(pan)) * left[i];
			sound[1][i] += static_cast<float>(std::sin(pan)) * right[i];
		}
	}
	return sound;
}

ImageMeasures MeasureImage(Sound const& inSound)
{
	constexpr std::size_t size = 8192;
	ImageMeasures measures;
	double count = 0.0;
	for (std::size_t start = inSound[0].size() / 4; start + size < inSound[0].size() * 9 / 10;
		 start += size / 4)
	{
		Spectrum const left = SpectrumOf(inSound[0], start, size);
		Spectrum const right = SpectrumOf(inSound[1], start, size);
		for (std::size_t note = 0; note < kChord.size(); ++note)
		{
			auto const bin = static_cast<std::size_t>(std::lround(kChord[note] * size / kSampleRate));
			double const angle = static_cast<double>(note) * std::numbers::pi / 6.0;
			double const pan = (static_cast<double>(note) + 0.5) * std::numbers::pi / 8.0;
			double const off = std::arg(right[bin] / left[bin] * std::polar(1.0, -angle));
			double const ideal = std::abs(std::cos(pan) + std::sin(pan) * std::polar(1.0, angle));
			double const parts = std::sqrt(std::norm(left[bin]) + std::norm(right[bin]));
			double const level = 20.0 * std::log10(std::abs(left[bin] + right[bin]) / (parts * ideal));
			measures.mPhase += std::pow(off * 360.0 / kTau, 2.0);
			measures.mLevel += level * level;
			count += 1.0;
		}
	}
	return {std::sqrt(measures.mPhase / count), std::sqrt(measures.mLevel / count)};
}

constexpr std::array<double, 5> kTones{100.0, 250.0, 1000.0, 3000.0, 8000.0};

struct Row
{
	std::string mName;
	double mRatio = 1.0;
	std::array<double, kTones.size()> mTones{};
	double mChord = 0.0;
	ClickMeasures mClicks;
	double mSpeech = 0.0;
	ImageMeasures mImage;
};

Row Measure(Stretcher const& inStretcher, double inRatio)
{
	Row row;
	row.mName = inStretcher.mName;
	row.mRatio = inRatio;
	for (std::size_t i = 0; i < kTones.size(); ++i)
	{
		// Between the bins of any transform.
		double const frequency = kTones[i] + 0.3;
		row.mTones[i] =
			MeasurePurity(inStretcher.mStretch({MakeTones({frequency}, 6.0)}, inRatio)[0], {frequency});
	}
	std::vector<double> const chord(kChord.begin(), kChord.end());
	row.mChord = MeasurePurity(inStretcher.mStretch({MakeTones(chord, 6.0)}, inRatio)[0], chord);
	static ClickMeasures const sIdeal = MeasureClicks(MakeClicks(12.0), 1.0);
	double const ratio = inStretcher.mGetRatio(inRatio);
	row.mClicks = MeasureClicks(inStretcher.mStretch({MakeClicks(12.0)}, inRatio)[0], ratio);
	row.mClicks.mPreEcho = std::fabs(row.mClicks.mPreEcho - sIdeal.mPreEcho);
	row.mClicks.mSmear = std::fabs(row.mClicks.mSmear - sIdeal.mSmear);
	row.mSpeech = MeasureSpectralDistance(
		inStretcher.mStretch({MakeSpeech(5.0, 1.0)}, inRatio)[0], MakeSpeech(5.0, ratio));
	row.mImage = MeasureImage(inStretcher.mStretch(MakePannedChord(5.0), inRatio));
	return row;
}

void PrintStart(Row const& inRow)
{
	std::printf("| %s | %.3g |", inRow.mName.c_str(), 1.0 / inRow.mRatio);
}

void PrintTones(std::vector<Row> const& inRows)
{
	std::printf(
		"| | Speed | 100 Hz | 250 Hz | 1 kHz | 3 kHz | 8 kHz | Chord |\n|---|---|---|---|---|---|---|---|\n");
	for (Row const& row : inRows)
	{
		PrintStart(row);
		for (double const tone : row.mTones)
		{
			std::printf(" %.0f |", tone);
		}
		std::printf(" %.0f |\n", row.mChord);
	}
}

void PrintOthers(std::vector<Row> const& inRows)
{
	std::printf("\n| | Speed | Pre-echo | Smear | Off its time | Speech | Phase | Sum |\n"
				"|---|---|---|---|---|---|---|---|\n");
	for (Row const& row : inRows)
	{
		PrintStart(row);
		std::printf(" %.2f | %.2f | %.2f | %.1f | %.2f | %.2f |\n", row.mClicks.mPreEcho, row.mClicks.mSmear,
			row.mClicks.mOff, row.mSpeech, row.mImage.mPhase, row.mImage.mLevel);
	}
}

} // namespace

int main(int inCount, char** inArguments)
{
	std::vector<Row> rows;
	for (Stretcher const& stretcher : GetStretchers())
	{
		for (double const ratio : {0.8, 1.25, 0.5, 2.0})
		{
			if (inCount == 1 || stretcher.mName == inArguments[1])
			{
				rows.push_back(Measure(stretcher, ratio));
			}
		}
	}
	PrintTones(rows);
	PrintOthers(rows);
	return 0;
}
