#include "SampleBytes.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <bit>

namespace SonaroHost::Serve
{

SampleBytes::SampleBytes(EncoderFormat const& inFormat, std::int64_t inFirstFrame)
	: mChannels(static_cast<unsigned>(inFormat.mLayout.size())),
	  mSampleSize(GetSampleSize(inFormat.mFormat.mSamples)),
	  mPlaces(FindFramePlaces(inFormat))
{
	int const bits = GetIntegerBits(inFormat.mFormat.mSamples);
	for (unsigned channel = 0; bits > 0 && channel < mChannels; ++channel)
	{
		mQuantizers.emplace_back(bits, inFormat.mFormat.mDither, channel).SkipTo(inFirstFrame);
	}
}

void SampleBytes::Append(dsp::AudioBuffer const& inBlock, std::string& ioBytes)
{
	unsigned const frames = inBlock.GetUseSize();
	auto const sampleSize = static_cast<std::size_t>(mSampleSize);
	std::size_t const start = ioBytes.size();
	ioBytes.resize(start + frames * mChannels * sampleSize);
	for (unsigned channel = 0; channel < mChannels; ++channel)
	{
		unsigned const source = mPlaces.GetChannel(channel);
		float const gain = mPlaces.GetGain(channel);
		float const* const samples = inBlock.IsChannelSilent(source) ? nullptr : inBlock.GetChannel(source);
		char* out = ioBytes.data() + start + channel * sampleSize;
		for (unsigned i = 0; i < frames; ++i, out += mChannels * sampleSize)
		{
			float const sample = samples ? samples[i] * gain : 0.0f;
			auto const bits = mQuantizers.empty()
								  ? std::bit_cast<std::uint32_t>(sample)
								  : static_cast<std::uint32_t>(mQuantizers[channel].Quantize(sample));
			for (std::size_t byte = 0; byte < sampleSize; ++byte)
			{
				out[byte] = static_cast<char>(bits >> 8 * byte & 0xff);
			}
		}
	}
}

} // namespace SonaroHost::Serve
