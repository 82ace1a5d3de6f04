#include "zorvaudiofilters/ambisonics/binauralizer/HRIR.h"
#include "Support/Common.h"
#include "zorvaudiodsp/FFT.h"
#include "zorvaudiodsp/ambi/AmbisonicsBinauralizer.h"

#include <mysofa.h>

#include <complex>
#include <numbers>

namespace zorvaudiofilters::ambisonics::binauralizer::HRIRTest
{

using dsp::ambi::AmbisonicsBinauralizer;
using dsp::ambi::ChannelOrdering;
using dsp::ambi::Normalization;

using Ears = std::array<std::vector<float>, 2>;
using Spectrum = std::vector<std::complex<double>>;
using Spectra = std::array<Spectrum, 2>;

constexpr unsigned kRate = 44100;
constexpr unsigned kSize = 8192;
constexpr double kRadians = std::numbers::pi / 180.0;

// What the manikin's ears hear of an impulse, and from where, in degrees.
struct Measurement
{
	double mAzimuth = 0.0;
	double mElevation = 0.0;
	Ears mResponses;
};

// The measured directions nearest to eight at each of three elevations, the one above and the lowest one in front.
std::vector<Measurement> ReadMeasurements()
{
	int error = 0;
	std::unique_ptr<MYSOFA_HRTF, void (*)(MYSOFA_HRTF*)> const sofa(
		mysofa_load(SONARO_KEMAR_MEASUREMENTS, &error), &mysofa_free);
	if (!sofa || sofa->DataSamplingRate.values[0] != static_cast<float>(kRate))
	{
		throw std::runtime_error("the measurements cannot be read from " SONARO_KEMAR_MEASUREMENTS);
	}
	std::vector<Measurement> found;
	auto const find = [&](double inAzimuth, double inElevation)
	{
		auto const getDistance = [&](unsigned inIndex)
		{
			float const* const position = sofa->SourcePosition.values + 3 * inIndex;
			return std::fabs(position[1] - inElevation) +
				   std::fabs(std::remainder(position[0] - inAzimuth, 360.0));
		};
		unsigned nearest = 0;
		for (unsigned i = 0; i < sofa->M; ++i)
		{
			nearest = getDistance(i) < getDistance(nearest) ? i : nearest;
		}
		float const* const position = sofa->SourcePosition.values + 3 * nearest;
		float const* const data = sofa->DataIR.values + 2 * nearest * sofa->N;
		found.push_back({position[0], position[1],
			{std::vector(data, data + sofa->N), std::vector(data + sofa->N, data + 2 * sofa->N)}});
	};
	for (double const elevation : {-30.0, 0.0, 30.0})
	{
		for (double azimuth = 0.0; azimuth < 360.0; azimuth += 45.0)
		{
			find(azimuth, elevation);
		}
	}
	find(0.0, 90.0);
	find(0.0, -40.0);
	return found;
}

std::unique_ptr<AmbisonicsBinauralizer> MakeDefault(unsigned inRate)
{
	auto binauralizer = std::make_unique<AmbisonicsBinauralizer>(
		inRate, kSize, 1, ChannelOrdering::kACN, Normalization::kSN3D);
	auto const responses = GetDefaultHRIR();
	binauralizer->Load(responses->GetDescriptor(), responses->GetLeftData(), responses->GetRightData());
	return binauralizer;
}

Ears Render(
	AmbisonicsBinauralizer& ioBinauralizer, std::vector<float> const& inSound, Measurement const& inDirection)
{
	double const level = std::cos(inDirection.mElevation * kRadians);
	double const gains[] = {1.0, std::sin(inDirection.mAzimuth * kRadians) * level,
		std::sin(inDirection.mElevation * kRadians), std::cos(inDirection.mAzimuth * kRadians) * level};
	std::array<std::vector<float>, 4> field;
	float const* inputs[4];
	for (unsigned k = 0; k < 4; ++k)
	{
		field[k].resize(kSize);
		std::transform(inSound.begin(), inSound.end(), field[k].begin(),
			[&](float inSample) { return static_cast<float>(gains[k] * inSample); });
		inputs[k] = field[k].data();
	}
	Ears ears{std::vector<float>(kSize), std::vector<float>(kSize)};
	float* const outputs[] = {ears[0].data(), ears[1].data()};
	ioBinauralizer.Process({}, kSize, 4, 2, inputs, outputs);
	return ears;
}

std::vector<float> Convolve(std::vector<float> const& inSound, std::vector<float> const& inResponse)
{
	std::vector<float> heard(kSize);
	for (std::size_t i = 0; i < heard.size(); ++i)
	{
		double sum = 0.0;
		for (std::size_t tap = 0; tap < inResponse.size() && tap <= i; ++tap)
		{
			sum += i - tap < inSound.size() ? double(inSound[i - tap]) * inResponse[tap] : 0.0;
		}
		heard[i] = static_cast<float>(sum);
	}
	return heard;
}

Spectrum Transform(std::vector<float> inSignal)
{
	static dsp::FFT sFFT(kSize);
	sFFT.Forward(inSignal.data());
	Spectrum spectrum(kSize / 2);
	for (unsigned k = 1; k < kSize / 2; ++k)
	{
		spectrum[k] = {inSignal[k], inSignal[kSize - k]};
	}
	return spectrum;
}

unsigned GetBin(double inFrequency, unsigned inRate)
{
	return static_cast<unsigned>(std::lround(inFrequency * kSize / inRate));
}

Spectra Transform(Ears const& inEars)
{
	return {Transform(inEars[0]), Transform(inEars[1])};
}

// How the ears differ in a band: the left one's level over the right one's, in decibels, and how much earlier it hears,
// in samples.
struct Difference
{
	double mLevel;
	double mTime;
};

// inWidth: in octaves; 0 for a tone on the bin nearest to the frequency.
Difference Compare(Spectra const& inEars, double inFrequency, double inWidth)
{
	auto const& [left, right] = inEars;
	auto const getBin = [&](double inOctaves) { return GetBin(inFrequency * std::exp2(inOctaves), kRate); };
	double powers[2] = {};
	std::complex<double> both;
	for (unsigned k = getBin(-inWidth / 2.0); k <= getBin(inWidth / 2.0); ++k)
	{
		powers[0] += std::norm(left[k]);
		powers[1] += std::norm(right[k]);
		both += left[k] * std::conj(right[k]);
	}
	return {10.0 * std::log10(powers[0] / powers[1]),
		std::arg(both) / (2.0 * std::numbers::pi * inFrequency) * kRate};
}

TEST(HRIR, EarsDifferAsTheMeasuredOnesDo)
{
	std::vector<float> noise(kSize - 1024);
	std::mt19937 random(1);
	std::uniform_real_distribution<float> samples(-1.0f, 1.0f);
	std::generate(noise.begin(), noise.end(), [&] { return samples(random); });

	auto const binauralizer = MakeDefault(kRate);
	std::vector<std::pair<Spectra, Spectra>> heard;
	for (Measurement const& direction : ReadMeasurements())
	{
		binauralizer->Reset(kRate, kSize);
		Ears const measured{
			Convolve(noise, direction.mResponses[0]), Convolve(noise, direction.mResponses[1])};
		heard.push_back({Transform(Render(*binauralizer, noise, direction)), Transform(measured)});
	}
	ASSERT_EQ(heard.size(), 26u);

	// Third octaves of noise, and tones. The limits, in the root mean square over the directions, are what four
	// components can do; the least squares of the responses have 5.8 dB from 1 to 4 kHz. A time of 0 is not compared.
	struct Case
	{
		double mFrequency;
		double mWidth;
		double mLevelLimit;
		double mTimeLimit;
	};
	constexpr double kThird = 1.0 / 3.0;
	Case const cases[] = {
		{200.0, kThird, 0.5, 1.7},
		{250.0, kThird, 0.5, 1.0},
		{315.0, kThird, 0.5, 1.5},
		{400.0, kThird, 1.0, 1.5},
		{500.0, kThird, 1.0, 1.7},
		{630.0, kThird, 1.0, 3.0},
		{800.0, kThird, 1.0, 4.0},
		{1000.0, kThird, 1.5, 0.0},
		{1250.0, kThird, 1.6, 0.0},
		{1600.0, kThird, 1.7, 0.0},
		{2000.0, kThird, 2.4, 0.0},
		{2500.0, kThird, 2.4, 0.0},
		{3150.0, kThird, 2.4, 0.0},
		{4000.0, kThird, 2.7, 0.0},
		{200.0, 0.0, 0.5, 2.2},
		{400.0, 0.0, 1.0, 1.5},
		{800.0, 0.0, 1.5, 4.2},
		{1600.0, 0.0, 2.0, 0.0},
		{3150.0, 0.0, 2.2, 0.0},
	};
	for (Case const& test : cases)
	{
		double level = 0.0;
		double time = 0.0;
		for (auto const& [rendered, measured] : heard)
		{
			Difference const is = Compare(rendered, test.mFrequency, test.mWidth);
			Difference const wanted = Compare(measured, test.mFrequency, test.mWidth);
			level += std::pow(is.mLevel - wanted.mLevel, 2.0) / 26.0;
			time += std::pow(std::remainder(is.mTime - wanted.mTime, kRate / test.mFrequency), 2.0) / 26.0;
		}
		SCOPED_TRACE(
			std::to_string(test.mFrequency) + (test.mWidth > 0.0 ? " Hz of noise" : " Hz of a tone"));
		EXPECT_LT(std::sqrt(level), test.mLevelLimit);
		EXPECT_LT(test.mTimeLimit > 0.0 ? std::sqrt(time) : -1.0, test.mTimeLimit);
	}
}

// All rates hear the same: the spectra of an impulse from the left in front.
TEST(HRIR, AllRatesHearTheSame)
{
	constexpr double kFrequencies[] = {100.0, 300.0, 1000.0, 3000.0, 6000.0, 12000.0};
	auto const getDecibels = [&](unsigned inRate)
	{
		std::vector<float> impulse(kSize);
		impulse[0] = 1.0f;
		std::vector<double> levels;
		for (Spectrum const& ear : Transform(Render(*MakeDefault(inRate), impulse, {40.0, 10.0, {}})))
		{
			for (double const frequency : kFrequencies)
			{
				levels.push_back(20.0 * std::log10(std::abs(ear[GetBin(frequency, inRate)])));
			}
		}
		return levels;
	};
	auto const wanted = getDecibels(kRate);
	for (unsigned const rate : {32000u, 48000u, 88200u, 96000u, 192000u})
	{
		EXPECT_THAT(getDecibels(rate), testing::Pointwise(testing::DoubleNear(0.3), wanted)) << rate;
	}
}

} // namespace zorvaudiofilters::ambisonics::binauralizer::HRIRTest
