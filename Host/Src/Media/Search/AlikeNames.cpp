#include "AlikeNames.h"

#include "Files/NameForms.h"
#include "Files/SystemFiles.h"

#include <algorithm>
#include <system_error>

namespace SonaroHost
{

namespace
{

std::string const& Choose(std::vector<std::string> const& inNames, std::string const& inWanted)
{
	std::string const composed = ComposeName(inWanted);
	auto const found = std::ranges::find_if(
		inNames, [&composed](std::string const& inName) { return ComposeName(inName) == composed; });
	return found != inNames.end() ? *found : inNames.front();
}

} // namespace

std::optional<std::filesystem::path> AlikeNames::Find(
	std::filesystem::path const& inFolder, std::filesystem::path const& inTail)
{
	std::filesystem::path path = inFolder;
	for (std::filesystem::path const& part : inTail)
	{
		if (!IsThere(path / part))
		{
			Names const& names = List(path);
			auto const found = names.find(FoldName(part.native()));
			if (found == names.end())
			{
				return std::nullopt;
			}
			path /= Choose(found->second, part.native());
			continue;
		}
		path /= part;
	}
	std::error_code error;
	return std::filesystem::is_regular_file(path, error) ? std::optional(path) : std::nullopt;
}

AlikeNames::Names const& AlikeNames::List(std::filesystem::path const& inFolder)
{
	auto const [place, isNew] = mFolders.try_emplace(inFolder.native());
	Names& names = place->second;
	if (isNew)
	{
		for (std::string const& name : ListNames(inFolder))
		{
			names[FoldName(name)].push_back(name);
		}
		for (auto& [key, alike] : names)
		{
			std::ranges::sort(alike);
		}
	}
	return names;
}

} // namespace SonaroHost
