#include "SampleRing.h"

#include <algorithm>

namespace SonaroHost::Playback
{

void SampleRing::Write(dsp::AudioBuffer const& inBlock)
{
	std::int64_t const written = mWritten.load(std::memory_order_relaxed);
	std::int64_t const count = inBlock.GetUseSize();
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		float const* const samples = inBlock.IsChannelSilent(channel) ? nullptr : inBlock.GetChannel(channel);
		auto place = static_cast<std::size_t>(written % mCapacity) * mChannels + channel;
		for (std::int64_t i = 0; i < count; ++i)
		{
			mSamples[place] = samples ? samples[i] : 0.0f;
			place += mChannels;
			place = place < mSamples.size() ? place : place - mSamples.size();
		}
	}
	mWritten.store(written + count, std::memory_order_release);
}

void SampleRing::Read(float* outSamples, std::int64_t inFrames)
{
	std::int64_t const read = mRead.load(std::memory_order_relaxed);
	if (outSamples)
	{
		std::int64_t const first = read % mCapacity;
		std::int64_t const count = std::min(inFrames, mCapacity - first);
		float* const rest = std::copy_n(mSamples.data() + first * mChannels, count * mChannels, outSamples);
		std::copy_n(mSamples.data(), (inFrames - count) * mChannels, rest);
	}
	mRead.store(read + inFrames, std::memory_order_release);
}

} // namespace SonaroHost::Playback
