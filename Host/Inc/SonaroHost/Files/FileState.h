#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace SonaroHost
{

// What shows that a file was replaced or written to.
struct FileState
{
	std::uint64_t mDevice = 0;
	std::uint64_t mNumber = 0;
	std::int64_t mSize = 0;
	// Of the last modification, in nanoseconds.
	std::int64_t mTime = 0;

	bool operator==(FileState const&) const = default;
};

// Nothing when there is no such file.
// Threads: any.
std::optional<FileState> ReadFileState(std::filesystem::path const& inPath);

} // namespace SonaroHost
