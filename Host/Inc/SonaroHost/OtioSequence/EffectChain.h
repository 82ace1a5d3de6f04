#pragma once

#include "SonaroHost/Effects/EffectSetup.h"

#include <filesystem>
#include <vector>

namespace SonaroHost::Otio
{

// The effects of a file such as ReadEffectFile reads, in their order; times in it count from the start of what runs
// through them. Throws a HostError of kind kInput that names the file and the place.
std::vector<Effects::EffectSetup> ReadEffectChain(std::filesystem::path const& inPath);

} // namespace SonaroHost::Otio
