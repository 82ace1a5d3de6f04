#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace SonaroHost
{

// What the host library asks of the operating system about files and limits, beyond the standard library.

// Whether there is anything of that name; links are followed. Not, when it cannot be found out.
bool IsThere(std::filesystem::path const& inPath);

// The number under which the system knows a file or folder, whatever paths lead to it.
struct FileNumber
{
	std::uint64_t mDevice = 0;
	std::uint64_t mNode = 0;

	bool operator==(FileNumber const&) const = default;
};

// Nothing when there is no file, or when it cannot be reached. Links are followed.
std::optional<FileNumber> FindFileNumber(std::filesystem::path const& inPath);

// The names in a folder, hidden ones too, as far as it can be read, in the order in which the system gives them. The
// iterator of the C++ library ends the process where there is no memory for it.
std::vector<std::string> ListNames(std::filesystem::path const& inFolder);
// The same; outError: what kept the folder from being read to its end, nothing where it was.
std::vector<std::string> ListNames(std::filesystem::path const& inFolder, std::error_code& outError);

struct FileCloser
{
	void operator()(std::FILE* inFile) const { std::fclose(inFile); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// Marks a file as in use by this process. The system takes the mark away when the process ends, however it ends.
class FileMark
{
public:
	FileMark() = default;
	~FileMark();
	FileMark(FileMark const&) = delete;
	FileMark& operator=(FileMark const&) = delete;

	// Makes a new file, to be read and written, and marks it until Release or the end of this. Null, with the
	// reason in errno, when that fails; EEXIST when the name is taken.
	FileHandle Make(std::filesystem::path const& inPath);
	void Release();

private:
	int mDescriptor = -1;
};

// Removes a regular file unless somebody has marked it. On file systems without such marks, it stays.
void RemoveUnmarked(std::filesystem::path const& inPath);

// A new file without a name, to be read and written, in the folder for temporary files (TMPDIR): nothing is left of it
// once it is closed. Null, with the reason in errno, when none can be made.
FileHandle MakeUnnamedFile();

// How many files the process may have open.
std::uint64_t GetOpenFileLimit();

// How many bytes of addresses a limit (ulimit -v) leaves the process; the largest number without a limit.
std::uint64_t GetAddressRoom();

// Copies what is left of a file to the end of another. False when writing failed, with the reason in errno; whether
// reading did, the file itself says.
bool CopyRest(std::FILE* ioFrom, std::FILE* outTo);

// In bytes, without what has not been flushed; -1 where it cannot be found out.
std::int64_t GetFileLength(std::FILE* inFile);

// The file by which it can be opened again, as often as needed, as long as it is open.
std::filesystem::path GetPathOfOpenFile(std::FILE* inFile);

} // namespace SonaroHost
