#pragma once

#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Base/ProgrammeRange.h"

#include <cstdint>
#include <memory>

namespace SonaroHost
{

// Fades from silence at the start of a programme and to silence at its end, in frames; 0 for none.
struct Fades
{
	std::int64_t mIn = 0;
	std::int64_t mOut = 0;

	bool IsNone() const { return mIn == 0 && mOut == 0; }
};

// The gain that fades a range of a programme, in straight lines of amplitude, its first and last sample being silent
// where it fades there.
std::shared_ptr<AutomationCurve const> MakeFadeCurve(
	Fades const& inFades, ProgrammeRange const& inRange, SN::FrameRate const& inFrameRate);

// That as a parameter, at 1 without fades.
SN::InterfaceRef<AutomationParameter<float>> MakeFadeGain(
	Fades const& inFades, ProgrammeRange const& inRange, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost
