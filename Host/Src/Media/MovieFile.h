#pragma once

#include <filesystem>

namespace SonaroHost
{

// Whether a path ends as movies do: ".mov", ".MP4", ".mxf" ...
bool HasMovieEnding(std::filesystem::path const& inPath);

// Whether a file is a movie, by its ending or by how its content begins. Sound alone in a container of movies, as in
// ".m4a", is none.
bool IsMovieFile(std::filesystem::path const& inPath);

} // namespace SonaroHost
