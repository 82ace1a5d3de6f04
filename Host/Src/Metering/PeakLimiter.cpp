#include "SonaroHost/Metering/PeakLimiter.h"

#include "TruePeakTaps.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <deque>
#include <numbers>
#include <utility>

namespace SonaroHost
{

// The largest magnitude of a signal at and between its samples, frame by frame, over all channels.
class TruePeakFinder
{
public:
	TruePeakFinder(unsigned inChannels, int inSampleRate);

	// The peak from the sample GetLatencyFrames before this frame on, up to the sample after that one.
	double Process(float const* inFrame);

	// So many frames to either side are within the filter's reach.
	std::size_t GetLatencyFrames() const { return mCentre; }

private:
	// The taps of the points between samples, by their phase.
	std::vector<std::vector<double>> mPhases;
	std::size_t mCentre = 0;
	// Samples of a channel that the filter sees.
	std::size_t mSpan = 1;
	std::size_t mNewest = 0;
	// Twice the span for each channel, the second half repeating the first, so that any run of it is contiguous; the
	// newest sample comes first.
	std::vector<std::vector<float>> mHistories;
};

TruePeakFinder::TruePeakFinder(unsigned inChannels, int inSampleRate)
{
	std::size_t const factor = GetTruePeakFactor(inSampleRate);
	if (factor > 1)
	{
		mCentre = (kTruePeakTaps - 1) / 2 / factor;
		mSpan = 2 * mCentre + 1;
		// The phase 0 is the sample itself.
		for (std::size_t phase = 1; phase < factor; ++phase)
		{
			mPhases.push_back(GetTruePeakPhase(phase, factor));
		}
	}
	mHistories.assign(inChannels, std::vector<float>(2 * mSpan));
}

double TruePeakFinder::Process(float const* inFrame)
{
	mNewest = mNewest == 0 ? mSpan - 1 : mNewest - 1;
	double peak = 0.0;
	for (std::vector<float>& history : mHistories)
	{
		history[mNewest] = *inFrame;
		history[mNewest + mSpan] = *inFrame++;
		float const* const newest = history.data() + mNewest;
		peak = std::max(peak, static_cast<double>(std::fabs(newest[mCentre])));
		for (std::vector<double> const& taps : mPhases)
		{
			double sum = 0.0;
			for (std::size_t i = 0; i < taps.size(); ++i)
			{
				sum += taps[i] * static_cast<double>(newest[i]);
			}
			peak = std::max(peak, std::fabs(sum));
		}
	}
	return peak;
}

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

namespace
{

constexpr double kLookAheadSeconds = 0.0015;
constexpr double kRecoverySeconds = 0.1;
// Nearer to 1 than this, the gain is 1.
constexpr double kRest = 1.0e-7;
// What rounding may add to a peak.
constexpr double kMargin = 0.9999;

} // namespace

FrameLimiter::FrameLimiter(unsigned inChannels, int inSampleRate, double inLimit)
	: mPeaks(inChannels, inSampleRate),
	  mLimit(inLimit * kMargin),
	  mRecovery(zorvcore::math::Exp(-1.0 / (kRecoverySeconds * inSampleRate))),
	  mChannels(inChannels)
{
	auto const lookAhead = static_cast<std::size_t>(std::ceil(kLookAheadSeconds * inSampleRate)) + 1;
	std::size_t const reach = mPeaks.GetLatencyFrames();
	double sum = 0.0;
	for (std::size_t i = 0; i < lookAhead; ++i)
	{
		double const turn =
			2.0 * std::numbers::pi * static_cast<double>(i + 1) / static_cast<double>(lookAhead + 1);
		mWeights.push_back(1.0 - zorvcore::math::Cos(turn));
		sum += mWeights.back();
	}
	for (double& weight : mWeights)
	{
		weight /= sum;
	}
	mGains.assign(lookAhead, 1.0);
	mFramesAtRest = lookAhead;
	// A peak that is found at frame t lies between t - reach and the frame after it. The gain of frame f is due when
	// the peaks from f - reach - 1 to f + reach have been in every gain of the average.
	mLatencyFrames = lookAhead - 1 + 2 * reach;
	mHoldFrames = lookAhead + 2 * reach + 1;
	mDelayed.assign(std::max<std::size_t>(mLatencyFrames, 1) * mChannels, 0.0f);
}

double FrameLimiter::Process(float* ioFrame)
{
	double const peak = mPeaks.Process(ioFrame);
	double const held = Hold(peak > mLimit ? mLimit / peak : 1.0);
	double const recovered = 1.0 - (1.0 - mGain) * mRecovery;
	mGain = std::min(held, 1.0 - recovered < kRest ? 1.0 : recovered);
	double const gain = Smooth(mGain);
	Delay(ioFrame, gain);
	++mFrame;
	return gain;
}

double FrameLimiter::Hold(double inGain)
{
	while (!mHeld.empty() && mHeld.back().mGain >= inGain)
	{
		mHeld.pop_back();
	}
	mHeld.push_back({mFrame, inGain});
	if (mFrame - mHeld.front().mFrame >= static_cast<std::int64_t>(mHoldFrames))
	{
		mHeld.pop_front();
	}
	return mHeld.front().mGain;
}

double FrameLimiter::Smooth(double inGain)
{
	mGains[mNextGain] = inGain;
	mNextGain = mNextGain + 1 == mGains.size() ? 0 : mNextGain + 1;
	mFramesAtRest = inGain < 1.0 ? 0 : mFramesAtRest + 1;
	if (mFramesAtRest >= mGains.size())
	{
		return 1.0;
	}
	// The weights are the same from either end.
	double sum = 0.0;
	std::size_t const older = mGains.size() - mNextGain;
	for (std::size_t i = 0; i < older; ++i)
	{
		sum += mWeights[i] * mGains[mNextGain + i];
	}
	for (std::size_t i = older; i < mGains.size(); ++i)
	{
		sum += mWeights[i] * mGains[i - older];
	}
	return std::min(sum, 1.0);
}

void FrameLimiter::Delay(float* ioFrame, double inGain)
{
	float* const delayed = mDelayed.data() + mNextDelayed * mChannels;
	for (std::size_t channel = 0; channel < mChannels; ++channel)
	{
		std::swap(delayed[channel], ioFrame[channel]);
		if (inGain < 1.0)
		{
			ioFrame[channel] = static_cast<float>(static_cast<double>(ioFrame[channel]) * inGain);
		}
	}
	mNextDelayed = (mNextDelayed + 1) * mChannels == mDelayed.size() ? 0 : mNextDelayed + 1;
}

PeakLimiter::PeakLimiter(unsigned inChannels, int inSampleRate, double inLimit)
	: mLimiter(std::make_unique<FrameLimiter>(inChannels, inSampleRate, inLimit)),
	  mFrame(inChannels)
{
}

PeakLimiter::~PeakLimiter() = default;

std::int64_t PeakLimiter::GetLatencyFrames() const
{
	return mLimiter->GetLatencyFrames();
}

void PeakLimiter::Process(dsp::AudioBuffer& ioBlock)
{
	unsigned const frames = ioBlock.GetUseSize();
	for (unsigned channel = 0; channel < mFrame.size(); ++channel)
	{
		if (ioBlock.IsChannelSilent(channel))
		{
			ioBlock.ZeroChannel(channel, frames, false);
		}
	}
	float* const* const channels = ioBlock.GetChannels();
	for (unsigned i = 0; i < frames; ++i)
	{
		for (unsigned channel = 0; channel < mFrame.size(); ++channel)
		{
			float const sample = channels[channel][i];
			mFrame[channel] = std::isfinite(sample) ? sample : 0.0f;
		}
		mSmallestGain = std::min(mSmallestGain, mLimiter->Process(mFrame.data()));
		for (unsigned channel = 0; channel < mFrame.size(); ++channel)
		{
			channels[channel][i] = mFrame[channel];
		}
	}
	ioBlock.NoteBufferWrite(0, frames);
}

} // namespace SonaroHost
