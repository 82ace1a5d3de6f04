#include "Fuzzing.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace SonaroFuzzing
{

void Require(bool inHolds)
{
	if (!inHolds)
	{
		std::abort();
	}
}

void RequireReadable(SonaroHost::HostError const& inError)
{
	constexpr std::size_t kMostBytes = 2000;
	std::string_view const message = inError.what();
	Require(!message.empty() && message.size() < kMostBytes);
	Require(message.find('\n') == std::string_view::npos);
}

std::filesystem::path const& GetFolder()
{
	static std::filesystem::path const sFolder = []
	{
		std::filesystem::path folder =
			std::filesystem::temp_directory_path() / ("sonaro-fuzz-" + std::to_string(getpid()));
		std::filesystem::create_directories(folder);
		return folder;
	}();
	return sFolder;
}

std::filesystem::path WriteInput(std::string const& inName, std::string_view inBytes)
{
	std::filesystem::path path = GetFolder() / inName;
	std::FILE* const file = std::fopen(path.c_str(), "wb");
	Require(file && std::fwrite(inBytes.data(), 1, inBytes.size(), file) == inBytes.size());
	Require(std::fclose(file) == 0);
	return path;
}

} // namespace SonaroFuzzing
