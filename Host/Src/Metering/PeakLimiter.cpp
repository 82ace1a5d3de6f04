#include "SonaroHost/Metering/PeakLimiter.h"

#include "FrameLimiter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

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
