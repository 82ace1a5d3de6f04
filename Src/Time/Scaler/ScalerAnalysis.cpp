#include "Time/Scaler/ScalerAnalysis.h"

#include "Time/Scaler/ScalerFrame.h"
#include "zorvaccelerate/PhaseVocoder.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>

namespace SN
{

namespace
{

constexpr float kTurn = 6.2831855f;

} // namespace

void ScalerAnalysis::Init(ScalerFrame const& inFrame)
{
	ScalerGeometry const& geometry = inFrame.mGeometry;
	mRing.Clear(static_cast<unsigned>(geometry.mRingLength));
	mPhases.Clear(static_cast<unsigned>(geometry.mFFTSize) / 2 + 1);
	mPosition = geometry.mAnalysisStart;
	mWritePosition = 0;
	mInputCount = 0;
	mEndOfInput = geometry.mEndOfInput;
	mSamplesPerHop = static_cast<unsigned>(geometry.mFirstHop);
	mSamplesSinceHop = 0;
	mIsEndOfInput = false;
}

unsigned ScalerAnalysis::Read(float const* inSamples, unsigned inCount)
{
	unsigned const count = std::min(inCount, mSamplesPerHop - std::min(mSamplesPerHop, mSamplesSinceHop));
	mRing.Write(mWritePosition, count, inSamples);
	mWritePosition += count;
	mInputCount += count;
	mSamplesSinceHop += count;
	return count;
}

void ScalerAnalysis::CopyHop(float* outSamples) const
{
	mRing.Read(mWritePosition - mSamplesPerHop, mSamplesPerHop, outSamples);
}

void ScalerAnalysis::MakeBins(ScalerFrame& ioFrame)
{
	ScalerGeometry const& geometry = ioFrame.mGeometry;
	auto const hop = static_cast<unsigned>(geometry.mAnalysisHop);
	mSamplesSinceHop = 0;
	if (mPosition > 0 && mSamplesPerHop < hop)
	{
		mRing.WriteZeros(mWritePosition, hop - mSamplesPerHop);
		mWritePosition += hop - mSamplesPerHop;
	}
	unsigned const size = ioFrame.mForward->GetSize();
	float* const spectrum = ioFrame.mSpectrum.Get();
	zorvaccelerate::utility::Zero(size, spectrum);
	mRing.AddWindowedTo(mPosition - geometry.mWindowHalf, static_cast<unsigned>(geometry.mWindowLength),
		ioFrame.mWindows.mAnalysis.Get(), size, spectrum);
	ioFrame.mForward->Forward(spectrum);
	zorvaccelerate::utility::AnalyseBins({size, ioFrame.GetInputBins(), geometry.mBinFrequency}, spectrum,
		geometry.mAnalysisFrameRate / kTurn, mPhases.Get(), ioFrame.mMagnitudes.Get(),
		ioFrame.mFrequencies.Get());
	mPosition += hop;
}

void ScalerAnalysis::Advance(ScalerFrame const& inFrame)
{
	ScalerGeometry const& geometry = inFrame.mGeometry;
	std::int64_t const hop = geometry.mAnalysisHop;
	if (!mIsEndOfInput && mPosition > 0 && mSamplesPerHop < hop)
	{
		mIsEndOfInput = true;
		mEndOfInput = geometry.mWindowHalf - hop + mPosition + mSamplesPerHop;
	}
	std::int64_t const end = geometry.mWindowHalf + mPosition;
	std::int64_t const samples =
		end <= mEndOfInput ? hop : std::max<std::int64_t>(mEndOfInput + hop - end, 0);
	mSamplesPerHop = static_cast<unsigned>(samples);
}

} // namespace SN
