#pragma once

#include "SonaroHost/Base/SpeedCurve.h"

#include <optional>
#include <vector>

namespace SonaroHost
{

// When a content that passes along a speed curve is at its places, in a stretch of time. Times are right to a
// nanosecond in a day.
class CurveTimes
{
public:
	// At a time, the content is at a position.
	struct Passage
	{
		double mTime;
		double mPosition;
	};

	CurveTimes(SpeedCurve const& inCurve, Ratio const& inFrom, Ratio const& inTo);

	// The first time and the last one; nothing where the position is not reached.
	std::optional<double> FindFirst(double inPosition) const;
	std::optional<double> FindLast(double inPosition) const;
	// The way that is passed, forward and backward together.
	double GetTotalWay() const;
	// In the order of time, every passage of a position that is inFirst and a multiple of inStep, which is above 0. Where the
	// content stands still on one or turns at one, there is one passage.
	std::vector<Passage> ListPassages(double inFirst, double inStep) const;

private:
	// A stretch in one direction within the reach of one key.
	struct Piece
	{
		double mStart;
		double mEnd;
		double mFrom;
		double mTo;
		// The key, and the next one.
		double mKeyTime;
		double mKeyPosition;
		double mSpeed;
		double mRise;
		double mLength;
		Interpolation mInterpolation;
	};

	static std::optional<double> FindIn(Piece const& inPiece, double inPosition);
	static double GetPosition(Piece const& inPiece, double inTime);
	static double FindTime(Piece const& inPiece, double inPosition);

	std::vector<Piece> mPieces;
};

} // namespace SonaroHost
