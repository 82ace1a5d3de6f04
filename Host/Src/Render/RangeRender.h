#pragma once

#include "RangeRequest.h"

#include <optional>

namespace SonaroHost
{

// Renders the range with the samples that the whole programme has there. Nothing when asked to stop. Throws a
// HostError, also when one of the media cannot be decoded: the error that comes first in the programme.
std::optional<RangeReport> RenderRange(Programme const& inProgramme, RangeRender const& inRender);

} // namespace SonaroHost
