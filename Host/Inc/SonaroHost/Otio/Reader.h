#pragma once

#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/Note.h"

#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

// Stacks and tracks within each other, the timeline's own stack among them.
inline constexpr std::size_t kMaxCompositionDepth = 256;
// Objects and arrays of JSON within each other.
inline constexpr std::size_t kMaxJsonDepth = 1000;
inline constexpr std::size_t kMaxFileBytes = std::size_t{1} << 30;
// Either side of 0, in seconds: three centuries.
inline constexpr double kMaxSeconds = 1.0e10;
inline constexpr double kMinRate = 1.0e-4;
inline constexpr double kMaxRate = 1.0e12;
inline constexpr double kMaxTimeScalar = 1000.0;

struct Document
{
	// One, except for collections. Never empty.
	std::vector<Timeline> mTimelines;
	// In the order of the file. A text that came up very often is listed for its first places and then
	// counted.
	std::vector<Note> mNotes;
};

// Reads the bytes of an .otio file. Throws a HostError of kind eInput for anything that is no sound file of
// the format; its message names inPath, which serves for nothing else, the place and what to do.
// Threads: any.
Document ReadDocument(std::string_view inBytes, std::filesystem::path const& inPath);

Document ReadDocumentFile(std::filesystem::path const& inPath);

} // namespace SonaroHost::Otio
