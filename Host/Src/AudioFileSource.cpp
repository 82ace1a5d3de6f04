#include "SonaroHost/AudioFileSource.h"

#include "SonaroHost/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

SN::InterfaceRef<AudioFileSource> AudioFileSource::Open(std::filesystem::path const& inPath)
{
	return zorvcore::classref::MakeObject<AudioFileSource>(std::make_unique<AudioFileReader>(inPath));
}

AudioFileSource::AudioFileSource(std::unique_ptr<AudioFileReader> inReader)
	: mReader(std::move(inReader)),
	  mFrameRate(SN::FrameRate::FromSamplesPerSecond(GetInfo().mSampleRate)),
	  mName(GetInfo().mPath.filename().string()),
	  mPath(GetInfo().mPath.string())
{
}

void AudioFileSource::ReadAudio(
	VX::BinaryData const&, dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime, bool)
{
	std::int64_t const frames = inBuffer.GetUseSize();
	std::int64_t const position = inTime.ToFrame64(mFrameRate);
	// The part of the block that lies within the file.
	std::int64_t const first = std::clamp<std::int64_t>(-position, 0, frames);
	std::int64_t const end = std::clamp<std::int64_t>(GetInfo().mFrames - position, first, frames);
	if (first == end || mFailure)
	{
		inBuffer.Zero();
		return;
	}
	try
	{
		CopyFrames(
			position + first, inBuffer, static_cast<unsigned>(first), static_cast<unsigned>(end - first));
	}
	catch (HostError const& error)
	{
		mFailure = error.what();
		inBuffer.Zero();
		return;
	}
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		if (channel >= GetNumChannels())
		{
			inBuffer.MarkChannelSilent(channel);
			continue;
		}
		float* const samples = inBuffer.GetChannel(channel);
		std::fill(samples, samples + first, 0.0f);
		std::fill(samples + end, samples + frames, 0.0f);
		inBuffer.NoteChannelWrite(channel, inBuffer.GetUseSize());
	}
}

void AudioFileSource::CopyFrames(
	std::int64_t inPosition, dsp::AudioBuffer& ioBuffer, unsigned inOffset, unsigned inFrames)
{
	unsigned const fileChannels = GetNumChannels();
	auto const channels =
		static_cast<unsigned>(std::min<unsigned long long>(fileChannels, ioBuffer.GetNumChannels()));
	for (unsigned done = 0; done < inFrames;)
	{
		std::int64_t const position = inPosition + done;
		std::int64_t const blockFrames = mReader->GetBlockFrames();
		std::int64_t const inBlock = position % blockFrames;
		float const* const block = mReader->GetBlock(position / blockFrames) + inBlock * fileChannels;
		auto const count =
			static_cast<unsigned>(std::min<std::int64_t>(inFrames - done, blockFrames - inBlock));
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			float const* in = block + GetInfo().mChannelOrder[channel];
			float* const out = ioBuffer.GetChannel(channel) + inOffset + done;
			for (unsigned i = 0; i < count; ++i, in += fileChannels)
			{
				out[i] = *in;
			}
		}
		done += count;
	}
}

void* AudioFileSource::QueryMap(SN::Guid const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<IAudioSource, IAudioSourceFile, AudioFileSource>(
		this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost
