#include "OutputFolder.h"

#include "SonaroHost/Base/HostError.h"

#include <string>
#include <system_error>

namespace SonaroHost
{

namespace
{

[[noreturn]] void RefuseFolder(std::filesystem::path const& inPath, std::string const& inWhy)
{
	RefuseOutput("cannot create the folder " + QuotePath(inPath) + ": " + inWhy);
}

} // namespace

OutputFolder::OutputFolder(std::filesystem::path const& inPath)
{
	std::error_code error;
	std::filesystem::path folder;
	for (std::filesystem::path const& name : inPath)
	{
		folder /= name;
		if (!name.empty() && !std::filesystem::exists(folder, error))
		{
			auto const make = [&]
			{
				std::filesystem::create_directory(folder, error);
				if (error)
				{
					RefuseFolder(inPath, error.message());
				}
				return folder;
			};
			mMade.emplace_front(make, Temporary::Removal::kWhileEmpty);
		}
	}
	if (!std::filesystem::is_directory(inPath))
	{
		RefuseFolder(inPath, "a file has that name; choose another name");
	}
}

} // namespace SonaroHost
