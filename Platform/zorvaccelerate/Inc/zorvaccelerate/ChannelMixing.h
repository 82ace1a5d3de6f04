#pragma once

#include "zorvcore/Export.h"

// Sums over channels and the feed of a filter, each in the fastest form that the processor has. All forms
// give the same bits: every step is rounded to 32 bits in the order that is written here. Outputs may not
// overlap inputs; pointers need no alignment. Counts are in samples. Any thread.
namespace zorvaccelerate::utility
{

// The mixes of 5.1 (left L, right R, centre C, low frequency F, left and right surround Ls and Rs, in this order) to
// one or two channels, with gains a, b and g. Those to stereo are given for the left side; the right one has R for L
// and Rs for Ls.
enum class ChannelFold : unsigned
{
	kFrontToMono,          // a * ((L + R) + C)
	kFrontRearToMono,      // g * (a * ((L + R) + C) + b * (Ls + Rs))
	kFrontLFEToMono,       // g * (a * ((L + R) + C) + b * F)
	kFrontRearLFEToMono,   // g * (b * ((Ls + Rs) + F) + a * ((L + R) + C))
	kFrontToStereo,        // g * (a * L + b * C)
	kFrontRearToStereo,    // g * ((a * L + b * C) + c * Ls)
	kFrontLFEToStereo,     // g * ((a * L + b * C) + c * F)
	kFrontRearLFEToStereo, // g * ((a * L + b * C) + c * (Ls + F))
	kStereoToMono,         // g * (L + R)
};
inline constexpr unsigned kNumChannelFolds = 9;

struct FoldGains
{
	float mA = 0.0f;
	float mB = 0.0f;
	float mC = 0.0f;
	// g.
	float mTotal = 1.0f;
};

// inInputs: six pointers in the order above, for kStereoToMono two; those that the fold does not read may
// be null.
ZORV_API void FoldChannels(ChannelFold inFold, unsigned inCount, float const* const* inInputs,
	FoldGains const& inGains, float* const* outOutputs);

// out = (gain0 * in0 + gain1 * in1) + gain2 * in2 ..., over any number of inputs; zeros for none.
ZORV_API void WeightedSum(unsigned inCount, unsigned inNumInputs, float const* const* inInputs,
	float const* inGains, float* outOutput);

// out = out + factor * in
ZORV_API void MulConstantAdd(unsigned inCount, float const* inInput, float inFactor, float* ioOutput);

// The input s of a filter: the channel mFirst itself where mSecond is null, else
// s = mFirst * mFirstGain + mSecond * mSecondGain.
struct FilterFeed
{
	float const* mFirst = nullptr;
	float const* mSecond = nullptr;
	float mFirstGain = 1.0f;
	float mSecondGain = 0.0f;
	// The two inputs before the first sample, the latest first.
	float mX1 = 0.0f;
	float mX2 = 0.0f;
};

// out(i) = ((2 * s(i - 1) + s(i)) + s(i - 2)) * inFactor: the half of a second-order low-pass filter that
// looks back on its input. ioFeed keeps the last two inputs for the next call.
ZORV_API void FeedFilter(unsigned inCount, FilterFeed& ioFeed, float inFactor, float* outOutput);

} // namespace zorvaccelerate::utility
