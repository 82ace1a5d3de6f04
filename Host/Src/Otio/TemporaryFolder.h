#pragma once

#include <filesystem>

namespace SonaroHost::Otio
{

// A new folder among the system's temporary ones, removed with all that is in it at the end.
class TemporaryFolder
{
public:
	// Throws a HostError when none can be made.
	TemporaryFolder();
	~TemporaryFolder();
	TemporaryFolder(TemporaryFolder const&) = delete;
	TemporaryFolder& operator=(TemporaryFolder const&) = delete;

	std::filesystem::path const& GetPath() const { return mPath; }

private:
	std::filesystem::path mPath;
};

} // namespace SonaroHost::Otio
