#include "Time/Scaler/ScalerFrame.h"

#include <algorithm>

namespace SN
{

namespace
{

// Room for the imaginary part that the last bin has not.
constexpr unsigned kSpare = 2;

} // namespace

ScalerFrame::ScalerFrame(ScalerGeometry const& inGeometry)
	: mGeometry(inGeometry),
	  mWindows(inGeometry),
	  mForward(std::make_shared<dsp::FFT>(static_cast<unsigned>(inGeometry.mFFTSize))),
	  mInverse(inGeometry.mInverseSize == inGeometry.mFFTSize
				   ? mForward
				   : std::make_shared<dsp::FFT>(static_cast<unsigned>(inGeometry.mInverseSize))),
	  mSpectrum(mForward->GetSize() + kSpare),
	  mMagnitudes(std::max(mForward->GetSize(), mInverse->GetSize()) / 2 + 1),
	  mFrequencies(mMagnitudes.GetCount()),
	  mResynthesis(mInverse->GetSize() + kSpare)
{
}

unsigned ScalerFrame::GetInputBins() const
{
	return std::min(mForward->GetSize() / 2 + 1, GetOutputBins());
}

unsigned ScalerFrame::GetOutputBins() const
{
	return static_cast<unsigned>(mGeometry.mResampledSize) / 2 + 1;
}

} // namespace SN
