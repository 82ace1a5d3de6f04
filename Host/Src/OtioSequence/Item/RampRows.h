#pragma once

#include "RampStretch.h"

#include "SonaroHost/OtioSequence/TimelineReport.h"

#include <optional>

namespace SonaroHost::Otio
{

// Nothing for a clip without a ramp of its own.
std::optional<RampRow> MakeRampRow(
	Placement const& inPlacement, ItemTiming const& inTiming, Scope const& inScope, MediaTime const& inMedia);

} // namespace SonaroHost::Otio
