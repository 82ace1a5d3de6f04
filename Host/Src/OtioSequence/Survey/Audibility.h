#pragma once

#include "SonaroHost/Otio/Model.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// Why an item is not heard, by itself; empty when it is.
std::string FindSilence(Item const& inItem);

// The same for each child of a stack, among its siblings. With inOnlyChild, that one alone is heard, and solos
// do not count.
std::vector<std::string> FindSilences(Stack const& inStack, std::optional<std::size_t> const& inOnlyChild);

} // namespace SonaroHost::Otio
