#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct zip;

namespace SonaroHost
{

// A zip archive that is read. Every error is a HostError of kind kInput that names the archive and the entry.
class ZipArchive
{
public:
	struct Entry
	{
		std::uint64_t mIndex = 0;
		// The name as the archive has it; folders end in a slash.
		std::string mName;
		// Unpacked, as the archive claims.
		std::uint64_t mBytes = 0;
	};
	using Sink = std::function<void(char const* inBytes, std::size_t inCount)>;

	explicit ZipArchive(std::filesystem::path const& inPath);

	std::vector<Entry> const& GetEntries() const { return mEntries; }

	// Hands on the unpacked bytes piece by piece, never more than the entry claims.
	void Read(Entry const& inEntry, Sink const& inSink) const;

private:
	struct Closing
	{
		void operator()(zip* inArchive) const;
	};

	[[noreturn]] void Refuse(Entry const& inEntry, std::string const& inReason) const;

	std::filesystem::path mPath;
	std::unique_ptr<zip, Closing> mArchive;
	std::vector<Entry> mEntries;
};

} // namespace SonaroHost
