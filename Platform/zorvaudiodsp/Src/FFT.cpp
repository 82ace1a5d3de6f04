#include "zorvaudiodsp/FFT.h"

#include "zorvaccelerate/Fourier.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvcore/config/Exceptions.h"

#include <bit>
#include <string>

namespace dsp
{

namespace
{

using namespace zorvaccelerate::utility;

} // namespace

void FFT::Free::operator()(float* inMemory) const
{
	zorvaccelerate::utility::Free(inMemory);
}

bool FFT::IsSupported(unsigned inSize)
{
	return std::has_single_bit(inSize) && inSize >= kSmallestFourierSize && inSize <= kLargestFourierSize;
}

FFT::FFT(unsigned inSize)
	: mSize(inSize)
{
	if (!IsSupported(inSize))
	{
		zorvcore::config::ThrowError(zorvcore::config::ErrorLevel::kError, __FILE__, __LINE__,
			zorvcore::eInvalidArgument, false,
			"the size of a Fourier transform is a power of two from 2 to 2^24, not " +
				std::to_string(inSize));
	}
	mTable.reset(Malloc_Float(CountFourierTable(inSize)));
	mScratch.reset(Malloc_Float(inSize));
	FillFourierTable(inSize, mTable.get());
}

void FFT::Transform(float* ioData, bool inInverse) const
{
	FourierPlan const plan{mSize, mTable.get(), mScratch.get()};
	(inInverse ? &TransformInverse : &TransformForward)(plan, ioData);
}

} // namespace dsp
