#include "Pulling.h"

#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <limits>

namespace SonaroHost::Testing
{

namespace
{

template <class Read>
Sound PullThrough(AudioFileSource& ioSource, unsigned inFrames, Read&& inRead)
{
	unsigned const channels = ioSource.GetNumChannels();
	dsp::AudioBuffer buffer(channels, inFrames);
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		// What a source leaves unwritten is seen.
		std::fill_n(buffer.GetChannel(channel), inFrames, std::numeric_limits<float>::quiet_NaN());
	}
	inRead(buffer);

	Sound sound{static_cast<int>(channels), ioSource.GetInfo().mSampleRate, {}};
	sound.mSamples.reserve(static_cast<std::size_t>(channels) * inFrames);
	for (unsigned frame = 0; frame < inFrames; ++frame)
	{
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			bool const isSilent = buffer.IsChannelSilent(channel);
			sound.mSamples.push_back(isSilent ? 0.0f : buffer.GetChannel(channel)[frame]);
		}
	}
	return sound;
}

} // namespace

Sound Pull(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames)
{
	SN::TickTime const time(inPosition, ioSource.GetFrameRate());
	return PullThrough(ioSource, inFrames,
		[&](dsp::AudioBuffer& ioBuffer) { ioSource.ReadAudio(VX::BinaryData(), ioBuffer, time, false); });
}

Sound PullPrefetched(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames)
{
	SN::TickTime const time(inPosition, ioSource.GetFrameRate());
	return PullThrough(ioSource, inFrames,
		[&](dsp::AudioBuffer& ioBuffer)
		{ EXPECT_EQ(ioSource.ReadPrefetchedAudio(time, ioBuffer), SN::kSuccess); });
}

void Prefetch(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames)
{
	ioSource.PrefetchAudioData(0, SN::TickTime(inPosition, ioSource.GetFrameRate()), inFrames);
}

Sound CutWithSilence(Sound const& inSound, std::int64_t inPosition, unsigned inFrames)
{
	Sound cut{inSound.mChannels, inSound.mSampleRate, {}};
	for (std::int64_t frame = inPosition; frame < inPosition + inFrames; ++frame)
	{
		for (int channel = 0; channel < inSound.mChannels; ++channel)
		{
			bool const isInside = frame >= 0 && frame < inSound.GetFrames();
			auto const index = static_cast<std::size_t>(frame * inSound.mChannels + channel);
			cut.mSamples.push_back(isInside ? inSound.mSamples[index] : 0.0f);
		}
	}
	return cut;
}

} // namespace SonaroHost::Testing
