#pragma once

#include "zorvaudiodsp/FFT.h"

#include <array>
#include <cstddef>
#include <vector>

namespace dsp::ambi
{

// Filters four signals for each of two ears and adds them up, without latency.
//
// Method    Uniform partitions of kPartition taps, overlap-save (W. G. Gardner, "Efficient convolution without
//           input-output delay", 1995). The first partition works in the time domain. The others follow from the
//           spectra of whole partitions of input, each time one is complete.
// Blocks    Partitions begin at multiples of kPartition from Reset on, whatever the caller's blocks are.
class EarConvolver
{
public:
	static constexpr unsigned kNumInputs = 4;
	static constexpr unsigned kNumEars = 2;
	static constexpr unsigned kPartition = 64;

	// The taps of each filter, all of one length.
	using Filters = std::array<std::array<std::vector<float>, kNumInputs>, kNumEars>;

	explicit EarConvolver(Filters const& inFilters);

	// Forgets all input.
	void Reset();

	// How many samples the next Process takes at most: at least one.
	unsigned GetRoom() const { return kPartition - mFilled; }
	// Where its input is to be written.
	float* GetInput(unsigned inIndex) { return GetHistory(inIndex) + kPartition + mFilled; }
	void Process(unsigned inCount, float* const* outEars);

private:
	static constexpr unsigned kSize = 2 * kPartition;
	static constexpr unsigned kHeadTaps = kNumInputs * kPartition;

	float* GetHistory(unsigned inIndex) { return &mHistory[std::size_t{inIndex} * kSize]; }
	// The spectrum of one partition of an input, of the last mNumTail ones, and of a filter for an ear.
	float* GetSpectrum(unsigned inSlot, unsigned inInput)
	{
		return &mSpectra[std::size_t{inSlot * kNumInputs + inInput} * kSize];
	}
	float* GetFilter(unsigned inPartition, unsigned inInput, unsigned inEar)
	{
		return &mFilters[(std::size_t{inPartition * kNumInputs + inInput} * kNumEars + inEar) * kSize];
	}
	void SetFilter(unsigned inInput, unsigned inEar, std::vector<float> const& inTaps);
	// Transforms kSize samples into real parts and then imaginary parts, both in ascending order.
	void Analyse(float const* inSamples, float* outSpectrum);
	void FinishPartition();
	void MakeTail(unsigned inEar);

	FFT mFFT{kSize};
	unsigned mNumTail;
	// How much of the present partition is there, and where its spectrum will go.
	unsigned mFilled = 0;
	unsigned mSlot = 0;
	// Of each input the last partition and the present one.
	std::vector<float> mHistory;
	std::vector<float> mSpectra;
	std::vector<float> mFilters;
	// For each ear, what earlier partitions of input add to the present one: the second half of kSize samples.
	std::array<std::array<float, kSize>, kNumEars> mTail{};
	std::array<std::array<float, kHeadTaps>, kNumEars> mHeads{};
};

} // namespace dsp::ambi
