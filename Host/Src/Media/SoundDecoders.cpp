#include "SoundDecoders.h"

#include "Denoise/DenoisedDecoder.h"
#include "Denoise/DenoisedInfo.h"
#include "Movie/Movies.h"
#include "SoundFile/AudioFileDecoder.h"
#include "Stretch/RampStretchDecoder.h"
#include "Stretch/StretchedDecoder.h"
#include "Stretch/StretchedInfo.h"

namespace SonaroHost
{

std::unique_ptr<SoundDecoder> OpenSoundDecoder(AudioFileInfo const& inInfo)
{
	if (inInfo.mStretch && inInfo.mStretch->mRamp)
	{
		return std::make_unique<RampStretchDecoder>(inInfo, OpenSoundDecoder(GetFileOf(inInfo)));
	}
	if (inInfo.mStretch)
	{
		return std::make_unique<StretchedDecoder>(inInfo, OpenSoundDecoder(GetFileOf(inInfo)));
	}
	if (inInfo.mDenoise)
	{
		return std::make_unique<DenoisedDecoder>(
			inInfo, [file = GetNoisyFileOf(inInfo)] { return OpenSoundDecoder(file); });
	}
	if (inInfo.mMovie)
	{
		return OpenMovieDecoder(inInfo);
	}
	return std::make_unique<AudioFileDecoder>(inInfo.mPath);
}

} // namespace SonaroHost
