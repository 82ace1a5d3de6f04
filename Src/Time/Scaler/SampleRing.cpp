#include "Time/Scaler/SampleRing.h"

#include "zorvaccelerate/PhaseVocoder.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>

namespace SN
{

namespace
{

using zorvaccelerate::utility::MulAdd;

unsigned PlaceIn(unsigned inLength, std::int64_t inPosition)
{
	std::int64_t const length = inLength;
	return static_cast<unsigned>((inPosition % length + length) % length);
}

// Calls inDo(offset, place, other place, count) for the parts of a range that neither of two rings breaks.
template <class Do>
void ForParts(
	std::int64_t inPosition, unsigned inCount, unsigned inLength, unsigned inOtherLength, Do const& inDo)
{
	unsigned place = PlaceIn(inLength, inPosition);
	unsigned other = PlaceIn(inOtherLength, inPosition);
	for (unsigned done = 0; done < inCount;)
	{
		unsigned const count = std::min({inCount - done, inLength - place, inOtherLength - other});
		inDo(done, place, other, count);
		done += count;
		place = (place + count) % inLength;
		other = (other + count) % inOtherLength;
	}
}

} // namespace

void SampleRing::Write(std::int64_t inPosition, unsigned inCount, float const* inSamples)
{
	unsigned const length = mSamples.GetCount();
	ForParts(inPosition, inCount, length, length,
		[&](unsigned inDone, unsigned inPlace, unsigned, unsigned inPart)
		{ std::copy_n(inSamples + inDone, inPart, mSamples.Get() + inPlace); });
}

void SampleRing::Read(std::int64_t inPosition, unsigned inCount, float* outSamples) const
{
	unsigned const length = mSamples.GetCount();
	ForParts(inPosition, inCount, length, length,
		[&](unsigned inDone, unsigned inPlace, unsigned, unsigned inPart)
		{ std::copy_n(mSamples.Get() + inPlace, inPart, outSamples + inDone); });
}

void SampleRing::WriteZeros(std::int64_t inPosition, unsigned inCount)
{
	unsigned const length = mSamples.GetCount();
	ForParts(inPosition, inCount, length, length,
		[&](unsigned, unsigned inPlace, unsigned, unsigned inPart)
		{ std::fill_n(mSamples.Get() + inPlace, inPart, 0.0f); });
}

void SampleRing::AddWindowedTo(std::int64_t inPosition, unsigned inCount, float const* inWindow,
	unsigned inLength, float* ioOutput) const
{
	ForParts(inPosition, inCount, mSamples.GetCount(), inLength,
		[&](unsigned inDone, unsigned inPlace, unsigned inOther, unsigned inPart)
		{ MulAdd(inPart, mSamples.Get() + inPlace, inWindow + inDone, ioOutput + inOther); });
}

void SampleRing::AddWindowed(
	std::int64_t inPosition, unsigned inCount, float const* inWindow, unsigned inLength, float const* inInput)
{
	ForParts(inPosition, inCount, mSamples.GetCount(), inLength,
		[&](unsigned inDone, unsigned inPlace, unsigned inOther, unsigned inPart)
		{ MulAdd(inPart, inInput + inOther, inWindow + inDone, mSamples.Get() + inPlace); });
}

} // namespace SN
