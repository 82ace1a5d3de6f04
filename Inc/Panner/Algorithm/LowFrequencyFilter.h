#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// The channels that a low frequency channel is derived from, each with its gain.
struct LowFrequencyFeed
{
	float const* mFirst = nullptr;
	// Null for one channel, which is taken as it is.
	float const* mSecond = nullptr;
	float mFirstGain = 1.0f;
	float mSecondGain = 0.0f;
};

// The low-pass filter of a derived low frequency channel: second order, 120 Hz, a Q of the square root of
// one half, unity gain for what does not move. The bilinear transform of the analogue filter, after the
// audio equaliser cookbook formulas. In single precision, and any cut into blocks gives the same bits.
class LowFrequencyFilter
{
public:
	// Makes a filter for that rate, with nothing heard before.
	void Init(FrameRate const& inFrameRate);
	// Makes a filter for the same rate as inOther, with nothing heard before.
	void CopyCoefficientsFrom(LowFrequencyFilter const& inOther);

	// outOutput does not overlap the feed.
	void Process(unsigned inFrames, LowFrequencyFeed const& inFeed, float* outOutput) SONARO_NONBLOCKING;

private:
	float mA1 = 0.0f;
	float mA2 = 0.0f;
	float mB = 0.0f;
	// The last two inputs and outputs, the latest first.
	float mX1 = 0.0f;
	float mX2 = 0.0f;
	float mY1 = 0.0f;
	float mY2 = 0.0f;
};

} // namespace SN
