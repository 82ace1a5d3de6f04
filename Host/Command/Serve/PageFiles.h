#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace SonaroCommand::Serve
{

// A file of the page, which the build puts into the program.
struct PageFile
{
	std::string mName;
	std::string_view mBytes;
};

std::vector<PageFile> const& GetPageFiles();

} // namespace SonaroCommand::Serve
