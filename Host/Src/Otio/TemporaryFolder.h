#pragma once

#include "SonaroHost/Temporary.h"

#include <filesystem>
#include <optional>

namespace SonaroHost::Otio
{

// A new folder among the system's temporary ones, removed with all that is in it at the end.
class TemporaryFolder
{
public:
	// Throws a HostError when none can be made.
	TemporaryFolder();
	TemporaryFolder(TemporaryFolder const&) = delete;
	TemporaryFolder& operator=(TemporaryFolder const&) = delete;

	std::filesystem::path const& GetPath() const { return mFolder->GetPath(); }

private:
	std::optional<Temporary> mFolder;
};

} // namespace SonaroHost::Otio
