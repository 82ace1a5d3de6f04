#include "Time/Scaler/ScalerSynthesis.h"

#include "Time/Scaler/ScalerFrame.h"
#include "zorvaccelerate/PhaseVocoder.h"

#include <algorithm>

namespace SN
{

namespace
{

// Fewer samples in the place of inSize, by straight lines between them.
void ResampleInPlace(unsigned inSize, unsigned inNewSize, float* ioSamples)
{
	double const step = static_cast<double>(inSize) / inNewSize;
	double position = 0.0;
	for (unsigned i = 1; i < inNewSize; ++i)
	{
		position += step;
		unsigned const index = std::min(static_cast<unsigned>(position), inSize - 2);
		double const a = static_cast<double>(ioSamples[index]);
		double const b = static_cast<double>(ioSamples[index + 1]);
		ioSamples[i] = static_cast<float>(a + (b - a) * (position - index));
	}
}

} // namespace

void ScalerSynthesis::Init(ScalerFrame const& inFrame)
{
	mRing.Clear(static_cast<unsigned>(inFrame.mGeometry.mRingLength));
	mPhases.Clear(static_cast<unsigned>(inFrame.mGeometry.mInverseSize) / 2 + 1);
	mPosition = inFrame.mGeometry.mSynthesisStart;
	mReadPosition = 0;
	mFinalCount = 0;
}

void ScalerSynthesis::AddFrame(ScalerFrame& ioFrame)
{
	ScalerGeometry const& geometry = ioFrame.mGeometry;
	MakeSpectrum(ioFrame);
	float* const samples = ioFrame.mResynthesis.Get();
	ioFrame.mInverse->Inverse(samples);
	auto const size = static_cast<unsigned>(geometry.mResampledSize);
	if (ioFrame.mInverse->GetSize() != size)
	{
		ResampleInPlace(ioFrame.mInverse->GetSize(), size, samples);
	}
	mRing.AddWindowed(mPosition - geometry.mWindowHalf, static_cast<unsigned>(geometry.mWindowLength),
		ioFrame.mWindows.mSynthesis.Get(), size, samples);
}

void ScalerSynthesis::MakeSpectrum(ScalerFrame& ioFrame)
{
	ScalerGeometry const& geometry = ioFrame.mGeometry;
	unsigned const size = ioFrame.mInverse->GetSize();
	unsigned const bins = ioFrame.GetOutputBins();
	float* const spectrum = ioFrame.mResynthesis.Get();
	zorvaccelerate::utility::SynthesiseBins({size, bins, geometry.mBinFrequency}, ioFrame.mMagnitudes.Get(),
		ioFrame.mFrequencies.Get(), geometry.mSynthesisFrameRate, mPhases.Get(), spectrum);
	// Real and imaginary parts of the bins above.
	if (2 * bins <= size)
	{
		std::fill(spectrum + bins, spectrum + size - bins + 1, 0.0f);
	}
	if (geometry.mPitchFactor != 1.0f)
	{
		std::for_each(spectrum, spectrum + geometry.mResampledSize + 2,
			[&](float& ioElement) { ioElement /= geometry.mPitchFactor; });
	}
}

void ScalerSynthesis::Remove(unsigned inCount)
{
	mRing.WriteZeros(mReadPosition, inCount);
	mReadPosition += inCount;
}

void ScalerSynthesis::Advance(ScalerFrame const& inFrame)
{
	ScalerGeometry const& geometry = inFrame.mGeometry;
	std::int64_t const half = geometry.mWindowHalf;
	mPosition += geometry.mResampledHop;
	if (mPosition <= half)
	{
		// What the first frames have before the output's start lies at the ring's end, and goes.
		std::int64_t const first = std::max<std::int64_t>(mPosition + half, 0);
		mRing.WriteZeros(first, static_cast<unsigned>(geometry.mRingLength - first));
	}
	std::int64_t const valid = std::clamp<std::int64_t>(mPosition - half, 0, geometry.mSynthesisHop);
	mFinalCount = static_cast<unsigned>(static_cast<float>(valid) / geometry.mPitchFactor);
}

} // namespace SN
