#include "Fuzzing.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "SonaroHost/Media/MovieLibraries.h"

#include <algorithm>

using namespace SonaroFuzzing;

// Sound files and movies: the reader goes by what is in a file alone.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	SonaroHost::SilenceMovieLibraries();
	std::string const path = WriteInput("media", AsText(inData, inSize)).string();
	Try(
		[&path]
		{
			SonaroHost::AudioFileReader reader(path);
			SonaroHost::AudioFileInfo const& info = reader.GetInfo();
			Require(info.mFrames >= 0 && info.mSampleRate > 0 && info.GetNumChannels() > 0);
			// Nothing of it can be decoded.
			if (info.mFrames == 0)
			{
				return;
			}
			// Times that were changed may lie days apart.
			std::int64_t const last = std::min(info.mFrames - 1, std::int64_t{10} * info.mSampleRate);
			for (std::int64_t const frame : {std::int64_t{0}, last, last / 2})
			{
				reader.GetBlock(frame / reader.GetBlockFrames());
			}
		});
	return 0;
}
