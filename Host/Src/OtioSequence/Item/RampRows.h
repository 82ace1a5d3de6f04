#pragma once

#include "ItemTiming.h"

#include "SonaroHost/OtioSequence/TimelineReport.h"

#include <optional>

namespace SonaroHost::Otio
{

// Nothing for a clip without a ramp of its own. inMediaStart: when in the clip's own time its media begin.
std::optional<RampRow> MakeRampRow(Placement const& inPlacement, ItemTiming const& inTiming,
	Scope const& inScope, Ratio const& inMediaStart);

} // namespace SonaroHost::Otio
