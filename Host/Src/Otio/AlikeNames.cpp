#include "AlikeNames.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <system_error>

namespace SonaroHost::Otio
{

namespace
{

// A name in the composed form (NFC); with UTF8PROC_CASEFOLD also without case. Bytes that are no UTF-8 stay as they are.
std::string Normalize(std::string_view inName, int inOptions)
{
	utf8proc_uint8_t* mapped = nullptr;
	utf8proc_ssize_t const size = utf8proc_map(reinterpret_cast<utf8proc_uint8_t const*>(inName.data()),
		static_cast<utf8proc_ssize_t>(inName.size()), &mapped,
		static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | inOptions));
	std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> const owner(mapped, &std::free);
	return size < 0 ? std::string(inName)
					: std::string(reinterpret_cast<char const*>(mapped), static_cast<std::size_t>(size));
}

bool IsThere(std::filesystem::path const& inPath)
{
	std::error_code error;
	return std::filesystem::exists(inPath, error);
}

std::string const& Choose(std::vector<std::string> const& inNames, std::string const& inWanted)
{
	std::string const composed = Normalize(inWanted, 0);
	auto const found = std::find_if(inNames.begin(), inNames.end(),
		[&composed](std::string const& inName) { return Normalize(inName, 0) == composed; });
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
			auto const found = names.find(Normalize(part.native(), UTF8PROC_CASEFOLD));
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
		std::error_code error;
		std::filesystem::directory_iterator entry(inFolder, error);
		for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
		{
			std::string const name = entry->path().filename().native();
			names[Normalize(name, UTF8PROC_CASEFOLD)].push_back(name);
		}
		for (auto& [key, alike] : names)
		{
			std::sort(alike.begin(), alike.end());
		}
	}
	return names;
}

} // namespace SonaroHost::Otio
