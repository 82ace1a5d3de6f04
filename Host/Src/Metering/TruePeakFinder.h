#pragma once

#include <cstddef>
#include <vector>

namespace SonaroHost
{

// The largest magnitude of a signal at and between its samples, frame by frame, over all channels.
//
// Filter    A sinc of 49 taps in a Hann window at four times the rate below 96 kHz, at twice the rate below 192 kHz, and
//           none from there on: the filter of libebur128, so that its true peak is found here too.
class TruePeakFinder
{
public:
	TruePeakFinder(unsigned inChannels, int inSampleRate);

	// The peak from the sample GetLatencyFrames before this frame on, up to the sample after that one.
	double Process(float const* inFrame);

	// So many frames to either side are within the filter's reach.
	std::size_t GetLatencyFrames() const { return mCentre; }

private:
	struct Phase
	{
		// The newest sample's tap comes first.
		std::vector<double> mTaps;
	};

	std::vector<Phase> mPhases;
	std::size_t mCentre = 0;
	// Samples of a channel that the filter sees.
	std::size_t mSpan = 1;
	std::size_t mNewest = 0;
	// Twice the span for each channel, the second half repeating the first, so that any run of it is contiguous; the
	// newest sample comes first.
	std::vector<std::vector<float>> mHistories;
};

} // namespace SonaroHost
