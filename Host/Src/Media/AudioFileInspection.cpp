#include "SonaroHost/Media/AudioFileInspection.h"

#include "DeclaredAudio.h"
#include "Files/NameForms.h"
#include "Movie/Movies.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Files/WholeFile.h"
#include "SonaroHost/Media/NoSoundError.h"
#include "SoundFile/AudioFileDecoder.h"
#include "SoundFile/MpegLengthTag.h"
#include "SoundFile/OggChannels.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <numeric>
#include <system_error>

namespace SonaroHost
{

namespace
{

// The end of the engine's time line, 100 hours.
constexpr std::int64_t kMaxSeconds = 360000;

void CheckIsFile(std::filesystem::path const& inPath)
{
	if (inPath.empty())
	{
		RefuseInput(inPath, "the name of the input is empty", "give the name of a file");
	}
	std::error_code error;
	std::filesystem::path const path = GetReadablePath(inPath);
	std::filesystem::file_status const status = std::filesystem::status(path, error);
	if (status.type() == std::filesystem::file_type::not_found)
	{
		RefuseInput(inPath, DescribeMissing(inPath));
	}
	if (error)
	{
		RefuseInput(inPath, "cannot be opened: " + error.message());
	}
	if (std::filesystem::is_directory(status))
	{
		throw NoSoundError(MakeInputParts(inPath, "is a folder, not a sound file"));
	}
	if (!std::filesystem::is_regular_file(status))
	{
		RefuseInput(inPath, "is not a regular file; only files can be read");
	}
	errno = 0;
	if (!std::ifstream(path, std::ios::binary))
	{
		RefuseInput(
			inPath, "cannot be opened: " + std::generic_category().message(errno) +
						(errno == EMFILE ? "; raise the limit of open files, such as by \"ulimit -n\"" : ""));
	}
	std::uintmax_t const size = std::filesystem::file_size(path, error);
	if (!error && size == 0)
	{
		RefuseInput(inPath, "is empty");
	}
}

void RefuseCutFile(std::filesystem::path const& inPath, std::int64_t inPromised, std::int64_t inThere)
{
	RefuseInput(inPath,
		"is truncated: its header states " + std::to_string(inPromised) +
			" bytes of audio, but the file has only " + std::to_string(std::max<std::int64_t>(inThere, 0)),
		"get a complete copy");
}

// Compares what the headers promise with the size of the file. Returns whether a length is stated.
bool CheckFileSize(std::filesystem::path const& inPath)
{
	std::filesystem::path const path = GetReadablePath(inPath);
	auto const size = GetFileLength(path);
	if (auto const tag = ReadMpegLengthTag(path); tag && tag->mBytes)
	{
		std::int64_t const there = size - tag->mFirstFrame;
		if (there < *tag->mBytes)
		{
			RefuseCutFile(inPath, *tag->mBytes, there);
		}
	}
	auto const declared = ReadDeclaredAudio(path);
	if (!declared)
	{
		return true;
	}
	if (declared->mIsUnfinished)
	{
		RefuseInput(inPath,
			"is unfinished: its header states no audio, but " + std::to_string(size - declared->mStart) +
				" bytes follow",
			"repair the header first");
	}
	if (declared->mBytes && declared->mStart + *declared->mBytes > size)
	{
		RefuseCutFile(inPath, *declared->mBytes, size - declared->mStart);
	}
	return declared->mBytes.has_value();
}

// The length of a stream that does not state one: what can be decoded.
std::int64_t CountFrames(std::filesystem::path const& inPath)
{
	constexpr std::int64_t kChunk = 4096;
	AudioFileDecoder decoder(inPath);
	std::vector<float> samples(static_cast<std::size_t>(kChunk * decoder.GetFormat().channels));
	while (decoder.Read(samples.data(), kChunk) == kChunk)
	{
	}
	if (sf_error(decoder.GetHandle()) == SF_ERR_NO_ERROR)
	{
		return decoder.GetPosition();
	}
	// The read that failed lost what it had decoded already: the last frames are counted one by one.
	std::int64_t const end = decoder.GetPosition();
	AudioFileDecoder again(inPath);
	while (again.GetPosition() < end &&
		   again.Read(samples.data(), std::min(kChunk, end - again.GetPosition())) > 0)
	{
	}
	while (again.Read(samples.data(), 1) == 1)
	{
	}
	return again.GetPosition();
}

// Whether the last frame that a FLAC file promises can be decoded; its header says nothing of bytes.
void CheckLastFrame(AudioFileDecoder& ioDecoder, AudioFileInfo const& inInfo)
{
	bool const isFlac = (ioDecoder.GetFormat().format & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC;
	if (!isFlac || inInfo.mFrames == 0)
	{
		return;
	}
	std::array<float, kMaxChannels> frame{};
	if (!ioDecoder.SeekTo(inInfo.mFrames - 1) || ioDecoder.Read(frame.data(), 1) != 1)
	{
		RefuseInput(inInfo.mPath,
			"is truncated or damaged: its header states " + std::to_string(inInfo.mFrames) +
				" samples, but the last one cannot be read",
			"get a complete copy");
	}
}

// The time of day of the first sample of a broadcast WAV file. Writers that know none leave it 0.
std::optional<MediaStart> FindTimeReference(AudioFileDecoder const& inDecoder)
{
	SF_BROADCAST_INFO broadcast{};
	sf_command(inDecoder.GetHandle(), SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast);
	std::uint64_t const samples =
		std::uint64_t{broadcast.time_reference_high} << 32 | broadcast.time_reference_low;
	int const rate = inDecoder.GetFormat().samplerate;
	// Nothing is recorded more than some days after midnight: larger ones are no times.
	if (samples == 0 || samples / static_cast<unsigned>(rate) >= kMaxSeconds)
	{
		return std::nullopt;
	}
	auto const units = static_cast<std::int64_t>(samples);
	return MediaStart{units, rate, 1, FormatTime(units, rate)};
}

std::string GetFormatName(int inFormat)
{
	SF_FORMAT_INFO info{};
	info.format = inFormat;
	sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info);
	return info.name ? info.name : "unknown";
}

int GetIntegerBits(int inFormat)
{
	switch (inFormat & SF_FORMAT_SUBMASK)
	{
	case SF_FORMAT_PCM_S8:
	case SF_FORMAT_PCM_U8:
		return 8;
	case SF_FORMAT_PCM_16:
	case SF_FORMAT_ALAC_16:
		return 16;
	case SF_FORMAT_ALAC_20:
		return 20;
	case SF_FORMAT_PCM_24:
	case SF_FORMAT_ALAC_24:
		return 24;
	case SF_FORMAT_PCM_32:
	case SF_FORMAT_ALAC_32:
		return 32;
	default:
		return 0;
	}
}

// Where the channels of a 5.1 file stand, in the engine's order: left, right, centre, low frequency,
// left and right surround. Empty when the file's channel map is that of another layout.
std::vector<unsigned> Find51Order(SNDFILE* inFile)
{
	constexpr std::array<std::array<int, 2>, 6> kPlaces{{
		{SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_FRONT_LEFT},
		{SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_FRONT_RIGHT},
		{SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_FRONT_CENTER},
		{SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_LFE},
		{SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_SIDE_LEFT},
		{SF_CHANNEL_MAP_REAR_RIGHT, SF_CHANNEL_MAP_SIDE_RIGHT},
	}};
	std::vector<unsigned> order(kPlaces.size());
	std::iota(order.begin(), order.end(), 0u);
	std::array<int, 6> map{};
	if (sf_command(inFile, SFC_GET_CHANNEL_MAP_INFO, map.data(), sizeof map) == SF_FALSE)
	{
		// Without a map, six channels are 5.1 in the common order.
		return order;
	}
	for (std::size_t channel = 0; channel < kPlaces.size(); ++channel)
	{
		auto const found =
			std::find_first_of(map.begin(), map.end(), kPlaces[channel].begin(), kPlaces[channel].end());
		if (found == map.end())
		{
			return {};
		}
		order[channel] = static_cast<unsigned>(found - map.begin());
	}
	return order;
}

void SetLayout(AudioFileInfo& ioInfo, AudioFileDecoder const& inDecoder)
{
	int const channels = inDecoder.GetFormat().channels;
	if (channels < 1 || channels > static_cast<int>(kMaxChannels))
	{
		RefuseInput(ioInfo.mPath, "has " + std::to_string(channels) + " channels; at most " +
									  std::to_string(kMaxChannels) + " are supported");
	}
	ioInfo.mChannelOrder.resize(static_cast<std::size_t>(channels));
	std::iota(ioInfo.mChannelOrder.begin(), ioInfo.mChannelOrder.end(), 0u);
	ioInfo.mLayout = MakeLayoutOfChannels(static_cast<unsigned>(channels));
	auto const oggOrder = FindOggOrder(
		GetReadablePath(ioInfo.mPath), inDecoder.GetFormat().format, static_cast<unsigned>(channels));
	if (!oggOrder.empty())
	{
		ioInfo.mChannelOrder = oggOrder;
	}
	if (inDecoder.IsField())
	{
		ioInfo.mLayout = zorvmediatypes::CreateAmbisonic1ChannelLayout();
		ioInfo.mChannelOrder = {0, 2, 3, 1};
	}
	if (channels == 6)
	{
		auto const order = oggOrder.empty() ? Find51Order(inDecoder.GetHandle()) : oggOrder;
		if (!order.empty())
		{
			ioInfo.mLayout = zorvmediatypes::Create51ChannelLayout();
			ioInfo.mChannelOrder = order;
		}
	}
}

// What libsndfile reads.
AudioFileInfo InspectSoundFile(std::filesystem::path const& inPath)
{
	AudioFileInfo info;
	info.mPath = inPath;
	info.mStatesLength = CheckFileSize(inPath);

	AudioFileDecoder decoder(inPath);
	SF_INFO const& format = decoder.GetFormat();
	SetLayout(info, decoder);
	info.mContainer = GetFormatName(format.format & SF_FORMAT_TYPEMASK);
	info.mEncoding = GetFormatName(format.format & SF_FORMAT_SUBMASK);
	// W of a sound field is no integer once it is scaled.
	info.mIntegerBits = decoder.IsField() ? 0 : GetIntegerBits(format.format);
	info.mSampleRate = format.samplerate;
	if (info.mSampleRate < 1)
	{
		RefuseInput(inPath, "has no sample rate in its header");
	}
	info.mStart = FindTimeReference(decoder);
	info.mFrames = format.frames;
	if (decoder.StatesLength())
	{
		CheckLastFrame(decoder, info);
	}
	else
	{
		info.mStatesLength = false;
		info.mFrames = CountFrames(inPath);
	}
	return info;
}

// libsndfile, and libav for whatever that does not read.
AudioFileInfo InspectAny(std::filesystem::path const& inPath, unsigned inStream)
{
	std::optional<NoSoundError> whyNot;
	try
	{
		AudioFileInfo info = InspectSoundFile(inPath);
		if (inStream > 1)
		{
			RefuseInput(inPath,
				"is a sound file: it has one audio stream, and no stream " + std::to_string(inStream));
		}
		return info;
	}
	catch (NoSoundError const& error)
	{
		whyNot = error;
	}
	auto movie = InspectMovie(inPath, inStream);
	if (!movie)
	{
		throw *whyNot;
	}
	return *std::move(movie);
}

} // namespace

AudioFileInfo InspectAudioFile(std::filesystem::path const& inPath, unsigned inStream)
{
	CheckIsFile(inPath);
	auto const state = ReadFileState(GetReadablePath(inPath));
	AudioFileInfo info = InspectAny(inPath, inStream);
	info.mState = state;
	if (info.mFrames / info.mSampleRate >= kMaxSeconds)
	{
		RefuseInput(inPath, "is longer than 100 hours, the limit for media", "split it");
	}
	return info;
}

} // namespace SonaroHost
