#pragma once

#include "RangeRequest.h"

#include <cstdint>
#include <optional>

namespace SonaroHost
{

// Throws a HostError where a range of the programme ends before it, so that no tail could follow.
void CheckTail(Programme const& inProgramme, ProgrammeRange const& inRange);

// For how many frames effects are heard after the end of a range: until all channels stay below -90 dBFS for two seconds,
// at most 30 seconds. It renders the range and what follows. inRender: its sink and its taps are not asked. Nothing when
// asked to stop. Throws a HostError.
std::optional<std::int64_t> FindTail(Programme const& inProgramme, RangeRender const& inRender);

} // namespace SonaroHost
