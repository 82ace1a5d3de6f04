#pragma once

#include "SonaroHost/Sequence/Description.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <functional>
#include <string>

namespace SonaroHost::Sequence::Testing
{

// Leaves away one thing after the other, tracks, submixes, items, fades, stages, in nested sequences too, as
// long as what remains still fails.
Description Shrink(Description inSequence, std::function<bool(Description const&)> const& inFails);

// Where everything stands, line by line: tracks, then items by the numbers of their tracks.
std::string Describe(GraphReport const& inReport);

} // namespace SonaroHost::Sequence::Testing
