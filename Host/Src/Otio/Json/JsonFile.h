#pragma once

#include "Cursor.h"

#include "SonaroHost/Otio/Note.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

// Has a JSON document read from its root, and gives the notes that were taken. Throws a HostError of kind kInput for what
// is no JSON and for what is refused; its message names inPath, which serves for nothing else, the place and what to do.
// inKind: what it has to be, as "an OpenTimelineIO file".
std::vector<Note> ReadJson(std::string_view inBytes, std::filesystem::path const& inPath,
	std::string const& inKind, std::function<void(Cursor const& inRoot)> const& inRead);

// All of a file. Throws a HostError of kind kInput.
std::string ReadBytes(std::filesystem::path const& inPath);

} // namespace SonaroHost::Otio
