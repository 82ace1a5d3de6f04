#include "FrameLimiter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace SonaroHost
{

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
	  mRecovery(std::exp(-1.0 / (kRecoverySeconds * inSampleRate))),
	  mChannels(inChannels)
{
	auto const lookAhead = static_cast<std::size_t>(std::ceil(kLookAheadSeconds * inSampleRate)) + 1;
	std::size_t const reach = mPeaks.GetLatencyFrames();
	double sum = 0.0;
	for (std::size_t i = 0; i < lookAhead; ++i)
	{
		double const turn =
			2.0 * std::numbers::pi * static_cast<double>(i + 1) / static_cast<double>(lookAhead + 1);
		mWeights.push_back(1.0 - std::cos(turn));
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

} // namespace SonaroHost
