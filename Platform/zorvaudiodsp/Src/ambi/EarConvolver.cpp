#include "ambi/EarConvolver.h"

#include "zorvaccelerate/ChannelMixing.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>

namespace dsp::ambi
{

namespace
{

using namespace zorvaccelerate::utility;

// Adds the product of two spectra of inHalf bins; bin 0 has the highest frequency in place of an imaginary part.
void AddProduct(unsigned inHalf, float const* inA, float const* inB, float* ioSum)
{
	float const lowest = ioSum[0] + inA[0] * inB[0];
	float const highest = ioSum[inHalf] + inA[inHalf] * inB[inHalf];
	for (unsigned k = 0; k < inHalf; ++k)
	{
		float const real = inA[k] * inB[k] - inA[inHalf + k] * inB[inHalf + k];
		float const imaginary = inA[k] * inB[inHalf + k] + inA[inHalf + k] * inB[k];
		ioSum[k] += real;
		ioSum[inHalf + k] += imaginary;
	}
	ioSum[0] = lowest;
	ioSum[inHalf] = highest;
}

} // namespace

EarConvolver::EarConvolver(Filters const& inFilters)
	: mNumTail(static_cast<unsigned>((std::max<std::size_t>(inFilters[0][0].size(), 1) - 1) / kPartition)),
	  mHistory(std::size_t{kNumInputs} * kSize),
	  mSpectra(std::size_t{mNumTail} * kNumInputs * kSize),
	  mFilters(std::size_t{mNumTail} * kNumInputs * kNumEars * kSize)
{
	for (unsigned ear = 0; ear < kNumEars; ++ear)
	{
		for (unsigned input = 0; input < kNumInputs; ++input)
		{
			SetFilter(input, ear, inFilters[ear][input]);
		}
	}
}

void EarConvolver::SetFilter(unsigned inInput, unsigned inEar, std::vector<float> const& inTaps)
{
	std::vector<float> taps = inTaps;
	taps.resize(std::size_t{mNumTail + 1} * kPartition);
	std::copy_n(taps.begin(), kPartition, mHeads[inEar].begin() + inInput * kPartition);
	for (unsigned partition = 0; partition < mNumTail; ++partition)
	{
		std::array<float, kSize> padded{};
		std::copy_n(taps.begin() + (partition + 1) * kPartition, kPartition, padded.begin());
		Analyse(padded.data(), GetFilter(partition, inInput, inEar));
	}
}

void EarConvolver::Reset()
{
	std::fill(mHistory.begin(), mHistory.end(), 0.0f);
	std::fill(mSpectra.begin(), mSpectra.end(), 0.0f);
	mTail = {};
	mFilled = 0;
	mSlot = 0;
}

void EarConvolver::Process(unsigned inCount, float* const* outEars)
{
	// For each tap, the input so many samples ago.
	std::array<float const*, kHeadTaps> inputs;
	for (unsigned tap = 0; tap < kHeadTaps; ++tap)
	{
		inputs[tap] = GetInput(tap / kPartition) - tap % kPartition;
	}
	for (unsigned ear = 0; ear < kNumEars; ++ear)
	{
		WeightedSum(inCount, kHeadTaps, inputs.data(), mHeads[ear].data(), outEars[ear]);
		Add(inCount, outEars[ear], &mTail[ear][kPartition + mFilled], outEars[ear]);
	}
	mFilled += inCount;
	if (mFilled == kPartition)
	{
		FinishPartition();
	}
}

void EarConvolver::FinishPartition()
{
	for (unsigned input = 0; input < kNumInputs; ++input)
	{
		float* const history = GetHistory(input);
		if (mNumTail > 0)
		{
			Analyse(history, GetSpectrum(mSlot, input));
		}
		Copy(kPartition, history + kPartition, history);
	}
	for (unsigned ear = 0; ear < kNumEars && mNumTail > 0; ++ear)
	{
		MakeTail(ear);
	}
	mSlot = mNumTail > 0 ? (mSlot + 1) % mNumTail : 0;
	mFilled = 0;
}

void EarConvolver::MakeTail(unsigned inEar)
{
	std::array<float, kSize> sum{};
	for (unsigned partition = 0; partition < mNumTail; ++partition)
	{
		unsigned const slot = (mSlot + mNumTail - partition) % mNumTail;
		for (unsigned input = 0; input < kNumInputs; ++input)
		{
			AddProduct(kPartition, GetSpectrum(slot, input), GetFilter(partition, input, inEar), sum.data());
		}
	}
	std::reverse(sum.begin() + kPartition + 1, sum.end());
	mTail[inEar] = sum;
	mFFT.Inverse(mTail[inEar].data());
}

void EarConvolver::Analyse(float const* inSamples, float* outSpectrum)
{
	Copy(kSize, inSamples, outSpectrum);
	mFFT.Forward(outSpectrum);
	std::reverse(outSpectrum + kPartition + 1, outSpectrum + kSize);
}

} // namespace dsp::ambi
