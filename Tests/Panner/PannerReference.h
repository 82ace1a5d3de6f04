#pragma once

#include "Sonaro/PanProcessorType.h"

#include <array>
#include <functional>
#include <vector>

namespace SN::Testing
{

// The panners once more, in double precision and from their formulas alone.

// Left and right, of a pan from 0 to 1.
std::array<double, 2> GetSideKeepingReference(double inPan);
std::array<double, 2> GetEqualPowerReference(double inPan);

struct SurroundReferencePosition
{
	double mX;
	double mY;
	double mCenter;
};
// Left, right, centre, left and right surround.
std::array<double, 5> GetSurroundReference(SurroundReferencePosition const& inPosition, bool inIsStereo);

// The low pass of the low frequency channel: 120 Hz, a Q of the square root of one half.
std::vector<double> RunReferenceFilter(double inRate, std::vector<double> const& inInput);

// A run of blocks without a jump but the first, in each of which the controls stand still.
struct ReferenceRun
{
	PanProcessorType mType;
	double mRate;
	unsigned mBlockFrames;
	// Of each block.
	std::vector<std::vector<double>> mControls;
	std::function<double(unsigned inChannel, long long inFrame)> mInput;
};
// What comes out, by channel; of a balance four channels.
std::vector<std::vector<double>> RunReference(ReferenceRun const& inRun);

} // namespace SN::Testing
