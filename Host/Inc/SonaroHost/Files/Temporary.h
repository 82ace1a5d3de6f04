#pragma once

#include <filesystem>
#include <functional>
#include <system_error>

namespace SonaroHost
{

// The folder for temporary files: that of the environment variable TMPDIR, or /tmp where it is unset or empty. It may
// not be there.
std::filesystem::path GetFolderOfTemporaries();

// A file or folder that is there only while it is worked on: removed with all that is in it at the end,
// unless it was given another name before.
//
// All of the process are kept in one list, for the case that the process has to end while some thread is
// in a library that cannot be stopped: RemoveAll then clears up in its place.
//
// Threads  Different ones at once, RemoveAll among them.
class Temporary
{
public:
	// How much of it goes.
	enum class Removal
	{
		kWithContents,
		// A folder only while nothing is in it that is to stay.
		kWhileEmpty,
	};

	// inMake makes it and returns its path, or throws. No clean-up comes between that and the entry in the
	// list.
	explicit Temporary(
		std::function<std::filesystem::path()> const& inMake, Removal inRemoval = Removal::kWithContents);
	~Temporary();
	Temporary(Temporary const&) = delete;
	Temporary& operator=(Temporary const&) = delete;

	std::filesystem::path const& GetPath() const { return mPath; }

	// Gives it its final name, in place of an older file; from then on it is no longer temporary. Without inReplaces, a
	// name that is taken is the error std::errc::file_exists. Returns the system's error, after which it still is
	// temporary. A clean-up comes before or after it, never in between.
	std::error_code Rename(std::filesystem::path const& inName, bool inReplaces = true);

	// Removes all of them at the end of the process. Afterwards whoever makes or renames one waits for
	// ever, so that nothing new appears.
	// Relative paths need the working folder that they were made in.
	static void RemoveAll();

private:
	std::filesystem::path mPath;
	Removal mRemoval;
	bool mIsRenamed = false;
};

} // namespace SonaroHost
