#include "Sound.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

namespace SonaroHost::Testing
{

namespace
{

// A uniform number from -1 to 1, the same on every machine.
class Noise
{
public:
	explicit Noise(unsigned inSeed)
		: mGenerator(inSeed)
	{
	}

	double Next() { return static_cast<double>(mGenerator()) / 2147483647.5 - 1.0; }

private:
	std::mt19937 mGenerator;
};

double GetSample(int inChannel, double inSeconds, double inNoise)
{
	double const pitch = 110.0 * (inChannel + 1) + 20.0 * std::sin(3.0 * inSeconds);
	double const tone = std::sin(6.283185307 * pitch * inSeconds + inSeconds * inSeconds);
	double const beat = std::exp(-12.0 * std::fmod(inSeconds + 0.1 * inChannel, 0.37));
	double const swell = std::max(0.0, std::sin(8.0 * inSeconds + inChannel));
	return beat * (0.4 * inNoise + 0.2 * tone) + 0.25 * swell * tone + 0.0005 * inNoise;
}

} // namespace

Sound Sound::Cut(std::int64_t inFirst, std::int64_t inFrames) const
{
	auto const begin = mSamples.begin() + inFirst * mChannels;
	return {mChannels, mSampleRate, {begin, begin + inFrames * mChannels}};
}

Sound Sound::Reversed() const
{
	Sound reversed = *this;
	std::int64_t const frames = GetFrames();
	for (std::int64_t frame = 0; frame < frames; ++frame)
	{
		std::copy_n(mSamples.begin() + frame * mChannels, mChannels,
			reversed.mSamples.begin() + (frames - 1 - frame) * mChannels);
	}
	return reversed;
}

Sound Sound::Pick(std::vector<unsigned> const& inChannels) const
{
	Sound picked{static_cast<int>(inChannels.size()), mSampleRate, {}};
	for (std::int64_t frame = 0; frame < GetFrames(); ++frame)
	{
		for (unsigned const channel : inChannels)
		{
			picked.mSamples.push_back(mSamples[static_cast<std::size_t>(frame * mChannels + channel)]);
		}
	}
	return picked;
}

testing::AssertionResult SameBits(Sound const& inA, Sound const& inB)
{
	if (inA.mChannels != inB.mChannels || inA.mSampleRate != inB.mSampleRate ||
		inA.mSamples.size() != inB.mSamples.size())
	{
		return testing::AssertionFailure()
			   << inA.GetFrames() << " frames of " << inA.mChannels << " channels at " << inA.mSampleRate
			   << " Hz against " << inB.GetFrames() << " of " << inB.mChannels << " at " << inB.mSampleRate;
	}
	for (std::size_t i = 0; i < inA.mSamples.size(); ++i)
	{
		if (std::bit_cast<std::uint32_t>(inA.mSamples[i]) != std::bit_cast<std::uint32_t>(inB.mSamples[i]))
		{
			auto const channels = static_cast<std::size_t>(inA.mChannels);
			return testing::AssertionFailure() << "frame " << i / channels << ", channel " << i % channels
											   << ": " << inA.mSamples[i] << " against " << inB.mSamples[i];
		}
	}
	return testing::AssertionSuccess();
}

Sound MakeSound(int inChannels, int inSampleRate, std::int64_t inFrames)
{
	Noise noise(7);
	Sound sound{inChannels, inSampleRate, {}};
	sound.mSamples.reserve(static_cast<std::size_t>(inFrames * inChannels));
	for (std::int64_t frame = 0; frame < inFrames; ++frame)
	{
		double const seconds = static_cast<double>(frame) / inSampleRate;
		for (int channel = 0; channel < inChannels; ++channel)
		{
			sound.mSamples.push_back(static_cast<float>(GetSample(channel, seconds, noise.Next())));
		}
	}
	return sound;
}

} // namespace SonaroHost::Testing
