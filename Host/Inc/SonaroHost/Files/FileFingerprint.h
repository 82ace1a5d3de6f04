#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace SonaroHost
{

// What shows, on any machine and after any copying that keeps times, whether a file is the one that it was.
struct FileFingerprint
{
	bool IsThere() const { return mBytes >= 0; }
	// Whether they are those of the same file, wherever it lies.
	bool IsSame(FileFingerprint const& inOther) const
	{
		return mBytes == inOther.mBytes && mTime == inOther.mTime && mDigest == inOther.mDigest;
	}

	std::filesystem::path mPath;
	// Below 0 for a file that is not there or cannot be read.
	std::int64_t mBytes = -1;
	// Of the last modification, in nanoseconds.
	std::int64_t mTime = 0;
	std::string mDigest;
};

// Reads the ends of a file, 64 KiB each. Throws a HostError where a read fails.
// Threads: any.
FileFingerprint TakeFingerprint(std::filesystem::path const& inPath);
// Reads all of it; the time is 0, and does not count.
FileFingerprint TakeWholeFingerprint(std::filesystem::path const& inPath);

} // namespace SonaroHost
