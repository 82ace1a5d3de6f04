#include "SonaroHost/OutputFile.h"

#include "SonaroHost/HostError.h"

#include <array>
#include <cerrno>
#include <random>
#include <string>
#include <system_error>

namespace SonaroHost
{

namespace
{

[[noreturn]] void Refuse(std::string const& inMessage)
{
	throw HostError(HostError::Kind::eOutput, inMessage);
}

// The file behind a link, or the path itself.
std::filesystem::path FollowLink(std::filesystem::path const& inPath)
{
	std::error_code error;
	if (!std::filesystem::is_symlink(inPath, error))
	{
		return inPath;
	}
	std::filesystem::path const target = std::filesystem::weakly_canonical(inPath, error);
	return error ? inPath : target;
}

std::filesystem::path MakeTemporaryName()
{
	std::random_device random;
	std::array<char, 32> name{};
	std::snprintf(name.data(), name.size(), ".sonaro-%08x%08x.tmp", random(), random());
	return name.data();
}

void CheckPlace(std::filesystem::path const& inPath)
{
	std::error_code error;
	std::filesystem::file_status const status = std::filesystem::status(inPath, error);
	if (std::filesystem::is_directory(status))
	{
		Refuse("cannot write " + QuotePath(inPath) + ": it is a folder; give the name of a file");
	}
	if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
	{
		Refuse("cannot write " + QuotePath(inPath) + ": it is not a regular file");
	}
	std::filesystem::path const folder = inPath.has_parent_path() ? inPath.parent_path() : ".";
	if (!std::filesystem::is_directory(folder, error))
	{
		Refuse("cannot write " + QuotePath(inPath) + ": the folder " + QuotePath(folder) +
			   " does not exist; create it first");
	}
}

} // namespace

OutputFile::OutputFile(std::filesystem::path const& inPath)
	: mPath(FollowLink(inPath))
{
	CheckPlace(mPath);
	mTemporaryPath = mPath.parent_path() / MakeTemporaryName();
	errno = 0;
	// "x": never a file or a link that is there already.
	mFile.reset(std::fopen(mTemporaryPath.c_str(), "w+bx"));
	if (!mFile)
	{
		ThrowFailure(errno);
	}
}

OutputFile::~OutputFile()
{
	if (!mTemporaryPath.empty())
	{
		mFile.reset();
		std::error_code error;
		std::filesystem::remove(mTemporaryPath, error);
	}
}

std::int64_t OutputFile::Write(void const* inBytes, std::int64_t inCount)
{
	errno = 0;
	std::size_t const count = std::fwrite(inBytes, 1, static_cast<std::size_t>(inCount), mFile.get());
	NoteFailure(static_cast<std::int64_t>(count) != inCount);
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
	errno = 0;
	NoteFailure(std::fclose(mFile.release()) != 0);
	CheckWritten();
}

void OutputFile::Commit()
{
	Close();
	std::error_code error;
	std::filesystem::rename(mTemporaryPath, mPath, error);
	if (error)
	{
		ThrowFailure(error.value());
	}
	mTemporaryPath.clear();
}

void OutputFile::ThrowFailure(int inError) const
{
	Refuse("cannot write " + QuotePath(mPath) + ": " + std::generic_category().message(inError));
}

void OutputFile::NoteFailure(bool inFailed)
{
	if (inFailed && mError == 0)
	{
		mError = errno != 0 ? errno : EIO;
	}
}

} // namespace SonaroHost
