#pragma once

#include "NoiseGains.h"
#include "NoiseLearner.h"
#include "SonaroHost/Offline/NoiseProfile.h"
#include "SpectralGrid.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost
{

// Takes a noise away from a recording, hop by hop from any place on. What comes out at a place depends on the recording
// and the place alone.
//
// Method   What is to go is worked out from the spectra and subtracted from the samples: where nothing is to go, they stay
//          as they are to the bit. Gains are smoothed over the neighbours in time and frequency, so that single bins of
//          noise do not sound.
// Samples  Those that are not finite become silence.
// Threads  One at a time.
class NoiseReducer
{
public:
	struct Recording
	{
		int mSampleRate = 0;
		unsigned mChannels = 0;
		std::int64_t mFrames = 0;
	};

	// inRead is asked for frames of the recording alone, in their order. inFirst: the frame that comes out first.
	NoiseReducer(std::shared_ptr<NoiseProfile const> inProfile, double inReduction,
		Recording const& inRecording, std::int64_t inFirst, FrameReader inRead);

	// The next frames, as many as the buffer uses.
	void Read(dsp::AudioBuffer& outBuffer);

private:
	// Of one channel.
	struct Lane
	{
		// The hops of two frames, the newest one at the end.
		std::vector<float> mSamples;
		// Of the frame before the newest one, and of that.
		std::vector<float> mLastSpectrum;
		std::vector<float> mSpectrum;
		// What is to go from the hops of the frame before.
		std::vector<float> mNoise;
	};

	// Takes the next hop in, and finishes another one.
	void Advance();
	void ReadHop();
	void Analyse();
	void SmoothGains();
	void Subtract(Lane& ioLane);

	SpectralGrid mGrid;
	Recording mRecording;
	FrameReader mRead;
	SpectralTransform mTransform;
	NoiseGains mDecision;
	std::vector<Lane> mLanes;
	std::vector<float> mPower;
	// As decided of three frames, the newest first, and smoothed of the one between.
	std::vector<std::vector<float>> mGains;
	std::vector<float> mShares;
	std::vector<float> mRemoved;
	// Frames that were read at once, and where they begin.
	std::vector<float> mInterleaved;
	std::int64_t mInterleavedStart = 0;
	std::int64_t mInterleavedFrames = 0;
	// The hop that is read next, and of the finished hop what is not given yet.
	std::int64_t mNextHop = 0;
	unsigned mReady = 0;
};

} // namespace SonaroHost
