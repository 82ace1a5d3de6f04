#include "SpectralGrid.h"

#include "SonaroHost/Offline/Denoise.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace SonaroHost
{

namespace
{

constexpr double kShortestFrameSeconds = 0.032;
constexpr unsigned kSmallestFrame = 64;
constexpr unsigned kLargestFrame = 1U << 16;

// Its square fits a float with room for a sum over any frame.
constexpr float kLargestSample = 1.0e9f;

unsigned ChooseSize(int inSampleRate)
{
	auto const frames = static_cast<unsigned>(std::ceil(kShortestFrameSeconds * inSampleRate));
	return std::bit_ceil(std::clamp(frames, kSmallestFrame, kLargestFrame));
}

} // namespace

std::int64_t GetShortestLearnSpan(int inSampleRate)
{
	return SpectralGrid(inSampleRate).mSize;
}

SpectralGrid::SpectralGrid(int inSampleRate)
	: mSize(ChooseSize(inSampleRate)),
	  mHop(mSize / kHopsInFrame)
{
}

SpectralTransform::SpectralTransform(SpectralGrid const& inGrid)
	: mFFT(inGrid.mSize),
	  mWindow(inGrid.mSize)
{
	// Squares of the sine at four hops add up to 2.
	double const level = std::sqrt(2.0 / SpectralGrid::kHopsInFrame);
	double const step = std::numbers::pi / inGrid.mSize;
	for (unsigned i = 0; i < inGrid.mSize; ++i)
	{
		mWindow[i] = static_cast<float>(level * zorvcore::math::Sin(step * (i + 0.5)));
	}
}

void SpectralTransform::Analyse(std::span<float const> inSamples, std::span<float> outSpectrum)
{
	for (std::size_t i = 0; i < mWindow.size(); ++i)
	{
		float const sample = inSamples[i];
		outSpectrum[i] = std::abs(sample) < kLargestSample ? sample * mWindow[i] : 0.0f;
	}
	mFFT.Forward(outSpectrum.data());
}

void SpectralTransform::Synthesize(std::span<float> ioSpectrum)
{
	mFFT.Inverse(ioSpectrum.data());
	for (std::size_t i = 0; i < mWindow.size(); ++i)
	{
		ioSpectrum[i] *= mWindow[i];
	}
}

void ComputePower(std::span<float const> inSpectrum, std::span<float> outPower)
{
	std::size_t const size = inSpectrum.size();
	std::size_t const last = size / 2;
	outPower[0] = inSpectrum[0] * inSpectrum[0];
	outPower[last] = inSpectrum[last] * inSpectrum[last];
	for (std::size_t bin = 1; bin < last; ++bin)
	{
		float const real = inSpectrum[bin];
		float const imaginary = inSpectrum[size - bin];
		outPower[bin] = real * real + imaginary * imaginary;
	}
}

} // namespace SonaroHost
