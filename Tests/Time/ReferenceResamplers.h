#pragma once

#include "ResamplerRuns.h"

#include <cstddef>

// The resamplers written again in the plainest way, sample by sample and channel by channel: what the
// engine's own must equal to the bit.
namespace SN::Testing
{

// One channel. Taps beyond the input read zeros.
class ReferenceResampler
{
public:
	virtual ~ReferenceResampler() = default;
	virtual unsigned CountInput(unsigned inNumOutput) = 0;
	virtual Samples Process(Samples const& inInput, unsigned inNumInput, unsigned inNumOutput) = 0;
};

class ReferenceLinear final : public ReferenceResampler
{
public:
	explicit ReferenceLinear(double inRatio)
		: mIncrement(static_cast<float>(inRatio))
	{
	}
	unsigned CountInput(unsigned inNumOutput) override;
	Samples Process(Samples const& inInput, unsigned inNumInput, unsigned inNumOutput) override;

private:
	float mIncrement;
	double mPhase = 0.0;
	float mRow0 = 0.0f;
	float mRow1 = 0.0f;
};

class ReferenceCubic final : public ReferenceResampler
{
public:
	explicit ReferenceCubic(double inRatio)
		: mIncrement(static_cast<float>(inRatio))
	{
	}
	unsigned CountInput(unsigned inNumOutput) override;
	Samples Process(Samples const& inInput, unsigned inNumInput, unsigned inNumOutput) override;

private:
	float mIncrement;
	double mPhase = 0.0;
	float mOld[4] = {};
};

// With one long table, and a ring that is looked up tap by tap.
class ReferenceSinc final : public ReferenceResampler
{
public:
	ReferenceSinc(double inRatio, bool inHighQuality);
	unsigned CountInput(unsigned inNumOutput) override;
	Samples Process(Samples const& inInput, unsigned inNumInput, unsigned inNumOutput) override;

	// For the tests of the sizes.
	long GetTableLength() const { return mLength; }
	long GetHalfTaps() const { return mHalfTaps; }
	long GetRingSize() const { return mRingSize; }

private:
	void Prime(Samples const& inInput, unsigned inNumInput);
	float MakeSample() const;
	void Advance(Samples const& inInput);
	void Step(Samples const& inInput);
	float Table(long inElement) const { return mTable[static_cast<std::size_t>(mHalf + inElement)]; }

	double mRatio;
	long mSteps;
	float mIncrement;
	long mWhole;
	long mLength;
	long mHalf;
	long mHalfTaps;
	long mRingSize = 1;
	Samples mTable;
	Samples mRing;
	Samples mSurplus;
	float mPhase = 0.0f;
	long mIntPhase = 0;
	long mCentre = 0;
	long mWrite = 0;
	long mThreshold = 0;
	long mConsumed = 0;
	long mAvailable = 0;
	std::size_t mCursor = 0;
	bool mIsPriming = true;
	bool mIsFirst = true;
};

} // namespace SN::Testing
