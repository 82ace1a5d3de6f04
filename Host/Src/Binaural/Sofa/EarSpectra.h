#pragma once

#include "EarMeasurements.h"

#include <Eigen/Core>

#include <array>
#include <complex>
#include <cstddef>
#include <vector>

namespace SonaroHost
{

// Measurements by frequency, without what all directions have in common: divided by the mean spectrum of all of them
// (diffuse-field equalisation), and by the phase of what both ears hear of W in plain least squares, which is that of the
// loudspeaker and of the distance.
class EarSpectra
{
public:
	// W, Y, Z and X.
	using Components = Eigen::Vector4d;

	explicit EarSpectra(EarMeasurements const& inMeasurements);

	std::size_t GetNumDirections() const { return mFields.size(); }
	// What a plane wave from a direction has of the components, and which part of the sphere the direction stands for.
	Components const& GetField(std::size_t inDirection) const { return mFields[inDirection]; }
	double GetArea(std::size_t inDirection) const { return mAreas[inDirection]; }
	// How well the directions tell the components apart: 1/3 where they are evenly spread over the sphere, and 0 where
	// they lie in a plane.
	double GetSpread() const;
	// Whether there is any sound in the responses.
	bool IsHeard() const { return mIsHeard; }

	// The frequencies are bins of the same distance, in hertz, from 0 up to half the sample rate.
	double GetSpacing() const { return mSpacing; }
	std::size_t GetNumBins() const { return mNumBins; }
	std::complex<double> const& Get(std::size_t inEar, std::size_t inBin, std::size_t inDirection) const
	{
		return mSpectra[inEar][inBin * GetNumDirections() + inDirection];
	}

private:
	using Spectra = std::vector<std::complex<double>>;

	void FindAreas();
	void Transform(EarMeasurements const& inMeasurements, unsigned inSize);
	void EqualiseDiffuseField();
	void RemoveCommonPhase();

	std::vector<Components> mFields;
	std::vector<double> mAreas;
	bool mIsHeard = false;
	double mSpacing = 0.0;
	std::size_t mNumBins = 0;
	// By ear.
	std::array<Spectra, EarMeasurements::kNumEars> mSpectra;
};

} // namespace SonaroHost
