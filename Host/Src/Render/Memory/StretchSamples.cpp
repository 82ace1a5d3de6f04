#include "SonaroHost/Render/StretchSamples.h"

#include "Media/SoundDecoder.h"
#include "Media/Stretch/StretchedDecoder.h"
#include "Media/Stretch/StretchedInfo.h"
#include "Render/StretchChoice.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Media/RateConverter.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kFramesAtOnce = 16384;

using Channels = std::span<float const* const>;
using Samples = std::vector<std::vector<float>>;

// Samples in memory as a file is decoded.
class MemoryDecoder final : public SoundDecoder
{
public:
	MemoryDecoder(Channels inChannels, std::int64_t inFrames)
		: mChannels(inChannels),
		  mFrames(inFrames)
	{
	}

	unsigned GetNumChannels() const noexcept override { return static_cast<unsigned>(mChannels.size()); }
	bool IsSeekExact() const noexcept override { return true; }
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	bool SeekTo(std::int64_t inFrame) override
	{
		mPosition = inFrame;
		return true;
	}
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override
	{
		std::int64_t const count = std::min(inFrames, mFrames - mPosition);
		for (std::int64_t i = 0; i < count; ++i)
		{
			for (float const* const channel : mChannels)
			{
				*outSamples++ = channel[mPosition + i];
			}
		}
		mPosition += count;
		return count;
	}

private:
	Channels mChannels;
	std::int64_t mFrames;
	std::int64_t mPosition = 0;
};

Samples MakeRoom(std::size_t inChannels, std::int64_t inFrames)
{
	return Samples(inChannels, std::vector<float>(static_cast<std::size_t>(inFrames)));
}

AudioFileInfo Describe(std::size_t inChannels, std::int64_t inFrames, int inSampleRate)
{
	AudioFileInfo info;
	info.mPath = "samples";
	info.mSampleRate = inSampleRate;
	info.mFrames = inFrames;
	info.mLayout = MakeLayoutOfChannels(static_cast<unsigned>(inChannels));
	info.mChannelOrder.resize(inChannels);
	std::iota(info.mChannelOrder.begin(), info.mChannelOrder.end(), 0u);
	return info;
}

// Decodes a recording into room for all of it. What it lacks at its end stays silent.
void DecodeAll(SoundDecoder& ioDecoder, std::function<void()> const& inAfterBlock, Samples& outSamples)
{
	std::size_t const channels = outSamples.size();
	std::vector<float> block(static_cast<std::size_t>(kFramesAtOnce) * channels);
	auto const frames = static_cast<std::int64_t>(outSamples.front().size());
	for (std::int64_t done = 0; done < frames;)
	{
		std::int64_t const count = ioDecoder.Read(block.data(), std::min(kFramesAtOnce, frames - done));
		if (count == 0)
		{
			return;
		}
		float const* sample = block.data();
		for (std::int64_t i = 0; i < count; ++i)
		{
			for (std::vector<float>& channel : outSamples)
			{
				channel[static_cast<std::size_t>(done + i)] = *sample++;
			}
		}
		done += count;
		if (inAfterBlock)
		{
			inAfterBlock();
		}
	}
}

// A part of a channel, with silence where it reaches beyond the ends.
void CopyPart(float const* inChannel, std::int64_t inFrames, SampleConverter::Span const& inSpan,
	std::vector<float>& outPart)
{
	outPart.assign(static_cast<std::size_t>(inSpan.mEnd - inSpan.mFirst), 0.0f);
	std::int64_t const first = std::clamp<std::int64_t>(inSpan.mFirst, 0, inFrames);
	std::int64_t const end = std::clamp(inSpan.mEnd, first, inFrames);
	if (first < end)
	{
		std::copy(inChannel + first, inChannel + end, outPart.begin() + (first - inSpan.mFirst));
	}
}

} // namespace

Samples ResampleSamples(Channels inChannels, std::int64_t inFrames, Ratio const& inStep,
	RateQuality inQuality, std::function<void()> const& inAfterBlock)
{
	RateConverter const converter(inStep, {}, inQuality);
	std::int64_t const frames = (Ratio(inFrames) / inStep).Round();
	Samples samples = MakeRoom(inChannels.size(), frames);
	std::vector<std::vector<float>> inputs(inChannels.size());
	std::vector<SampleConverter::Channel> channels(inChannels.size());
	for (std::int64_t done = 0; done < frames; done += kFramesAtOnce)
	{
		std::int64_t const count = std::min(kFramesAtOnce, frames - done);
		SampleConverter::Span const span = converter.GetInput(done, count);
		for (std::size_t channel = 0; channel < channels.size(); ++channel)
		{
			CopyPart(inChannels[channel], inFrames, span, inputs[channel]);
			channels[channel] = {inputs[channel].data(), samples[channel].data() + done};
		}
		converter.Convert(done, static_cast<unsigned>(count), channels);
		if (inAfterBlock)
		{
			inAfterBlock();
		}
	}
	return samples;
}

Samples StretchSamples(Channels inChannels, std::int64_t inFrames, int inSampleRate,
	StretchWish const& inWish, std::function<void()> const& inAfterBlock)
{
	auto const stretch = ChooseStretch(inWish.mSpeed, inWish.mKeepsPitch, inWish.mSemitones, inWish.mEngine);
	if (!stretch)
	{
		return ResampleSamples(
			inChannels, inFrames, Ratio::FromExactDouble(inWish.mSpeed), RateQuality::kFull, inAfterBlock);
	}
	AudioFileInfo const recording =
		MakeStretched(Describe(inChannels.size(), inFrames, inSampleRate), *stretch);
	Samples samples = MakeRoom(inChannels.size(), recording.mFrames);
	StretchedDecoder decoder(recording, std::make_unique<MemoryDecoder>(inChannels, inFrames));
	DecodeAll(decoder, inAfterBlock, samples);
	return samples;
}

} // namespace SonaroHost
