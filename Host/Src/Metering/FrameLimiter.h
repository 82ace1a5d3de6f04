#pragma once

#include "TruePeakFinder.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace SonaroHost
{

// The work of a PeakLimiter, frame by frame.
//
// Each peak allows a gain. The smallest one of a window is held, so long that the smoothing, a moving average in a
// Hann window, has come down to it before the peak and its whole surroundings, as far as the filter of the peak
// reaches, and leaves it after: an average of values that are all small enough is small enough, so nothing overshoots.
// What then lies above the limit comes from gains that move under the filter beside a peak: over thousands of bursts
// up to 80 dB above the limit, at most 0.01 dB.
class FrameLimiter
{
public:
	FrameLimiter(unsigned inChannels, int inSampleRate, double inLimit);

	std::int64_t GetLatencyFrames() const { return static_cast<std::int64_t>(mLatencyFrames); }

	// Works in place on a frame of all channels and returns the gain that it got.
	double Process(float* ioFrame);

private:
	struct Allowed
	{
		std::int64_t mFrame;
		double mGain;
	};

	double Hold(double inGain);
	double Smooth(double inGain);
	void Delay(float* ioFrame, double inGain);

	TruePeakFinder mPeaks;
	double mLimit;
	// What is left of the distance to 1 after a frame of recovery.
	double mRecovery;
	std::size_t mHoldFrames = 0;
	std::size_t mLatencyFrames = 0;
	std::int64_t mFrame = 0;
	// Gains of the window that no later one undercuts, in rising order.
	std::deque<Allowed> mHeld;
	double mGain = 1.0;
	std::vector<double> mWeights;
	// A ring as long as the weights.
	std::vector<double> mGains;
	std::size_t mNextGain = 0;
	// Frames since the last gain below 1.
	std::size_t mFramesAtRest = 0;
	// A ring of interleaved samples.
	std::vector<float> mDelayed;
	std::size_t mNextDelayed = 0;
	std::size_t mChannels;
};

} // namespace SonaroHost
