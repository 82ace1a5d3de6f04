#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

#include <cstddef>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

inline constexpr std::size_t kMaxSubmixes = 1000;

// The name of a submix: not empty.
std::string ReadName(Cursor const& inValue);
// A list of submixes, which have names of their own and do not feed each other in a loop.
std::vector<Submix> ReadSubmixes(Cursor const& inList);
std::vector<Send> ReadSends(Cursor const& inList);

} // namespace SonaroHost::Otio
