#include "Time/Scaler/ScalerGeometry.h"

#include "zorvaudiodsp/FFT.h"

#include <bit>
#include <cmath>

namespace SN
{

namespace
{

constexpr int kOverlap = 8;
constexpr double kStatisticsSeconds = 7.0;
// Rings are so many windows long.
constexpr int kRingWindows = 4;
// Sizes beyond are refused before they overflow.
constexpr double kLargestCount = 1 << 28;

// False where the count is no number or too large.
bool Round(double inCount, int& outCount)
{
	bool const isCount = inCount >= 0.0 && inCount < kLargestCount;
	outCount = isCount ? static_cast<int>(std::floor(inCount + 0.5)) : 0;
	return isCount;
}

} // namespace

std::optional<ScalerGeometry> ScalerGeometry::Make(ScalerSettings const& inSettings, int inFormerLength)
{
	ScalerGeometry geometry;
	unsigned const size = inSettings.mFFTSize + inSettings.mFFTSize % 2;
	if (!dsp::FFT::IsSupported(size) || !(inSettings.mPitchFactor > 0.0f))
	{
		return std::nullopt;
	}
	geometry.mFFTSize = static_cast<int>(size);
	geometry.mPitchFactor = inSettings.mPitchFactor;
	geometry.mWindowLength = inFormerLength;
	geometry.SetWindow(inSettings.mWindowMode);
	if (!geometry.SetHops(inSettings.mRatio) || !geometry.SetSizes())
	{
		return std::nullopt;
	}
	geometry.SetStart(inSettings);
	// The sizes have changed the pitch factor a little: hops and ratio follow.
	return geometry.SetHops(inSettings.mRatio) ? std::optional(geometry) : std::nullopt;
}

void ScalerGeometry::SetWindow(unsigned inMode)
{
	switch (inMode)
	{
	case 0:
		mWindowLength = 4 * mFFTSize - 1;
		break;
	case 1:
		mWindowLength = 2 * mFFTSize - 1;
		break;
	case 2:
		mWindowLength = mFFTSize - 1;
		break;
	case 3:
		mWindowLength = mFFTSize / 2 - 1;
		break;
	default:
		break;
	}
	if (mWindowLength % 2 == 0)
	{
		--mWindowLength;
	}
	mWindowHalf = (mWindowLength - 1) / 2;
	mRingLength = kRingWindows * mWindowLength;
}

bool ScalerGeometry::SetHops(float inRatio)
{
	float const ratio = mPitchFactor == 1.0f ? inRatio : inRatio * mPitchFactor;
	float const window = static_cast<float>(mWindowLength + 1);
	float const overlap = kOverlap;
	if (!(ratio > 0.0f) ||
		!Round(ratio <= 1.0f ? window / overlap : window / (overlap * ratio), mAnalysisHop) ||
		!Round(static_cast<float>(mAnalysisHop) * ratio, mSynthesisHop) || mAnalysisHop == 0 ||
		mSynthesisHop == 0)
	{
		return false;
	}
	mRatio = static_cast<float>(mSynthesisHop) / static_cast<float>(mAnalysisHop);
	return true;
}

bool ScalerGeometry::SetSizes()
{
	float const size = static_cast<float>(mFFTSize);
	if (!Round(size / mPitchFactor, mResampledSize))
	{
		return false;
	}
	mResampledSize += mResampledSize % 2;
	mInverseSize =
		mResampledSize <= 1 ? 1 : static_cast<int>(std::bit_ceil(static_cast<unsigned>(mResampledSize)));
	if (!dsp::FFT::IsSupported(static_cast<unsigned>(mInverseSize)))
	{
		return false;
	}
	mPitchFactor = size / static_cast<float>(mResampledSize);
	mResampledHop = static_cast<int>(static_cast<float>(mSynthesisHop) / mPitchFactor);
	return mResampledHop > 0;
}

void ScalerGeometry::SetStart(ScalerSettings const& inSettings)
{
	float const rate = inSettings.mSampleRate;
	mBinFrequency = rate / static_cast<float>(mFFTSize);
	mAnalysisFrameRate = rate / static_cast<float>(mAnalysisHop);
	mSynthesisFrameRate = rate / static_cast<float>(mSynthesisHop);
	int const part = mWindowHalf % mAnalysisHop;
	mAnalysisStart = part - mWindowHalf;
	mFirstHop = part + 1;
	mSynthesisStart = static_cast<std::int64_t>(mRatio / mPitchFactor * static_cast<float>(mAnalysisStart));
	mEndOfInput = inSettings.mEndOfInput;
	mInputStatisticsLimit =
		static_cast<float>(static_cast<std::int64_t>(static_cast<double>(rate) * kStatisticsSeconds));
	mOutputStatisticsLimit = static_cast<float>(static_cast<std::int64_t>(
		static_cast<double>(mRatio * rate) * kStatisticsSeconds / static_cast<double>(mPitchFactor)));
}

} // namespace SN
