#pragma once

#include "Json.h"
#include "SonaroHost/Sequence/GraphReport.h"

namespace SonaroCommand
{

// The effects of a graph in the order in which they were made, with their settings and latencies.
Json ListEffects(SonaroHost::Sequence::GraphReport const& inReport);

} // namespace SonaroCommand
