#include "SonaroHost/Metering/PeakMeter.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

void PeakMeter::SetMeterData(dsp::AudioBuffer const& inBuffer, SN::TickTime const&)
{
	std::size_t const channels = std::min<std::size_t>(inBuffer.GetNumChannels(), kMostChannels);
	for (std::size_t channel = 0; channel < channels; ++channel)
	{
		if (inBuffer.IsChannelSilent(channel))
		{
			continue;
		}
		float peak = 0.0f;
		float const* const samples = inBuffer.GetChannel(channel);
		for (unsigned i = 0; i < inBuffer.GetUseSize(); ++i)
		{
			peak = std::max(peak, std::abs(samples[i]));
		}
		// Somebody who looks meanwhile takes the peak before this block, or has it once more.
		std::atomic<float>& largest = mPeaks[channel];
		largest.store(std::max(largest.load(std::memory_order_relaxed), peak), std::memory_order_relaxed);
	}
}

void PeakMeter::Reset()
{
	for (std::atomic<float>& peak : mPeaks)
	{
		peak.store(0.0f, std::memory_order_relaxed);
	}
}

float PeakMeter::TakePeak(std::size_t inChannel)
{
	return inChannel < kMostChannels ? mPeaks[inChannel].exchange(0.0f, std::memory_order_relaxed) : 0.0f;
}

float PeakMeter::TakePeak()
{
	float largest = 0.0f;
	for (std::size_t channel = 0; channel < kMostChannels; ++channel)
	{
		largest = std::max(largest, TakePeak(channel));
	}
	return largest;
}

} // namespace SonaroHost
