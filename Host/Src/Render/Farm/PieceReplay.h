#pragma once

#include "Render/RangeRequest.h"
#include "SonaroHost/Engine/OfflineRender.h"

#include <optional>

namespace SonaroHost::Farm
{

// Gives sink and taps what RenderRange would give them, from the programme's pieces. inRange: all that these hold. Nothing
// when asked to stop. Throws a HostError.
std::optional<RangeReport> ReplayPieces(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange);

} // namespace SonaroHost::Farm
