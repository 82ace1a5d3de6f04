#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "SonaroHost/Media/MovieLibraries.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace
{

using namespace SonaroHost;

// The reader takes files.
std::string WriteFuzzedFile(std::uint8_t const* inData, std::size_t inSize)
{
	std::string const path =
		(std::filesystem::temp_directory_path() / ("sonaro-fuzz-" + std::to_string(getpid()))).string();
	std::FILE* const file = std::fopen(path.c_str(), "wb");
	if (!file || std::fwrite(inData, 1, inSize, file) != inSize || std::fclose(file) != 0)
	{
		std::abort();
	}
	return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	SilenceMovieLibraries();
	std::string const path = WriteFuzzedFile(inData, inSize);
	try
	{
		AudioFileReader reader(path);
		AudioFileInfo const& info = reader.GetInfo();
		if (info.mFrames <= 0 || info.mSampleRate <= 0 || info.GetNumChannels() == 0)
		{
			std::abort();
		}
		// Times that were changed may lie days apart.
		std::int64_t const last = std::min(info.mFrames - 1, std::int64_t{10} * info.mSampleRate);
		for (std::int64_t const frame : {std::int64_t{0}, last, last / 2})
		{
			reader.GetBlock(frame / reader.GetBlockFrames());
		}
	}
	catch (HostError const& error)
	{
		std::string const message = error.what();
		if (message.empty() || message.find('\n') != std::string::npos)
		{
			std::abort();
		}
	}
	return 0;
}
