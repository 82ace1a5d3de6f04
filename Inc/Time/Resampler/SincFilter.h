#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace SN
{

// The low-pass filter of the sinc resampler: a sinc under a Kaiser window, worked out at L steps between
// two input samples. L is the oversampling.
//
// The coefficients are kept by phase, so that those which meet successive input samples are neighbours:
// row w, 0 <= w < L, holds the filter at (k - halfTaps - 1) * L - w for the taps k = 1 .. numTaps, where
// 0 is the centre. Row w - 1 holds the elements one step above.
class SincFilter
{
public:
	// inRatio is input rate over output rate, 0.04 to 100. High quality has ten times the length at
	// twenty times the steps.
	SincFilter(double inRatio, bool inHighQuality);

	// The filter that all resamplers of these values share; it goes with the last of them. From any thread, under a
	// lock.
	static std::shared_ptr<SincFilter const> GetShared(double inRatio, bool inHighQuality);

	int GetOversampling() const { return mOversampling; }
	// Steps that an output advances, and its whole part.
	float GetIncrement() const { return mIncrement; }
	int GetIntegerStep() const { return mIntegerStep; }
	int GetHalfTaps() const { return mHalfTaps; }
	int GetNumTaps() const { return mNumTaps; }

	// -1 <= inPhase < L.
	float const* GetRow(int inPhase) const
	{
		return mRows.data() + static_cast<std::size_t>(inPhase + 1) * static_cast<std::size_t>(mNumTaps);
	}

private:
	// The filter from its centre, element inCentre, outward on both sides.
	static std::vector<float> Design(int inLength, int inCutoffDivisor, int inOversampling);
	void StoreRows(std::vector<float> const& inTable, int inCentre);

	int mOversampling = 0;
	float mIncrement = 0.0f;
	int mIntegerStep = 0;
	int mHalfTaps = 0;
	int mNumTaps = 0;
	std::vector<float> mRows;
};

} // namespace SN
