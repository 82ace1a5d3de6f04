#include "SonaroHost/PeakLimiter.h"

#include "PeakLimiterStage.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

namespace
{

constexpr int kNumStages = 2;

} // namespace

PeakLimiter::PeakLimiter(unsigned inChannels, int inSampleRate, double inLimit)
	: mFrame(inChannels)
{
	for (int i = 0; i < kNumStages; ++i)
	{
		mStages.emplace_back(inChannels, inSampleRate, inLimit);
	}
}

PeakLimiter::~PeakLimiter() = default;

std::int64_t PeakLimiter::GetLatencyFrames() const
{
	std::int64_t frames = 0;
	for (PeakLimiterStage const& stage : mStages)
	{
		frames += stage.GetLatencyFrames();
	}
	return frames;
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
		double gain = 1.0;
		for (PeakLimiterStage& stage : mStages)
		{
			gain *= stage.Process(mFrame.data());
		}
		mSmallestGain = std::min(mSmallestGain, gain);
		for (unsigned channel = 0; channel < mFrame.size(); ++channel)
		{
			channels[channel][i] = mFrame[channel];
		}
	}
	ioBlock.NoteBufferWrite(0, frames);
}

} // namespace SonaroHost
