#pragma once

#include "MovieIndex.h"
#include "SonaroHost/Media/MediaDamage.h"

#include <filesystem>
#include <vector>

namespace SonaroHost
{

class MovieInput;

// Reads all packets of a movie once and finds where the samples of these audio streams, which have one rate, lie. Packets
// that do not say their length are decoded for it. What is known to be damaged or missing then is added.
//
// inInput stands at its start. Throws a std::runtime_error where a stream has no decoder.
MovieIndex ScanMovie(std::filesystem::path const& inPath, MovieInput& ioInput,
	std::vector<unsigned> const& inStreams, MediaDamage& ioDamage);

} // namespace SonaroHost
