#pragma once

#include "SonaroHost/AutomationParameter.h"
#include "SonaroHost/ProgrammeRange.h"

#include <cstdint>

namespace SonaroHost
{

// From silence at the start of a programme, and to silence at its end; in frames, 0 for none.
struct Fades
{
	std::int64_t mIn = 0;
	std::int64_t mOut = 0;

	bool IsNone() const { return mIn == 0 && mOut == 0; }
};

// The gain for an engine's fader that fades a range of what it hears, in straight lines of amplitude. The fader
// follows it late; so the way out is that much early, and the range's last sample is silent.
SN::InterfaceRef<AutomationParameter<float>> MakeFadeGain(
	Fades const& inFades, ProgrammeRange const& inRange, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost
