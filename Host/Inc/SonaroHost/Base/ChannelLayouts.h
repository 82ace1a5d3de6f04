#pragma once

#include "zorvmediatypes/AudioChannelDescription.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost
{

// The most channels that the engine's buffers carry.
inline constexpr unsigned kMaxChannels = 64;

// The layout of so many channels of which nothing more is known: mono, stereo, or channels without places.
zorvmediatypes::AudioChannelLayout MakeLayoutOfChannels(unsigned inChannels);

// "mono", "stereo", "5.1", "ambisonic1", or a count from 1 to 64 of channels without places.
std::optional<zorvmediatypes::AudioChannelLayout> ParseLayout(std::string_view inText);

// "mono", "stereo", "5.1", "ambisonic1" or "7 channels".
std::string GetLayoutName(zorvmediatypes::AudioChannelLayout const& inLayout);

// Whether each channel has a place, or is a component of a sound field.
bool HasPlaces(zorvmediatypes::AudioChannelLayout const& inLayout);

// The channels' places in their order, for people: "left", "right"; none where HasPlaces is false.
std::vector<std::string> GetPlaceNames(zorvmediatypes::AudioChannelLayout const& inLayout);

} // namespace SonaroHost
