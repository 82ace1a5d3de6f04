#include "EarSpectra.h"

#include "zorvaudiodsp/FFT.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace SonaroHost
{

namespace
{

// 11.6 milliseconds: bins are 86 Hz apart.
constexpr unsigned kSizeAt44100 = 512;
constexpr double kSpectraReferenceRate = 44100.0;

unsigned ChooseSize(double inSampleRate)
{
	double const factor = inSampleRate / kSpectraReferenceRate;
	unsigned size = kSizeAt44100;
	while (factor * kSizeAt44100 > 1.5 * size)
	{
		size *= 2;
	}
	return size;
}

EarSpectra::Components MakePlaneWave(EarMeasurements::Direction const& inDirection)
{
	double const level = std::cos(inDirection.mElevation);
	return {1.0, std::sin(inDirection.mAzimuth) * level, std::sin(inDirection.mElevation),
		std::cos(inDirection.mAzimuth) * level};
}

} // namespace

EarSpectra::EarSpectra(EarMeasurements const& inMeasurements)
{
	for (EarMeasurements::Direction const& direction : inMeasurements.mDirections)
	{
		mFields.push_back(MakePlaneWave(direction));
	}
	FindAreas();
	unsigned const size = ChooseSize(inMeasurements.mSampleRate);
	mSpacing = inMeasurements.mSampleRate / size;
	mNumBins = size / 2 + 1;
	Transform(inMeasurements, size);
	EqualiseDiffuseField();
	RemoveCommonPhase();
}

// By points that are evenly spread over the sphere (a Fibonacci lattice), each of which belongs to the nearest direction.
void EarSpectra::FindAreas()
{
	constexpr unsigned kPoints = 8192;
	double const turn = std::numbers::pi * (3.0 - std::sqrt(5.0));
	mAreas.assign(mFields.size(), 0.0);
	for (unsigned i = 0; i < kPoints; ++i)
	{
		double const z = 1.0 - (2.0 * i + 1.0) / kPoints;
		double const level = std::sqrt(1.0 - z * z);
		Components const point(0.0, std::sin(turn * i) * level, z, std::cos(turn * i) * level);
		auto const nearest = std::ranges::max_element(
			mFields, {}, [&point](Components const& inField) { return point.dot(inField); });
		mAreas[static_cast<std::size_t>(nearest - mFields.begin())] += 1.0 / kPoints;
	}
}

double EarSpectra::GetSpread() const
{
	Eigen::Matrix4d moments = Eigen::Matrix4d::Zero();
	for (Components const& field : mFields)
	{
		moments += field * field.transpose() / static_cast<double>(mFields.size());
	}
	return Eigen::SelfAdjointEigenSolver<Eigen::Matrix4d>(moments).eigenvalues().minCoeff();
}

// What is longer than a transform is folded into it, which gives the same spectrum at its frequencies.
void EarSpectra::Transform(EarMeasurements const& inMeasurements, unsigned inSize)
{
	dsp::FFT fft(inSize);
	std::vector<float> data(inSize);
	for (std::size_t ear = 0; ear < mSpectra.size(); ++ear)
	{
		mSpectra[ear].resize(mNumBins * mFields.size());
		for (std::size_t direction = 0; direction < mFields.size(); ++direction)
		{
			float const* const taps = inMeasurements.GetResponse(direction, ear);
			std::ranges::fill(data, 0.0f);
			for (std::size_t tap = 0; tap < inMeasurements.mNumTaps; ++tap)
			{
				data[tap % inSize] += taps[tap];
			}
			fft.Forward(data.data());
			double const delay = inMeasurements.mDirections[direction].mDelays[ear];
			for (std::size_t bin = 0; bin < mNumBins; ++bin)
			{
				bool const isReal = bin == 0 || bin + 1 == mNumBins;
				std::complex<double> const value(
					static_cast<double>(data[bin]), isReal ? 0.0 : static_cast<double>(data[inSize - bin]));
				mSpectra[ear][bin * mFields.size() + direction] =
					value *
					std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(bin) * delay / inSize);
			}
		}
	}
}

void EarSpectra::EqualiseDiffuseField()
{
	// What is more than 40 dB below the loudest frequency is noise and stays soft.
	constexpr double kLowest = 1e-4;
	std::vector<double> powers(mNumBins);
	for (std::size_t bin = 0; bin < mNumBins; ++bin)
	{
		for (std::size_t direction = 0; direction < mFields.size(); ++direction)
		{
			powers[bin] += mAreas[direction] / 2.0 *
						   (std::norm(Get(0, bin, direction)) + std::norm(Get(1, bin, direction)));
		}
	}
	double const lowest = kLowest * *std::ranges::max_element(powers);
	mIsHeard = lowest > 0.0;
	for (Spectra& spectra : mSpectra)
	{
		for (std::size_t i = 0; mIsHeard && i < spectra.size(); ++i)
		{
			spectra[i] /= std::sqrt(std::max(powers[i / mFields.size()], lowest));
		}
	}
}

void EarSpectra::RemoveCommonPhase()
{
	Eigen::Matrix4d moments = Eigen::Matrix4d::Identity() * 1e-9;
	for (std::size_t direction = 0; direction < mFields.size(); ++direction)
	{
		moments += mAreas[direction] * mFields[direction] * mFields[direction].transpose();
	}
	// The row that gives W of the least squares.
	Components const row = moments.ldlt().solve(Components::Unit(0));
	for (std::size_t bin = 0; bin < mNumBins; ++bin)
	{
		std::complex<double> common;
		for (std::size_t direction = 0; direction < mFields.size(); ++direction)
		{
			common += mAreas[direction] * row.dot(mFields[direction]) *
					  (Get(0, bin, direction) + Get(1, bin, direction));
		}
		std::complex<double> const turn = std::polar(1.0, -std::arg(common));
		for (Spectra& spectra : mSpectra)
		{
			for (std::size_t direction = 0; direction < mFields.size(); ++direction)
			{
				spectra[bin * mFields.size() + direction] *= turn;
			}
		}
	}
}

} // namespace SonaroHost
