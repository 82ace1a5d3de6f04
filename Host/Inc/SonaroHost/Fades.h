#pragma once

#include "SonaroHost/AutomationCurve.h"

#include <cstdint>
#include <memory>

namespace SonaroHost
{

// From silence at the start of a programme, and to silence at its end; in frames, 0 for none.
struct Fades
{
	std::int64_t mIn = 0;
	std::int64_t mOut = 0;

	bool IsNone() const { return mIn == 0 && mOut == 0; }
};

// The gain of a fader that fades a programme of inFrames frames, in straight lines of amplitude. The fader
// follows its parameter by inLagFrames; so the way out is that much early, and the last sample is silent.
std::shared_ptr<AutomationCurve const> MakeFadeCurve(
	Fades const& inFades, std::int64_t inFrames, std::int64_t inLagFrames, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost
