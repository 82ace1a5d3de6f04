#pragma once

#include "Base/CurvePositions.h"
#include "SonaroHost/Media/RateQuality.h"
#include "SonaroHost/Media/SampleConverter.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace SonaroHost
{

class RateTable;

// Plays samples along a speed curve, the pitch following.
//
// Meaning  An output is what a RateConverter would make of the input around its place at the step there, but for the
//          cut-off, which follows the step without a jump: filters stand at steps of 1 and up, 16 to the octave, and an
//          output is between those of the two that cut off below half its rate most closely. What passes ends at 0.82 of
//          that at least, and at 0.9 where the step is below 0.95.
// Input    That of the longest filter is asked for everywhere, so that in one direction nothing is asked for twice.
// Stops    Where the speed stays 0 there is silence; it fades out in the 5 milliseconds before, and in after it.
class RampConverter final : public SampleConverter
{
public:
	// Throws a HostError where the curve leads to steps beyond RateConverter::kLargestStep.
	RampConverter(
		SpeedCurve const& inCurve, CurvePositions::Settings const& inPositions, RateQuality inQuality);

	unsigned GetTaps() const override { return mTaps; }
	Span GetInput(std::int64_t inFirst, std::int64_t inCount) const override;
	std::int64_t CountInput(std::int64_t inOutputs) const override;
	std::int64_t CountOutputs(std::int64_t inFrames) const override;
	bool IsBackwards(std::int64_t inOutput) const override { return mPositions.IsBackwards(inOutput); }
	std::int64_t FindTurn(std::int64_t inOutput, std::int64_t inEnd) const override
	{
		return mPositions.FindTurn(inOutput, inEnd);
	}
	void Convert(std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const override;

private:
	// Outputs whose filters are the same are made together, so many at most.
	static constexpr unsigned kGroup = 64;

	// A filter, for steps up to mStep.
	struct Filter
	{
		double mStep;
		std::shared_ptr<RateTable const> mTable;
	};
	// Outputs without sound.
	struct Stop
	{
		std::int64_t mFirst;
		std::int64_t mEnd;
	};
	// Which filters an output is between, the first one and the next, and how far.
	struct Blend
	{
		std::size_t mFilter = 0;
		float mShare = 0.0f;
	};
	struct Group
	{
		std::array<CurvePositions::Place, kGroup> mPlaces;
		std::array<float, kGroup> mShares;
		std::size_t mFilter = 0;
		unsigned mCount = 0;
	};

	void AddFilters(RateQuality inQuality);
	void AddStops(SpeedCurve const& inCurve, CurvePositions::Settings const& inPositions);
	Blend FindBlend(double inStep) const;
	// The outputs from one on whose filters are the same.
	void Gather(std::int64_t inFirst, unsigned inMost, Group& outGroup) const;
	// inStart: the frame at which the input begins. Outputs go to the channels' place inIndex on.
	void Convert(Group const& inGroup, std::int64_t inStart, unsigned inIndex,
		std::span<Channel const> inChannels) const;
	void FadeAtStops(std::int64_t inFirst, unsigned inCount, std::span<Channel const> inChannels) const;

	CurvePositions mPositions;
	double mLowestBlended;
	// At least the first, for steps up to 1.
	std::vector<Filter> mFilters;
	std::vector<Stop> mStops;
	std::int64_t mFadeFrames = 0;
	unsigned mTaps = 0;
};

} // namespace SonaroHost
