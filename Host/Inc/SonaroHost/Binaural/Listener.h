#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Binaural/Ears.h"
#include "SonaroHost/Binaural/HeadOrientation.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace SonaroHost
{

// Who listens with two ears.
struct Listener
{
	// Whose ears; null for the built-in ones.
	std::shared_ptr<Ears const> mEars;
	// Live in a playback; an export keeps to what it is when its graph is made. Null for a head that looks to the front.
	std::shared_ptr<HeadOrientation> mOrientation;
	// What the ears were read from, which no output may replace; empty for none.
	std::filesystem::path mFile = {};

	HeadAngles GetAngles() const { return mOrientation ? mOrientation->Get() : HeadAngles(); }
};

// Around the listener, by the components of a sound field: rows W, Y, Z and X with the gain of each channel of a layout.
using FieldMatrix = std::vector<std::vector<float>>;

// Where the channels of a layout stand around a listener: those with places as ChannelConversionMatrix has them, those
// of ambisonic1 as they are, and eight channels without places as 7.1 in the order of WAVE
// files. Empty for a layout whose channels stand nowhere.
FieldMatrix FindField(SN::AudioChannelLayout const& inLayout);

// Throws a HostError where sound of that layout and rate cannot be rendered for two ears.
void CheckCanListen(SN::AudioChannelLayout const& inLayout, int inSampleRate);

} // namespace SonaroHost
