#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace SonaroHost
{

// Where a container's header says that its audio lies.
//
// libsndfile takes what there is of a file that was cut short and says nothing. A render must not: so
// the chunk headers of the containers that people use (WAV and its 64-bit forms, AIFF, AU) are read once
// more here.
struct DeclaredAudio
{
	// Where the audio starts, in bytes from the start of the file.
	std::int64_t mStart = 0;
	// Nothing when the header says "until the end", as writers do that cannot go back to it.
	std::optional<std::int64_t> mBytes;
	// The header says that there is no audio, yet bytes follow that are no chunk: the writer was stopped
	// before it had filled the header in.
	bool mIsUnfinished = false;
};

// Nothing for other containers and for files without a chunk of audio.
std::optional<DeclaredAudio> ReadDeclaredAudio(std::filesystem::path const& inPath);

} // namespace SonaroHost
