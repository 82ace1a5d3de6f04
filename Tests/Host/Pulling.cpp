#include "Pulling.h"

#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <limits>

namespace SonaroHost::Testing
{

Sound Pull(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames)
{
	unsigned const channels = ioSource.GetNumChannels();
	dsp::AudioBuffer buffer(channels, inFrames);
	for (unsigned channel = 0; channel < channels; ++channel)
	{
		// What a source leaves unwritten is seen.
		std::fill_n(buffer.GetChannel(channel), inFrames, std::numeric_limits<float>::quiet_NaN());
	}
	ioSource.ReadAudio(VX::BinaryData(), buffer, SN::TickTime(inPosition, ioSource.GetFrameRate()), false);

	Sound sound{static_cast<int>(channels), ioSource.GetInfo().mSampleRate, {}};
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
