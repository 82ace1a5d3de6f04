#include "SonaroHost/Files/OutputFile.h"

#include "FilePlace.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SystemFiles.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

namespace SonaroHost
{

namespace
{

constexpr std::string_view kEnding = ".tmp";
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kNumDigits = 8;

[[noreturn]] void RefuseWriting(std::filesystem::path const& inPath, std::string const& inWhy)
{
	RefuseOutput("cannot write " + QuoteOutput(inPath) + ": " + inWhy);
}

std::filesystem::path GetFolder(std::filesystem::path const& inPath)
{
	return inPath.has_parent_path() ? inPath.parent_path() : ".";
}

// What all temporary names of an output begin with. Names are at most 255 bytes long, nearly everywhere.
std::string MakeTemporaryStart(std::filesystem::path const& inPath)
{
	constexpr std::size_t kMostBytes = 200;
	return std::string(".").append(CutText(inPath.filename().string(), kMostBytes)).append(".sonaro-");
}

std::string MakeTemporaryName(std::filesystem::path const& inPath)
{
	std::random_device random;
	std::string name = MakeTemporaryStart(inPath);
	for (std::size_t i = 0; i < kNumDigits; ++i)
	{
		name += kDigits[random() % kDigits.size()];
	}
	return name.append(kEnding);
}

bool IsTemporaryName(std::string_view inName, std::string_view inStart)
{
	return inName.size() == inStart.size() + kNumDigits + kEnding.size() && inName.starts_with(inStart) &&
		   inName.ends_with(kEnding) &&
		   inName.substr(inStart.size(), kNumDigits).find_first_not_of(kDigits) == std::string_view::npos;
}

// What processes that were killed left of an output.
void RemoveLeftovers(std::filesystem::path const& inPath)
{
	std::string const start = MakeTemporaryStart(inPath);
	std::filesystem::path const folder = GetFolder(inPath);
	for (std::string const& name : ListNames(folder))
	{
		if (IsTemporaryName(name, start))
		{
			RemoveUnmarked(folder / name);
		}
	}
}

} // namespace

void CheckPlace(std::filesystem::path const& inPath)
{
	std::error_code error;
	std::filesystem::file_status const status = std::filesystem::status(inPath, error);
	if (std::filesystem::is_directory(status))
	{
		RefuseWriting(inPath, "it is a folder; give the name of a file");
	}
	if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
	{
		RefuseWriting(inPath, "it is not a regular file");
	}
	// A folder that is closed, or links that lead in a circle.
	if (!std::filesystem::status_known(status))
	{
		RefuseWriting(inPath, error.message());
	}
	std::filesystem::path const folder = GetFolder(FollowLinks(inPath));
	if (!std::filesystem::is_directory(folder, error))
	{
		RefuseWriting(inPath, "the folder " + QuotePath(folder) + " does not exist; create it first");
	}
}

OutputFile::OutputFile(std::filesystem::path const& inPath)
	: mPath(FollowLinks(inPath))
{
	if (IsStandardStream(inPath))
	{
		mPath = inPath;
		mFile.reset(MakeUnnamedFile().release());
		if (!mFile)
		{
			ThrowFailure(errno);
		}
	}
	else
	{
		CheckPlace(mPath);
		RemoveLeftovers(mPath);
		mTemporary.emplace([this] { return MakeTemporary(); });
	}
}

OutputFile::~OutputFile() = default;

std::filesystem::path OutputFile::MakeTemporary()
{
	constexpr int kMostTries = 16;
	mMark = std::make_unique<FileMark>();
	for (int tries = 1;; ++tries)
	{
		std::filesystem::path path = mPath.parent_path() / MakeTemporaryName(mPath);
		mFile.reset(mMark->Make(path).release());
		if (mFile)
		{
			return path;
		}
		if (errno != EEXIST || tries == kMostTries)
		{
			ThrowFailure(errno);
		}
	}
}

std::int64_t OutputFile::Write(void const* inBytes, std::int64_t inCount)
{
	errno = 0;
	std::size_t const count = std::fwrite(inBytes, 1, static_cast<std::size_t>(inCount), mFile.get());
	NoteFailure(static_cast<std::int64_t>(count) != inCount);
	mWrittenEnd = std::max(mWrittenEnd, Tell());
	return static_cast<std::int64_t>(count);
}

std::int64_t OutputFile::Read(void* outBytes, std::int64_t inCount)
{
	return static_cast<std::int64_t>(std::fread(outBytes, 1, static_cast<std::size_t>(inCount), mFile.get()));
}

std::int64_t OutputFile::Seek(std::int64_t inOffset, int inOrigin)
{
	static_assert(sizeof(long) == sizeof(std::int64_t), "positions in a file need 64 bits");
	errno = 0;
	NoteFailure(std::fseek(mFile.get(), inOffset, inOrigin) != 0);
	return Tell();
}

std::int64_t OutputFile::Tell()
{
	return std::ftell(mFile.get());
}

std::int64_t OutputFile::GetLength()
{
	std::int64_t const position = Tell();
	std::int64_t const length = Seek(0, SEEK_END);
	Seek(position, SEEK_SET);
	return length;
}

void OutputFile::CheckWritten()
{
	if (mError != 0)
	{
		ThrowFailure(mError);
	}
}

void OutputFile::Close()
{
	if (!mFile)
	{
		return;
	}
	errno = 0;
	NoteFailure(std::fflush(mFile.get()) != 0);
	CheckWritten();
	CheckLength();
	if (IsStandardStream(mPath))
	{
		return;
	}
	errno = 0;
	NoteFailure(std::fclose(mFile.release()) != 0);
	CheckWritten();
}

void OutputFile::CheckLength()
{
	// Some file systems do not know the length of a file without a name.
	std::int64_t const length = GetFileLength(mFile.get());
	if (length >= 0 && length < mWrittenEnd)
	{
		RefuseWriting(
			mPath, "another program has shortened it while it was being written; run the command again");
	}
}

void OutputFile::Commit(bool inReplaces)
{
	Close();
	if (IsStandardStream(mPath))
	{
		CopyToStandardOutput();
		return;
	}
	if (std::error_code const error = mTemporary->Rename(mPath, inReplaces))
	{
		if (!inReplaces && error == std::errc::file_exists)
		{
			RefuseWriting(
				mPath, "another program has made a file of that name in the meantime, which is kept");
		}
		ThrowFailure(error.value());
	}
	mMark.reset();
}

void OutputFile::CopyToStandardOutput()
{
	std::rewind(mFile.get());
	errno = 0;
	NoteFailure(!CopyRest(mFile.get(), stdout));
	CheckWritten();
	NoteFailure(std::ferror(mFile.get()) != 0 || std::fflush(stdout) != 0);
	CheckWritten();
	mFile.reset();
}

void OutputFile::ThrowFailure(int inError) const
{
	RefuseWriting(mPath, std::generic_category().message(inError));
}

void OutputFile::NoteFailure(bool inFailed)
{
	if (inFailed && mError == 0)
	{
		mError = errno != 0 ? errno : EIO;
	}
}

} // namespace SonaroHost
