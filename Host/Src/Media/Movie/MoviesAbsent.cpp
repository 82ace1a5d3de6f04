#include "Media/MovieFile.h"
#include "Movies.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Media/NoSoundError.h"

namespace SonaroHost
{

std::optional<AudioFileInfo> InspectMovie(std::filesystem::path const& inPath, unsigned)
{
	if (IsMovieFile(inPath))
	{
		throw NoSoundError(
			{inPath, {}, "is a movie, and this program was built without libav, which reads movies",
				"export its audio as a sound file"});
	}
	return std::nullopt;
}

std::unique_ptr<SoundDecoder> OpenMovieDecoder(AudioFileInfo const& inInfo)
{
	throw NoSoundError({inInfo.mPath, {}, "is a movie, and this program was built without libav", {}});
}

std::string DescribeMovieLibraries()
{
	return {};
}

void SilenceMovieLibraries()
{
}

} // namespace SonaroHost
