#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace SonaroHost
{

// A file that appears under its name only when it is whole: it is written under a temporary name in
// the same folder and renamed by Commit. Without a Commit the destructor removes it, and what was there
// before stays.
class OutputFile
{
public:
	// Follows a link to what it points at. Throws a HostError when the folder does not exist or cannot
	// be written, or when something other than a regular file has the name.
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

	// Closes the file, complete under its temporary name; nothing more can be written. Throws a HostError.
	void Close();
	// Closes the file and gives it its name, in place of an older one. Throws a HostError.
	void Commit();

private:
	struct Closer
	{
		void operator()(std::FILE* inFile) const { std::fclose(inFile); }
	};

	[[noreturn]] void ThrowFailure(int inError) const;
	void NoteFailure(bool inFailed);

	std::filesystem::path mPath;
	std::filesystem::path mTemporaryPath;
	std::unique_ptr<std::FILE, Closer> mFile;
	// The system's number of the first error.
	int mError = 0;
};

} // namespace SonaroHost
