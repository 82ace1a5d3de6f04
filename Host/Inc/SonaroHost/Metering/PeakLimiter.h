#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

class FrameLimiter;

// Keeps the true peak of a programme below a limit. All channels get the same gain, so that places stay.
//
// Peak      That of the signal through the samples, oversampled as a LoudnessMeter does: its reading of the output lies
//           at most 0.05 dB above the limit.
// Gain      Never above 1. It is down before a peak comes, by 1.5 ms, smoothly and without overshoot, and recovers by
//           a time constant of 100 ms. While it is 1, samples pass bit for bit.
// Samples   Those that are not finite become 0.
// Blocks    Any cut gives the same samples.
class PeakLimiter
{
public:
	// inLimit: linear, above 0.
	PeakLimiter(unsigned inChannels, int inSampleRate, double inLimit);
	~PeakLimiter();
	PeakLimiter(PeakLimiter const&) = delete;
	PeakLimiter& operator=(PeakLimiter const&) = delete;

	// Frames by which the output is late.
	std::int64_t GetLatencyFrames() const;

	// Works in place.
	void Process(dsp::AudioBuffer& ioBlock);

	// The smallest gain so far, linear.
	double GetSmallestGain() const { return mSmallestGain; }

private:
	std::unique_ptr<FrameLimiter> mLimiter;
	std::vector<float> mFrame;
	double mSmallestGain = 1.0;
};

} // namespace SonaroHost
