#pragma once

#include "SonaroHost/Otio/Limits.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/Note.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

// What a file says.
struct Document
{
	// One, except for collections. Never empty.
	std::vector<Timeline> mTimelines;
	// The notes in the order of the file. A text that came up very often is listed for its first places and then
	// counted.
	std::vector<Note> mNotes;
};

// Reads the bytes of an .otio file. Throws a HostError of kind kInput for anything that is no valid file of
// the format; its message names inPath, which serves for nothing else, the place and what to do.
// Threads: any.
Document ReadDocument(std::string_view inBytes, std::filesystem::path const& inPath);

Document ReadDocumentFile(std::filesystem::path const& inPath);

} // namespace SonaroHost::Otio
