#pragma once

#include "FixedPolynomial.h"
#include "SonaroHost/Base/SpeedCurve.h"

#include <array>
#include <cstdint>
#include <vector>

namespace SonaroHost
{

// Where outputs stand on an input that passes along a speed curve.
//
// Position  Right to 2^-40 of a frame, by integers alone, whatever was asked before. Outputs go from -2^42 to 2^42.
// Threads   Any, at the same time.
class CurvePositions
{
public:
	struct Settings
	{
		// Frames a second.
		Ratio mOutputRate;
		Ratio mInputRate;
		// The output that stands at the curve's time 0, and the input's place there: a frame, and what is added to it.
		std::int64_t mOrigin = 0;
		std::int64_t mFrame = 0;
		Ratio mOffset;
	};
	// A frame, and the part of 2^64 of one after it.
	using Place = FixedPolynomial::Value;

	// A range of frames, mEnd outside.
	struct Span
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	CurvePositions(SpeedCurve const& inCurve, Settings const& inSettings);

	Place Find(std::int64_t inOutput) const { return FindIn(FindSegment(inOutput), inOutput); }
	// Frames of the input that pass in one of the output, below 0 backwards.
	double GetStep(std::int64_t inOutput) const;
	// The range of the frames of so many places, 1 or more.
	Span GetSpan(std::int64_t inFirst, std::int64_t inCount) const;
	// The largest of all, without its sign.
	double GetLargestStep() const { return mLargestStep; }
	// Whether an output is one of those that pass the input backwards.
	bool IsBackwards(std::int64_t inOutput) const;
	// The first output after one at which the direction changes, or inEnd.
	std::int64_t FindTurn(std::int64_t inAfter, std::int64_t inEnd) const;

private:
	// The outputs from one on, as far as one polynomial goes, which counts from there.
	struct Segment
	{
		std::int64_t mFirst;
		FixedPolynomial mPositions;
		// Coefficients of the step.
		std::array<double, FixedPolynomial::kCoefficients - 1> mSteps;
	};
	struct Maker;

	Segment const& FindSegment(std::int64_t inOutput) const;
	static Place FindIn(Segment const& inSegment, std::int64_t inOutput)
	{
		return inSegment.mPositions(inOutput - inSegment.mFirst);
	}
	static double GetStepIn(Segment const& inSegment, std::int64_t inOutput);

	std::vector<Segment> mSegments;
	// The outputs from which on the direction is another one.
	std::vector<std::int64_t> mTurns;
	bool mBeginsBackwards = false;
	double mLargestStep = 0.0;
};

} // namespace SonaroHost
