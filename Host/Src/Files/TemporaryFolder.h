#pragma once

#include "SonaroHost/Files/Temporary.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace SonaroHost
{
class FileMark;
}

namespace SonaroHost
{

// A new folder among the system's temporary ones, removed with all that is in it at the end. Where a process was
// killed before that, the next one that makes such a folder there removes it.
class TemporaryFolder
{
public:
	// Throws a HostError when none can be made.
	TemporaryFolder();
	~TemporaryFolder();
	TemporaryFolder(TemporaryFolder const&) = delete;
	TemporaryFolder& operator=(TemporaryFolder const&) = delete;

	std::filesystem::path const& GetPath() const { return mFolder->GetPath(); }

private:
	// Outlives the folder.
	std::unique_ptr<FileMark> mMark;
	std::optional<Temporary> mFolder;
};

} // namespace SonaroHost
