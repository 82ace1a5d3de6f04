#include "Time/Scaler/AlignedSamples.h"

#include "zorvaccelerate/VectorArithmetic.h"

namespace SN
{

void AlignedSamples::Free::operator()(float* inSamples) const
{
	zorvaccelerate::utility::Free(inSamples);
}

AlignedSamples::AlignedSamples(unsigned inCount)
{
	Clear(inCount);
}

void AlignedSamples::Clear(unsigned inCount)
{
	if (inCount != mCount)
	{
		mCount = 0;
		mSamples.reset();
		mSamples.reset(zorvaccelerate::utility::Malloc_Float(inCount));
		mCount = inCount;
	}
	zorvaccelerate::utility::Zero(mCount, mSamples.get());
}

} // namespace SN
