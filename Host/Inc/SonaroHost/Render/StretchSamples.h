#pragma once

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Media/RateQuality.h"
#include "SonaroHost/Media/Stretch.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace SonaroHost
{

// How samples in memory are heard at another speed and pitch, as a render of a sound file has it.
struct StretchWish
{
	// 0.01 to 100; 2 is half as long.
	double mSpeed = 1.0;
	// Whether the pitch stays instead of following the speed, which then has the limits of Stretch.
	bool mKeepsPitch = false;
	// -24 to 24, besides.
	double mSemitones = 0.0;
	StretchEngine mEngine = kDefaultStretchEngine;
};

// The samples of all channels, of which each has so many frames. inAfterBlock: called now and then; what it throws ends the
// work. Throws a HostError for what is out of range or not built in.
// Threads: any.
std::vector<std::vector<float>> StretchSamples(std::span<float const* const> inChannels,
	std::int64_t inFrames, int inSampleRate, StretchWish const& inWish,
	std::function<void()> const& inAfterBlock = {});

// The samples at another rate: output n stands at n * inStep frames of the input, as far as that goes, rounded to the
// nearest number of frames. inStep: above 0, to RateConverter::kLargestStep. Throws a HostError.
std::vector<std::vector<float>> ResampleSamples(std::span<float const* const> inChannels,
	std::int64_t inFrames, Ratio const& inStep, RateQuality inQuality,
	std::function<void()> const& inAfterBlock = {});

} // namespace SonaroHost
