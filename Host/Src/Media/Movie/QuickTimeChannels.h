#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace SonaroHost
{

// The channel layout tag of each sound track of a QuickTime or MP4 file, in the order of the file; 0 where it has none.
//
// libavformat takes the places of the channels from it, but not the order in which they stand.
std::vector<std::uint32_t> ReadQuickTimeChannels(std::filesystem::path const& inPath);

} // namespace SonaroHost
