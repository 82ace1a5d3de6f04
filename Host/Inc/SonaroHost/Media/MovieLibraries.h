#pragma once

#include <string>

namespace SonaroHost
{

// The libraries that read movies, with their versions: "libavformat 59.27.100, ..."; empty in a build without them and
// where they are not installed. Loads them, which otherwise happens at the first movie.
std::string DescribeMovieLibraries();

// Has them print nothing on the standard error output. For the whole process, also for others who use them.
void SilenceMovieLibraries();

} // namespace SonaroHost
