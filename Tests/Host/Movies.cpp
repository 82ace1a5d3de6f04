#include "Movies.h"

#include "SonaroHost/Media/AudioFileReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace SonaroHost::Testing
{

void RunFfmpeg(std::string const& inArguments)
{
	std::string const command = "ffmpeg -nostdin -v error -y " + inArguments;
	if (std::system(command.c_str()) != 0)
	{
		throw std::runtime_error("failed: " + command);
	}
}

Sound MakeIndexSound(int inChannels, int inSampleRate, std::int64_t inFrames)
{
	Sound sound{inChannels, inSampleRate, {}};
	for (std::int64_t frame = 0; frame < inFrames; ++frame)
	{
		for (int channel = 0; channel < inChannels; ++channel)
		{
			sound.mSamples.push_back(static_cast<float>((channel << 17) + frame + 1) / 8388608.0f);
		}
	}
	return sound;
}

Sound DecodeByFfmpeg(std::filesystem::path const& inPath, int inChannels, int inSampleRate)
{
	std::filesystem::path const raw = inPath.string() + ".f32";
	RunFfmpeg("-i " + inPath.string() + " -map 0:a:0 -f f32le " + raw.string());
	std::string const bytes = ReadBytes(raw);
	Sound sound{inChannels, inSampleRate, std::vector<float>(bytes.size() / sizeof(float))};
	std::memcpy(sound.mSamples.data(), bytes.data(), sound.mSamples.size() * sizeof(float));
	return sound;
}

Sound ReadMovie(std::filesystem::path const& inPath, unsigned inStream)
{
	AudioFileReader reader(inPath, inStream);
	AudioFileInfo const& info = reader.GetInfo();
	Sound sound{static_cast<int>(info.GetNumChannels()), info.mSampleRate, {}};
	for (std::int64_t position = 0; position < info.mFrames; position += reader.GetBlockFrames())
	{
		float const* const block = reader.GetBlock(position / reader.GetBlockFrames());
		std::int64_t const count = std::min(reader.GetBlockFrames(), info.mFrames - position);
		sound.mSamples.insert(sound.mSamples.end(), block, block + count * sound.mChannels);
	}
	return sound;
}

std::int64_t FindLag(Sound const& inSound, Sound const& inReference, std::int64_t inMost)
{
	std::int64_t best = 0;
	double largest = -1.0;
	std::int64_t const length = std::min(inSound.GetFrames(), inReference.GetFrames()) - inMost;
	for (std::int64_t lag = -inMost; lag <= inMost; ++lag)
	{
		double sum = 0.0;
		for (std::int64_t frame = inMost; frame < length; frame += 7)
		{
			sum += static_cast<double>(
					   inSound.mSamples[static_cast<std::size_t>((frame + lag) * inSound.mChannels)]) *
				   static_cast<double>(
					   inReference.mSamples[static_cast<std::size_t>(frame * inReference.mChannels)]);
		}
		if (sum > largest)
		{
			largest = sum;
			best = lag;
		}
	}
	return best;
}

} // namespace SonaroHost::Testing
