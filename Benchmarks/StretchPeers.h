#pragma once

#include <functional>
#include <string>
#include <vector>

namespace StretchPeers
{

constexpr double kSampleRate = 48000.0;

// By channel and sample.
using Sound = std::vector<std::vector<float>>;

// Something that changes the duration of a sound and keeps its pitch.
struct Stretcher
{
	std::string mName;
	// The sound made longer by the ratio; may come late by a few hundred milliseconds, and be cut short.
	std::function<Sound(Sound const& inSound, double inRatio)> mStretch;
	// The ratio that it reaches for the one that is asked for.
	std::function<double(double inRatio)> mGetRatio = [](double inRatio) { return inRatio; };
};

// The engine's own, and those of other libraries that are installed. A new one is another entry of the list.
std::vector<Stretcher> const& GetStretchers();

} // namespace StretchPeers
