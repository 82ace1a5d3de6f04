#include "Time/Scaler/ScalerWindows.h"

#include "Time/Scaler/ScalerGeometry.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvcore/math/Elementary.h"

#include <cmath>
#include <numbers>

namespace SN
{

namespace
{

constexpr float kSinglePi = 3.1415927f;

AlignedSamples MakeSquaredCosine(int inHalf)
{
	AlignedSamples window(static_cast<unsigned>(2 * inHalf + 1));
	float* const centre = window.Get() + inHalf;
	centre[0] = 1.0f;
	for (int i = 1; i <= inHalf; ++i)
	{
		double const cosine = zorvcore::math::Cos(i * std::numbers::pi / (2.0 * inHalf));
		centre[i] = static_cast<float>(cosine * cosine);
		centre[-i] = centre[i];
	}
	return window;
}

// Zeros at every inWidth-th sample from the centre, in single precision.
void MultiplySinc(int inHalf, int inWidth, AlignedSamples& ioWindow)
{
	float* const centre = ioWindow.Get() + inHalf;
	float const width = static_cast<float>(inWidth);
	for (int i = 1; i <= inHalf; ++i)
	{
		float const index = static_cast<float>(i);
		float const sinc = zorvcore::math::Sin(index * kSinglePi / width) * width / (index * kSinglePi);
		centre[i] *= sinc;
		centre[-i] *= sinc;
	}
}

} // namespace

ScalerWindows::ScalerWindows(ScalerGeometry const& inGeometry)
	: mAnalysis(MakeSquaredCosine(inGeometry.mWindowHalf)),
	  mSynthesis(MakeSquaredCosine(inGeometry.mWindowHalf))
{
	using zorvaccelerate::utility::MulConstant_InPlace;
	auto const count = static_cast<unsigned>(inGeometry.mWindowLength);
	if (inGeometry.mWindowLength > inGeometry.mFFTSize)
	{
		MultiplySinc(inGeometry.mWindowHalf, inGeometry.mFFTSize, mAnalysis);
	}
	double sum = 0.0;
	for (unsigned i = 0; i < count; ++i)
	{
		sum += static_cast<double>(mAnalysis.Get()[i]);
	}
	float const scale = static_cast<float>(2.0 / sum);
	MulConstant_InPlace(count, mAnalysis.Get(), scale);
	MultiplySinc(inGeometry.mWindowHalf, inGeometry.mResampledHop, mSynthesis);
	MulConstant_InPlace(count, mSynthesis.Get(), static_cast<float>(1.0 / static_cast<double>(scale)));
}

} // namespace SN
