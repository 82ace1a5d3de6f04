#pragma once

#include "SonaroHost/Files/Temporary.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

namespace SonaroHost
{

class FileMark;

// Throws a HostError when no file can have that path, since its folder does not exist, or a folder or something
// else that is no regular file has its name.
void CheckPlace(std::filesystem::path const& inPath);

// A file that appears under its name only when it is whole: it is written under a temporary name in
// the same folder and renamed by Commit. Without a Commit the destructor removes it, and what was there
// before stays.
//
// Temporary name  Of "mix.wav" it is ".mix.wav.sonaro-1a2b3c4d.tmp", with other digits each time. One that a process
//                 had to leave behind, since it was killed, is removed by the next OutputFile of the same path;
//                 one that is still being written stays.
// "-"             The standard output. It gets the whole by Commit, out of a file without a name in the folder for
//                 temporary ones (TMPDIR), and nothing before.
class OutputFile
{
public:
	// Follows links, also to where no file is yet. Throws a HostError when the file cannot be made there.
	explicit OutputFile(std::filesystem::path const& inPath);
	~OutputFile();
	OutputFile(OutputFile const&) = delete;
	OutputFile& operator=(OutputFile const&) = delete;

	std::filesystem::path const& GetPath() const { return mPath; }

	// Like the functions of <cstdio>. The first failure of any is kept for CheckWritten.
	std::int64_t Write(void const* inBytes, std::int64_t inCount);
	std::int64_t Read(void* outBytes, std::int64_t inCount);
	std::int64_t Seek(std::int64_t inOffset, int inOrigin);
	std::int64_t Tell();
	std::int64_t GetLength();

	// Throws a HostError with the system's reason when an operation has failed.
	void CheckWritten();

	// Completes the file under its temporary name; nothing more can be written. Throws a HostError.
	void Close();
	// Completes the file and gives it its name, in place of an older one. inReplaces: without it, an older one stays, also
	// one that was made in the meantime, and this fails. Throws a HostError.
	void Commit(bool inReplaces = true);

private:
	struct Closer
	{
		void operator()(std::FILE* inFile) const { std::fclose(inFile); }
	};

	// Returns its path.
	std::filesystem::path MakeTemporary();
	void CopyToStandardOutput();
	// Nobody else may have shortened it.
	void CheckLength();
	[[noreturn]] void ThrowFailure(int inError) const;
	void NoteFailure(bool inFailed);

	std::filesystem::path mPath;
	// The mark on the temporary file, until the file has its own name.
	std::unique_ptr<FileMark> mMark;
	// None for the standard output.
	std::optional<Temporary> mTemporary;
	std::unique_ptr<std::FILE, Closer> mFile;
	// How far it has been written, in bytes from its start.
	std::int64_t mWrittenEnd = 0;
	// The system's number of the first error.
	int mError = 0;
};

} // namespace SonaroHost
