#pragma once

#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace SN::Testing
{

// Writes a value into all that a buffer has; its flags stay, so that it is stale below a flag.
inline void FillWith(dsp::AudioBuffer& outBuffer, float inValue)
{
	for (unsigned channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
	{
		std::fill_n(outBuffer.GetChannel(channel), outBuffer.GetUseSize(), inValue);
	}
}

// A buffer that sounds, at one value.
inline dsp::AudioBuffer MakeBuffer(unsigned long long inChannels, unsigned inFrames, float inValue)
{
	dsp::AudioBuffer buffer(inChannels, inFrames);
	FillWith(buffer, inValue);
	return buffer;
}

// A silent buffer with stale samples below its flags.
inline dsp::AudioBuffer MakeStaleBuffer(unsigned long long inChannels, unsigned inFrames)
{
	auto buffer = MakeBuffer(inChannels, inFrames, -4711.0f);
	buffer.SetSilenceFlags(dsp::SilenceFlags::All());
	return buffer;
}

// A window over a buffer from an offset on, to the buffer's end or over so many samples; of another number of
// channels than the buffer where it says so.
inline std::unique_ptr<dsp::AudioSubBuffer> WindowOf(
	dsp::AudioBuffer& ioParent, unsigned inOffset = 0, unsigned inFrames = ~0u, unsigned inChannels = 0)
{
	auto window = std::make_unique<dsp::AudioSubBuffer>();
	window->Init(inChannels ? inChannels : ioParent.GetNumChannels());
	window->Assign(ioParent, inOffset);
	window->SetUseSize(inFrames);
	return window;
}

// The audible samples of one channel: zeros where it is flagged.
inline std::vector<float> Heard(dsp::AudioBuffer const& inBuffer, unsigned long long inChannel = 0)
{
	std::vector<float> heard(inBuffer.GetUseSize());
	if (!inBuffer.IsChannelSilent(inChannel))
	{
		std::copy_n(inBuffer.GetChannel(inChannel), heard.size(), heard.begin());
	}
	return heard;
}

// And of all channels.
inline std::vector<std::vector<float>> HeardChannels(dsp::AudioBuffer const& inBuffer)
{
	std::vector<std::vector<float>> heard;
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		heard.push_back(Heard(inBuffer, channel));
	}
	return heard;
}

} // namespace SN::Testing
