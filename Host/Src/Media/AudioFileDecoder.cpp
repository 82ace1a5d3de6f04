#include "AudioFileDecoder.h"

#include "MovieFile.h"
#include "MpegLengthTag.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Media/NoSoundError.h"
#include "StretchedFile.h"

#include <string>

namespace SonaroHost
{

namespace
{

// A count of frames above this is libsndfile's way to say that it knows none.
constexpr std::int64_t kLargestLength = std::int64_t{1} << 48;

// What libsndfile says of the last file, without the full stop that some of its sentences have.
std::string DescribeFailure()
{
	std::string text = sf_strerror(nullptr);
	text.erase(text.find_last_not_of(". ") + 1);
	return text;
}

} // namespace

AudioFileDecoder::AudioFileDecoder(std::filesystem::path const& inPath)
{
	std::filesystem::path const path = GetReadablePath(inPath);
	if (auto const tag = ReadMpegLengthTag(path); tag && !tag->mIsUsable)
	{
		mStatesLength = false;
		mStretchedFile = std::make_unique<StretchedFile>(path);
		SF_VIRTUAL_IO callbacks = StretchedFile::GetCallbacks();
		mFile.reset(sf_open_virtual(&callbacks, SFM_READ, &mFormat, mStretchedFile.get()));
	}
	else
	{
		mFile.reset(sf_open(path.c_str(), SFM_READ, &mFormat));
	}
	if (!mFile)
	{
		throw NoSoundError(IsMovieFile(inPath)
							   ? HostError::Parts{inPath, {}, "is a movie, and movie audio is not supported",
									 "export it as a sound file"}
							   : MakeInputParts(inPath, "cannot be read as sound: " + DescribeFailure()));
	}
	mStatesLength = mStatesLength && mFormat.frames < kLargestLength;
}

AudioFileDecoder::~AudioFileDecoder() = default;

std::int64_t AudioFileDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	std::int64_t done = 0;
	while (done < inFrames)
	{
		sf_count_t const count =
			sf_readf_float(mFile.get(), outSamples + done * mFormat.channels, inFrames - done);
		if (count <= 0)
		{
			break;
		}
		done += count;
	}
	mPosition += done;
	return done;
}

bool AudioFileDecoder::SeekTo(std::int64_t inFrame)
{
	if (sf_seek(mFile.get(), inFrame, SEEK_SET) != inFrame)
	{
		return false;
	}
	mPosition = inFrame;
	return true;
}

} // namespace SonaroHost
