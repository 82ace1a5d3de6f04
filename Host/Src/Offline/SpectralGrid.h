#pragma once

#include "zorvaudiodsp/FFT.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace SonaroHost
{

// The frames in which short-time spectra are taken: a power of two of samples, 32 to 64 ms, a quarter apart.
//
// Place  Hop h holds the samples from h hops on; frame k ends with hop k, and holds the three before it.
struct SpectralGrid
{
	static constexpr unsigned kHopsInFrame = 4;

	explicit SpectralGrid(int inSampleRate);

	unsigned GetBins() const { return mSize / 2 + 1; }

	unsigned mSize;
	unsigned mHop;
};

// Takes spectra of frames and back, in the layout of dsp::FFT, through the root of a Hann window both times: frames that
// nobody changes add up to the samples.
//
// Threads  One at a time. The constructor alone allocates.
class SpectralTransform
{
public:
	explicit SpectralTransform(SpectralGrid const& inGrid);

	// Samples that are not finite, or beyond 180 dB above full scale, count as silence.
	void Analyse(std::span<float const> inSamples, std::span<float> outSpectrum);
	// Replaces the spectrum by samples, to be added up.
	void Synthesize(std::span<float> ioSpectrum);

private:
	dsp::FFT mFFT;
	std::vector<float> mWindow;
};

// Of each bin, for a spectrum in that layout.
void ComputePower(std::span<float const> inSpectrum, std::span<float> outPower);

} // namespace SonaroHost
