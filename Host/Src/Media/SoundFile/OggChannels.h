#pragma once

#include <filesystem>
#include <vector>

namespace SonaroHost
{

// Where the channels of an Ogg file stand, in the order of WAV (left, right, centre, low frequency, rear, side): its
// codecs have fixed orders of their own, which libsndfile leaves as they are.
//
// inFormat  As libsndfile has it, SF_INFO::format.
// Returns nothing for other files, and where the channels have no places.
std::vector<unsigned> FindOggOrder(std::filesystem::path const& inPath, int inFormat, unsigned inChannels);

} // namespace SonaroHost
