#include "AudioFileDecoder.h"

#include "MpegLengthTag.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Media/NoSoundError.h"
#include "StretchedFile.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <numbers>
#include <string>

namespace SonaroHost
{

namespace
{

// A count of frames above this is libsndfile's way to say that it knows none.
constexpr std::int64_t kLargestLength = std::int64_t{1} << 48;

// A packet of ALAC. The last one of a file may be short and is only right after the one before.
constexpr std::int64_t kAlacPacketFrames = 4096;

// 16-bit samples that are read at once, few enough for the first-level cache.
constexpr std::size_t kShorts = 4096;

constexpr int kFieldChannels = 4;

// From 16-bit samples to floats; a power of two, so that no bit is lost.
constexpr float kShortScale = 1.0f / 32768.0f;

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
	errno = 0;
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
	if (!mFile && errno == EMFILE)
	{
		RefuseInput(inPath, "cannot be opened: Too many open files",
			"raise the limit of open files, such as by \"ulimit -n\"");
	}
	if (!mFile)
	{
		throw NoSoundError(MakeInputParts(inPath, "cannot be read as sound: " + DescribeFailure()));
	}
	// In WAV, the length of MPEG sound is that of its last packet or the encoder's guess.
	bool const isMpegInWav = (mFormat.format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK)) ==
							 (SF_FORMAT_WAV | SF_FORMAT_MPEG_LAYER_III);
	mStatesLength = mStatesLength && mFormat.frames < kLargestLength && !isMpegInWav;
	mIsField = mFormat.channels == kFieldChannels &&
			   sf_command(mFile.get(), SFC_WAVEX_GET_AMBISONIC, nullptr, 0) == SF_AMBISONIC_B_FORMAT;
	if ((mFormat.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16)
	{
		mShorts.resize(std::max(kShorts, static_cast<std::size_t>(mFormat.channels)));
	}
}

AudioFileDecoder::~AudioFileDecoder() = default;

// Measured for each codec at random positions; seeks in Vorbis, Opus and MPEG files miss bits, or even the position,
// however early they go.
bool AudioFileDecoder::IsSeekExact() const noexcept
{
	if (!mStatesLength || !mFormat.seekable || (mFormat.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_PAF)
	{
		return false;
	}
	// FLAC is among them: its codec counts as PCM.
	constexpr int kCodecs[] = {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24,
		SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE, SF_FORMAT_ULAW, SF_FORMAT_ALAW,
		SF_FORMAT_IMA_ADPCM, SF_FORMAT_MS_ADPCM, SF_FORMAT_ALAC_16, SF_FORMAT_ALAC_20, SF_FORMAT_ALAC_24,
		SF_FORMAT_ALAC_32};
	return std::ranges::find(kCodecs, mFormat.format & SF_FORMAT_SUBMASK) != std::end(kCodecs);
}

std::int64_t AudioFileDecoder::GetPrerollFrames() const noexcept
{
	int const codec = mFormat.format & SF_FORMAT_SUBMASK;
	bool const isAlac = codec >= SF_FORMAT_ALAC_16 && codec <= SF_FORMAT_ALAC_32;
	return isAlac ? kAlacPacketFrames : 0;
}

std::int64_t AudioFileDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	std::int64_t done = 0;
	while (done < inFrames)
	{
		std::int64_t const count = ReadSome(outSamples + done * mFormat.channels, inFrames - done);
		if (count <= 0)
		{
			break;
		}
		done += count;
	}
	for (std::int64_t i = 0; mIsField && i < done; ++i)
	{
		outSamples[i * kFieldChannels] *= std::numbers::sqrt2_v<float>;
	}
	mPosition += done;
	return done;
}

// 16-bit PCM is read as it is in the file and converted here, to the values that libsndfile gives: in vectors, and
// without the second buffer that libsndfile converts from.
std::int64_t AudioFileDecoder::ReadSome(float* outSamples, std::int64_t inFrames)
{
	if (mShorts.empty())
	{
		return sf_readf_float(mFile.get(), outSamples, inFrames);
	}
	std::int64_t const wanted =
		std::min(inFrames, static_cast<std::int64_t>(mShorts.size()) / mFormat.channels);
	std::int64_t const count = sf_readf_short(mFile.get(), mShorts.data(), wanted);
	std::size_t const samples = static_cast<std::size_t>(std::max<std::int64_t>(count, 0) * mFormat.channels);
	for (std::size_t i = 0; i < samples; ++i)
	{
		outSamples[i] = static_cast<float>(mShorts[i]) * kShortScale;
	}
	return count;
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
