#pragma once

#include "PieceFacts.h"

#include <filesystem>
#include <string>

namespace SonaroHost::Farm
{

// The content of a chunk of facts, an even number of bytes.
std::string ToText(PieceFacts const& inFacts);
// Throws a HostError that names the file for a text that is damaged.
PieceFacts ReadFacts(std::filesystem::path const& inPath, std::string const& inText);

} // namespace SonaroHost::Farm
