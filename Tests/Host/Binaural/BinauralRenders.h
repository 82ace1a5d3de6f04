#pragma once

#include "../ClipRenders.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace SonaroHost::Testing
{

inline constexpr int kEarRate = 48000;

inline Listener MakeListener(HeadAngles const& inAngles = {}, std::shared_ptr<Ears const> inEars = nullptr)
{
	return {std::move(inEars), std::make_shared<HeadOrientation>(inAngles)};
}

// A direction, in degrees to the left and upwards.
struct Direction
{
	double mAzimuth = 0.0;
	double mElevation = 0.0;
};

// What W, Y, Z and X have of a plane wave.
inline std::array<double, 4> GetComponents(Direction const& inDirection)
{
	double const degree = std::numbers::pi / 180.0;
	double const level = std::cos(inDirection.mElevation * degree);
	return {1.0, std::sin(inDirection.mAzimuth * degree) * level, std::sin(inDirection.mElevation * degree),
		std::cos(inDirection.mAzimuth * degree) * level};
}

// White noise, below full scale by 20 dB.
inline Sound MakeNoise(int inChannels, std::int64_t inFrames, unsigned inSeed = 1)
{
	constexpr float kLevel = 0.1f;
	std::mt19937 random(inSeed);
	std::uniform_real_distribution<float> samples(-kLevel, kLevel);
	Sound noise{inChannels, kEarRate, {}};
	noise.mSamples.resize(static_cast<std::size_t>(inChannels * inFrames));
	std::ranges::generate(noise.mSamples, [&] { return samples(random); });
	return noise;
}

// Mono sound that comes from a direction, as a sound field.
inline Sound MakeWave(Sound const& inMono, Direction const& inDirection)
{
	Sound field{4, inMono.mSampleRate, {}};
	for (float const sample : inMono.mSamples)
	{
		for (double const gain : GetComponents(inDirection))
		{
			field.mSamples.push_back(static_cast<float>(gain * static_cast<double>(sample)));
		}
	}
	return field;
}

inline double FindLargestDifference(Sound const& inA, Sound const& inB)
{
	EXPECT_EQ(inA.mSamples.size(), inB.mSamples.size());
	double largest = 0.0;
	for (std::size_t i = 0; i < std::min(inA.mSamples.size(), inB.mSamples.size()); ++i)
	{
		largest = std::max(largest, static_cast<double>(std::fabs(inA.mSamples[i] - inB.mSamples[i])));
	}
	return largest;
}

class BinauralRenders : public ClipRenders
{
protected:
	ClipRenderRequest MakeBinauralRequest(char const* inLayout, HeadAngles const& inAngles = {}) const
	{
		ClipRenderRequest request = MakeRequest();
		request.mLayout.mLayout = ParseLayout(inLayout);
		request.mListener = MakeListener(inAngles);
		return request;
	}

	// What the ears hear of the input.
	Sound Hear(Sound const& inInput, char const* inLayout, HeadAngles const& inAngles = {}) const
	{
		WriteInput(inInput);
		return Render(MakeBinauralRequest(inLayout, inAngles));
	}
};

} // namespace SonaroHost::Testing
