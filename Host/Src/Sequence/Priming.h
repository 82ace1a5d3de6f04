#pragma once

#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/Types.h"

namespace SonaroHost::Sequence
{

// Faders begin at full gain and panners in the middle, and move to their place from there when what they hear
// first is silence, or when a playback runs in reverse. A silence longer than their ramps has them arrive
// before anybody listens. Curves count from time 0 on.
void PrimeFader(SN::IAudioProcessor& ioFader, unsigned inChannels, SN::FrameRate const& inFrameRate);
void PrimePanner(SN::IAudioPanProcessor& ioPanner, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost::Sequence
