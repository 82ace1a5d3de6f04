#pragma once

#include "EarSpectra.h"
#include "SonaroHost/Binaural/Ears.h"

#include <Eigen/Core>

#include <cstddef>
#include <vector>

namespace SonaroHost
{

// Fits filters of W, Y, Z and X for each ear, so that their sum is like what the ear hears from each direction, as the
// built-in ones are made by Scripts/make-hrir-table.py: by the levels at the ears, the levels between them and, fading out
// from 600 to 1500 Hz, the times between them. Unlike those, the ears need not be alike.
//
// Method  At each frequency damped least squares (K. Levenberg, 1944; D. W. Marquardt, 1963) from the factors at the
//         frequency before it. Where times do not count, phases go on from there, which keeps the filters short.
class EarFit
{
public:
	explicit EarFit(EarSpectra const& inSpectra);

	// The filters of each ear at the measurements' rate, 2.9 milliseconds long: those whose spectra are nearest to the fit,
	// with the same weight for each octave.
	Ears::Taps MakeFilters(double inSampleRate, std::size_t inNumTaps) const;
	// How many taps that are.
	static std::size_t CountTaps(double inSampleRate);

private:
	// Real parts of the factors of an ear, their imaginary parts, and those of the other ear.
	static constexpr int kNumParameters = 16;
	using Parameters = Eigen::Matrix<double, kNumParameters, 1>;
	using Complex = std::complex<double>;

	// The part of the errors that one frequency has.
	class Problem;

	Parameters FitPlain(std::size_t inBin) const;
	Parameters FitBin(std::size_t inBin, Parameters const* inBefore) const;

	EarSpectra const& mSpectra;
	// By bin.
	std::vector<Parameters> mFactors;
};

} // namespace SonaroHost
