#pragma once

#include "SonaroHost/Media/Stretch.h"

#include <optional>

namespace SonaroHost
{

// How sound files are stretched at a speed, with the pitch kept or following it, and shifted besides by so many
// semitones; nothing for those that pitch follows in. Throws a HostError for what is out of range or not built in.
std::optional<Stretch> ChooseStretch(
	double inSpeed, bool inKeepsPitch, double inSemitones, StretchEngine inEngine);

} // namespace SonaroHost
