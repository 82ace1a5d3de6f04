#include "ZipArchive.h"

#include "SonaroHost/Base/HostError.h"

#include <zip.h>

#include <system_error>

namespace SonaroHost
{

namespace
{

struct FileClosing
{
	void operator()(zip_file_t* inFile) const { zip_fclose(inFile); }
};

} // namespace

void ZipArchive::Closing::operator()(zip* inArchive) const
{
	zip_discard(inArchive);
}

ZipArchive::ZipArchive(std::filesystem::path const& inPath)
	: mPath(inPath)
{
	std::error_code folderError;
	if (std::filesystem::is_directory(inPath, folderError))
	{
		RefuseFile(inPath, "is a folder, not a zip archive; a bundle that is a folder ends in .otiod");
	}
	int code = 0;
	mArchive.reset(zip_open(inPath.c_str(), ZIP_RDONLY, &code));
	if (!mArchive)
	{
		zip_error_t error;
		zip_error_init_with_code(&error, code);
		std::string const reason = zip_error_strerror(&error);
		zip_error_fini(&error);
		RefuseFile(inPath, "is not a readable zip archive: " + reason);
	}
	zip_int64_t const count = zip_get_num_entries(mArchive.get(), 0);
	for (zip_int64_t index = 0; index < count; ++index)
	{
		zip_stat_t stat;
		auto const place = static_cast<zip_uint64_t>(index);
		constexpr zip_uint64_t kWanted = ZIP_STAT_NAME | ZIP_STAT_SIZE;
		if (zip_stat_index(mArchive.get(), place, 0, &stat) != 0 || (stat.valid & kWanted) != kWanted)
		{
			RefuseFile(inPath, "entry " + std::to_string(index) + " of the archive is damaged");
		}
		mEntries.push_back({place, stat.name, stat.size});
	}
}

void ZipArchive::Read(Entry const& inEntry, Sink const& inSink) const
{
	std::unique_ptr<zip_file_t, FileClosing> const file(zip_fopen_index(mArchive.get(), inEntry.mIndex, 0));
	if (!file)
	{
		Refuse(inEntry, zip_strerror(mArchive.get()));
	}
	constexpr std::size_t kPiece = std::size_t{1} << 16;
	std::vector<char> piece(kPiece);
	for (std::uint64_t done = 0;;)
	{
		zip_int64_t const count = zip_fread(file.get(), piece.data(), piece.size());
		if (count < 0)
		{
			Refuse(inEntry, zip_file_strerror(file.get()));
		}
		if (count == 0 && done == inEntry.mBytes)
		{
			return;
		}
		done += static_cast<std::uint64_t>(count);
		if (count == 0 || done > inEntry.mBytes)
		{
			Refuse(inEntry, "its size differs from the one that the archive states");
		}
		inSink(piece.data(), static_cast<std::size_t>(count));
	}
}

void ZipArchive::Refuse(Entry const& inEntry, std::string const& inReason) const
{
	RefuseFile(mPath, "the entry " + QuotePath(inEntry.mName) + " cannot be unpacked: " + inReason);
}

} // namespace SonaroHost
