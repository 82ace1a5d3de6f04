#include "SonaroHost/Otio/TimelineFile.h"

#include "Files/TemporaryFolder.h"
#include "Files/ZipArchive.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <system_error>

namespace SonaroHost::Otio
{

namespace
{

constexpr char const* kContent = "content.otio";
constexpr char const* kMedia = "media";
// A size beyond this is taken for nonsense, whatever the room.
constexpr std::uint64_t kMaxUnpackedBytes = std::uint64_t{1} << 40;

// The entry's path below the folder that it is unpacked into.
std::filesystem::path GetSafePath(std::filesystem::path const& inArchive, std::string const& inName)
{
	std::filesystem::path const path(inName);
	bool const leaves = path.is_absolute() || inName.find('\\') != std::string::npos ||
						std::ranges::find(path, "..") != path.end();
	if (leaves)
	{
		RefuseFile(inArchive, "the entry " + QuotePath(inName) +
								  " points outside the bundle; the bundle is unsafe and is not opened");
	}
	return path.lexically_normal();
}

class Unpacking
{
public:
	Unpacking(std::filesystem::path const& inArchive, std::filesystem::path inFolder)
		: mPath(inArchive),
		  mArchive(inArchive),
		  mFolder(std::move(inFolder))
	{
	}

	// Gives the content, and unpacks the media.
	std::string Run()
	{
		std::string content;
		bool hasContent = false;
		CheckRoom();
		for (ZipArchive::Entry const& entry : mArchive.GetEntries())
		{
			std::filesystem::path const path = GetSafePath(mPath, entry.mName);
			if (path == kContent)
			{
				content = ReadContent(entry);
				hasContent = true;
			}
			else if (IsMedia(entry))
			{
				Unpack(entry, mFolder / path);
			}
		}
		if (!hasContent)
		{
			RefuseFile(mPath, std::string("is not a timeline bundle: it has no \"") + kContent + "\"");
		}
		return content;
	}

private:
	static bool IsMedia(ZipArchive::Entry const& inEntry)
	{
		std::filesystem::path const path = std::filesystem::path(inEntry.mName).lexically_normal();
		return !inEntry.mName.empty() && inEntry.mName.back() != '/' && *path.begin() == kMedia;
	}

	void CheckRoom() const
	{
		std::uint64_t total = 0;
		for (ZipArchive::Entry const& entry : mArchive.GetEntries())
		{
			total += IsMedia(entry) ? std::min(entry.mBytes, kMaxUnpackedBytes) : 0;
			if (total >= kMaxUnpackedBytes)
			{
				RefuseFile(mPath,
					"declares 1 TiB of media or more, so it is probably damaged; create the bundle again");
			}
		}
		std::error_code error;
		std::filesystem::space_info const space = std::filesystem::space(mFolder, error);
		if (!error && total > space.available)
		{
			constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;
			throw HostError(HostError::Kind::kOutput,
				{mPath, {},
					"its media need " + std::to_string(total / kMebibyte) + " MiB when unpacked, but only " +
						std::to_string(space.available / kMebibyte) + " MiB are free in " +
						QuotePath(mFolder.parent_path()),
					"free some space there, or set TMPDIR to another folder"});
		}
	}

	std::string ReadContent(ZipArchive::Entry const& inEntry) const
	{
		if (inEntry.mBytes > kMaxFileBytes)
		{
			RefuseFile(
				mPath, std::string("its \"") + kContent + "\" is larger than 1 GiB; split the timeline");
		}
		std::string content;
		mArchive.Read(inEntry,
			[&content](char const* inBytes, std::size_t inCount) { content.append(inBytes, inCount); });
		return content;
	}

	void Unpack(ZipArchive::Entry const& inEntry, std::filesystem::path const& inTarget) const
	{
		std::error_code error;
		std::filesystem::create_directories(inTarget.parent_path(), error);
		bool const isTaken = error == std::errc::not_a_directory || error == std::errc::file_exists;
		if (error && !isTaken)
		{
			RefuseRoom(inEntry, ": " + error.message());
		}
		if (isTaken || std::filesystem::exists(inTarget, error))
		{
			RefuseFile(mPath, "the entry " + QuotePath(inEntry.mName) +
								  " conflicts with another entry of the bundle; create the bundle again");
		}
		std::ofstream file(inTarget, std::ios::binary);
		mArchive.Read(inEntry, [&file](char const* inBytes, std::size_t inCount)
			{ file.write(inBytes, static_cast<std::streamsize>(inCount)); });
		// Some file systems say no earlier that they are full.
		file.close();
		if (!file)
		{
			RefuseRoom(inEntry, {});
		}
	}

	[[noreturn]] void RefuseRoom(ZipArchive::Entry const& inEntry, std::string const& inWhy) const
	{
		throw HostError(HostError::Kind::kOutput,
			{mPath, {},
				"the entry " + QuotePath(inEntry.mName) + " cannot be unpacked into " +
					QuotePath(mFolder.parent_path()) + inWhy,
				"free some space there, or set TMPDIR to another folder"});
	}

	std::filesystem::path const& mPath;
	ZipArchive mArchive;
	std::filesystem::path mFolder;
};

// Messages would otherwise name files of the working folder without a place.
std::filesystem::path FindFolder(std::filesystem::path const& inPath)
{
	return inPath.has_parent_path() ? inPath.parent_path() : ".";
}

} // namespace

TimelineFile::TimelineFile(std::filesystem::path const& inPath, std::string const& inText)
	: mFolder(FindFolder(inPath)),
	  mShownFolder(mFolder),
	  mDocument(ReadDocument(inText, inPath))
{
}

TimelineFile::TimelineFile(std::filesystem::path const& inPath)
	: mFolder(FindFolder(inPath))
{
	std::error_code error;
	if (GetLowerEnding(inPath) == ".otioz")
	{
		mUnpacked = std::make_unique<TemporaryFolder>();
		mFolder = mUnpacked->GetPath();
		mDocument = ReadDocument(Unpacking(inPath, mFolder).Run(), inPath);
	}
	else if (std::filesystem::is_directory(inPath, error))
	{
		mFolder = inPath;
		if (!std::filesystem::exists(inPath / kContent, error) && !error)
		{
			RefuseFile(
				inPath, std::string("is not a timeline bundle: the folder has no \"") + kContent + "\"");
		}
		mDocument = ReadDocumentFile(inPath / kContent);
	}
	else
	{
		mDocument = ReadDocumentFile(inPath);
	}
	mShownFolder = mUnpacked ? inPath : mFolder;
}

TimelineFile::~TimelineFile() = default;
TimelineFile::TimelineFile(TimelineFile&&) noexcept = default;
TimelineFile& TimelineFile::operator=(TimelineFile&&) noexcept = default;

} // namespace SonaroHost::Otio
