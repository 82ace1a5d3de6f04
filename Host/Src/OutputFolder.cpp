#include "OutputFolder.h"

#include "SonaroHost/HostError.h"

#include <string>
#include <system_error>

namespace SonaroHost
{

namespace
{

void RemoveEmpty(std::vector<std::filesystem::path> const& inFolders)
{
	for (auto folder = inFolders.rbegin(); folder != inFolders.rend(); ++folder)
	{
		std::error_code error;
		// Not while something is in it.
		std::filesystem::remove(*folder, error);
	}
}

} // namespace

OutputFolder::OutputFolder(std::filesystem::path const& inPath)
{
	std::error_code error;
	std::filesystem::path folder;
	for (std::filesystem::path const& name : inPath)
	{
		folder /= name;
		if (!name.empty() && std::filesystem::create_directory(folder, error))
		{
			mMade.push_back(folder);
		}
	}
	if (!std::filesystem::is_directory(inPath))
	{
		RemoveEmpty(mMade);
		throw HostError(HostError::Kind::eOutput, "cannot make the folder " + QuotePath(inPath) + ": " +
													  (error ? error.message() : "a file has its name"));
	}
}

OutputFolder::~OutputFolder()
{
	RemoveEmpty(mMade);
}

} // namespace SonaroHost
