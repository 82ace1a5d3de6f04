#include "NameForms.h"

#include "SystemFiles.h"

#include <utf8proc.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace SonaroHost
{

namespace
{

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

} // namespace

std::string ComposeName(std::string_view inName)
{
	return Normalize(inName, 0);
}

std::string FoldName(std::string_view inName)
{
	return Normalize(inName, UTF8PROC_CASEFOLD);
}

std::string DescribeMissing(std::filesystem::path const& inPath)
{
	std::string const name = inPath.filename().native();
	std::string const composed = ComposeName(name);
	std::filesystem::path const folder = inPath.has_parent_path() ? inPath.parent_path() : ".";
	for (std::string const& other : ListNames(folder))
	{
		if (other != name && ComposeName(other) == composed)
		{
			return "does not exist, but a file does whose name is the same in another form of Unicode "
				   "(letters with accents composed or not)";
		}
	}
	return "does not exist";
}

} // namespace SonaroHost
