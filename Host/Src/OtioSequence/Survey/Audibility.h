#pragma once

#include "SonaroHost/Otio/Model.h"

#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// Why an item is not heard, by itself; empty when it is.
std::string FindSilence(Item const& inItem);

// The same for each child of a stack, among its siblings.
std::vector<std::string> FindSilences(Stack const& inStack);

} // namespace SonaroHost::Otio
