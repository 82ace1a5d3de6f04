#pragma once

#include "SonaroHost/Sequence/Description.h"

#include <functional>
#include <string>

namespace SonaroHost::Sequence::Testing
{

// Leaves away one thing after the other, tracks, submixes, items, fades, stages, in nested sequences too, as
// long as what remains still fails.
Description Shrink(Description inSequence, std::function<bool(Description const&)> const& inFails);

// In words, times in frames.
std::string Describe(Description const& inSequence, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost::Sequence::Testing
