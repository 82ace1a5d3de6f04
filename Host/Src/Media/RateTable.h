#pragma once

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Media/RateQuality.h"
#include "zorvaccelerate/Resampling.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <cstdint>
#include <memory>
#include <span>

namespace SonaroHost
{

class FilterShape;

// The coefficients of a rate converter, shared by all that need the same.
//
// Row   The taps of an output whose position is some fraction of a frame after one of its input: tap k belongs to the
//       frame k - taps / 2 + 1 from that one on.
// Rows  By phase, or at a fixed distance with the cubic through the filter at both ends and at thirds between, whose
//       four coefficients stand in four lists.
class RateTable
{
public:
	// inPhases: the fractions of a frame that positions count in. Any thread.
	static std::shared_ptr<RateTable const> Get(
		Ratio const& inStep, std::int64_t inPhases, RateQuality inQuality);
	// One for any fraction.
	static std::shared_ptr<RateTable const> GetForAnyPhase(Ratio const& inStep, RateQuality inQuality);

	unsigned GetTaps() const { return mTaps; }

	// The place of a position that is inPhase of inPhases after a frame; inSample: where its first tap stands.
	zorvaccelerate::utility::FilterPlace Find(
		std::int64_t inPhase, std::int64_t inPhases, unsigned inSample) const
	{
		return mPhases != 0 ? zorvaccelerate::utility::FilterPlace{static_cast<unsigned>(inPhase) * mTaps,
								  inSample, 0, 0.0f}
							: FindBetween(inPhase, inPhases, inSample);
	}
	void Filter(std::span<zorvaccelerate::utility::FilterPlace const> inPlaces, float const* inInput,
		float* outOutputs) const;

private:
	struct Key;
	struct Deleter
	{
		void operator()(float* inNumbers) const { zorvaccelerate::utility::Free(inNumbers); }
	};

	explicit RateTable(Key const& inKey);
	zorvaccelerate::utility::FilterPlace FindBetween(
		std::int64_t inPhase, std::int64_t inPhases, unsigned inSample) const;
	void FillPhases(FilterShape const& inShape);
	void FillSteps(FilterShape const& inShape);

	unsigned mTaps;
	// Rows between which there is nothing; 0 where a cubic goes between them.
	std::int64_t mPhases;
	// How many rows a frame has, between which the cubic goes.
	unsigned mSteps;
	// Aligned for vectors.
	std::unique_ptr<float, Deleter> mNumbers;
};

} // namespace SonaroHost
