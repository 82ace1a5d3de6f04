#include "MovieInput.h"

#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Files/WholeFile.h"
#include "SonaroHost/Media/NoSoundError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

namespace SonaroHost
{

namespace
{

enum class TimeBase
{
	// Times count from the start of the movie.
	kFromStart,
	// Times are those of a broadcast, which had begun before.
	kRunning,
};

struct Demuxer
{
	std::string_view mName;
	TimeBase mTimeBase = TimeBase::kFromStart;
	// How sure the demuxer must be: those of streams without a container find their frames in other files, too.
	int mLeastScore = AVPROBE_SCORE_RETRY + 1;
};

constexpr int kSure = AVPROBE_SCORE_EXTENSION + 1;

// Those that libsndfile reads are here for the codecs that it lacks.
constexpr Demuxer kDemuxers[] = {
	{"mov"},
	{"matroska"},
	{"mxf"},
	{"avi"},
	{"mpegts", TimeBase::kRunning},
	{"mpeg", TimeBase::kRunning},
	{"asf"},
	{"flv"},
	{"wav"},
	{"w64"},
	{"caf"},
	{"aiff"},
	{"ogg", TimeBase::kRunning},
	{"aac", TimeBase::kRunning, kSure},
	{"ac3", TimeBase::kRunning, kSure},
	{"eac3", TimeBase::kRunning, kSure},
	{"dts", TimeBase::kRunning, kSure},
};

// Lists of other files and addresses.
constexpr std::string_view kLists[] = {
	"hls", "concat", "dash", "sdp", "imf", "rtsp", "webm_dash_manifest", "vapoursynth"};

// What decodes sound, so that no file makes a decoder of pictures run.
constexpr char kDecoders[] =
	"aac,aac_latm,ac3,eac3,alac,flac,opus,vorbis,dca,truehd,mlp,mp1float,mp2float,mp3float,mp1,mp2,mp3,"
	"wmav1,wmav2,wmapro,wmalossless,s302m,adpcm_ms,adpcm_ima_wav,adpcm_ima_qt,mace3,mace6,qdm2,qdmc,"
	"amrnb,amrwb,gsm,gsm_ms,tta,wavpack,"
	"pcm_alaw,pcm_mulaw,pcm_bluray,pcm_dvd,pcm_lxf,pcm_f16le,pcm_f24le,pcm_f32be,pcm_f32le,pcm_f64be,pcm_"
	"f64le,"
	"pcm_s8,pcm_s8_planar,pcm_s16be,pcm_s16be_planar,pcm_s16le,pcm_s16le_planar,pcm_s24be,pcm_s24daud,pcm_"
	"s24le,"
	"pcm_s24le_planar,pcm_s32be,pcm_s32le,pcm_s32le_planar,pcm_s64be,pcm_s64le,pcm_u8,pcm_u16be,pcm_u16le,"
	"pcm_u24be,"
	"pcm_u24le,pcm_u32be,pcm_u32le";

constexpr int kBufferSize = 65536;

// A demuxer's first name.
std::string_view GetName(AVInputFormat const& inDemuxer)
{
	std::string_view const names = inDemuxer.name;
	return names.substr(0, names.find(','));
}

Demuxer const* FindDemuxer(std::string_view inName)
{
	auto const found = std::ranges::find(kDemuxers, inName, &Demuxer::mName);
	return found != std::end(kDemuxers) ? found : nullptr;
}

std::string DescribeError(int inError)
{
	std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
	Libav().av_strerror(inError, text.data(), text.size());
	return text.data();
}

} // namespace

MovieInput::MovieInput(std::filesystem::path const& inPath, MovieEdits inEdits)
	: mPath(inPath),
	  mEdits(inEdits)
{
	std::filesystem::path const path = GetReadablePath(inPath);
	mFile.reset(std::fopen(path.c_str(), "rb"));
	if (!mFile)
	{
		RefuseInput(inPath, "cannot be opened: " + std::generic_category().message(errno));
	}
	mLength = GetFileLength(path);
	auto* buffer = static_cast<unsigned char*>(Libav().av_malloc(kBufferSize));
	mBytes.reset(buffer ? Libav().avio_alloc_context(
							  buffer, kBufferSize, 0, this, &MovieInput::Read, nullptr, &MovieInput::Seek)
						: nullptr);
	if (!mBytes)
	{
		Libav().av_freep(static_cast<void*>(&buffer));
		throw std::bad_alloc();
	}
	Open(inPath, Recognise(inPath));
}

MovieInput::~MovieInput() = default;

AVInputFormat const* MovieInput::Recognise(std::filesystem::path const& inPath)
{
	AVInputFormat const* demuxer = nullptr;
	int const score = Libav().av_probe_input_buffer2(mBytes.get(), &demuxer, "", nullptr, 0, 0);
	CheckRead(score);
	std::string_view const name = demuxer ? GetName(*demuxer) : std::string_view();
	if (std::ranges::find(kLists, name) != std::end(kLists))
	{
		RefuseInput(inPath,
			"is a list of other files or addresses (" + std::string(name) + "), which are not followed",
			"give the files that it names");
	}
	Demuxer const* const known = FindDemuxer(name);
	if (!known || score < known->mLeastScore)
	{
		throw NoSoundError(MakeInputParts(inPath, "cannot be read as sound: its format is not known"));
	}
	return demuxer;
}

void MovieInput::Open(std::filesystem::path const& inPath, AVInputFormat const* inDemuxer)
{
	auto made = Own(Libav().avformat_alloc_context());
	made->codec_whitelist = Libav().av_strdup(kDecoders);
	made->protocol_whitelist = Libav().av_strdup("");
	// Without lists, everything would be allowed.
	if (!made->codec_whitelist || !made->protocol_whitelist)
	{
		throw std::bad_alloc();
	}
	AVFormatContext* format = made.release();
	format->pb = mBytes.get();
	format->io_open = [](AVFormatContext*, AVIOContext**, char const*, int, AVDictionary**)
	{ return AVERROR(EPERM); };
	AVDictionary* options = nullptr;
	Libav().av_dict_set(&options, "ignore_editlist", mEdits == MovieEdits::kIgnored ? "1" : "0", 0);
	// It frees the context when it fails.
	int error = Libav().avformat_open_input(&format, "", inDemuxer, &options);
	Libav().av_dict_free(&options);
	if (error >= 0)
	{
		mFormat.reset(format);
		error = Libav().avformat_find_stream_info(format, nullptr);
	}
	CheckRead(error);
	if (error < 0)
	{
		RefuseInput(inPath,
			"is truncated or damaged: its header cannot be read (" + std::string(GetName(*inDemuxer)) + ": " +
				DescribeError(error) + ")",
			"get a complete copy");
	}
	bool isAnyKnown = false;
	for (unsigned i = 0; i < mFormat->nb_streams; ++i)
	{
		isAnyKnown = isAnyKnown || GetStream(i).codecpar->codec_id != AV_CODEC_ID_NONE;
		if (GetStream(i).codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
		{
			mAudioStreams.push_back(i);
		}
	}
	if (!isAnyKnown)
	{
		RefuseInput(inPath, "is truncated or damaged: its header names no streams", "get a complete copy");
	}
}

bool MovieInput::IsRead(char const* inDemuxer) const
{
	return GetName(*mFormat->iformat) == inDemuxer;
}

std::int64_t MovieInput::GetStart() const
{
	Demuxer const* const demuxer = FindDemuxer(GetName(*mFormat->iformat));
	bool const isRunning = demuxer->mTimeBase == TimeBase::kRunning && mFormat->start_time != AV_NOPTS_VALUE;
	if (FindTaggedLength())
	{
		AVStream const& stream = GetStream(mAudioStreams.front());
		return Libav().av_rescale_q(stream.start_time, stream.time_base, Libav().av_get_time_base_q());
	}
	return isRunning ? mFormat->start_time : 0;
}

std::optional<std::int64_t> MovieInput::FindTaggedLength() const
{
	bool hasOthers = mAudioStreams.size() != 1;
	for (unsigned i = 0; i < mFormat->nb_streams; ++i)
	{
		// Pictures of covers are streams, too.
		bool const isCover = (GetStream(i).disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
		hasOthers = hasOthers || (GetStream(i).codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isCover);
	}
	AVDictionaryEntry const* const tag =
		IsRead("mov") ? Libav().av_dict_get(mFormat->metadata, "iTunSMPB", nullptr, 0) : nullptr;
	// libavformat counts the delay as a late start; where an edit list takes it off, there is none.
	if (hasOthers || !tag || GetStream(mAudioStreams.front()).start_time <= 0)
	{
		return std::nullopt;
	}
	unsigned delay = 0;
	unsigned padding = 0;
	std::uint64_t samples = 0;
	// Hexadecimal numbers: 0, the delay, the padding, what is between them, and others.
	constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 40;
	if (std::sscanf(tag->value, " %*x %x %x %" SCNx64, &delay, &padding, &samples) != 3 || samples == 0 ||
		samples > kMostSamples)
	{
		return std::nullopt;
	}
	// A tag that was kept when the file was cut does not fit it any more. The last packet may be stated as shorter.
	constexpr std::int64_t kTwoPackets = 4096;
	AVStream const& stream = GetStream(mAudioStreams.front());
	std::int64_t const all = static_cast<std::int64_t>(samples) + delay + padding;
	std::int64_t const stated =
		Libav().av_rescale_q(stream.duration, stream.time_base, {1, stream.codecpar->sample_rate});
	return stream.duration > 0 && std::abs(all - stated) <= kTwoPackets
			   ? std::optional(static_cast<std::int64_t>(samples))
			   : std::nullopt;
}

void MovieInput::Choose(std::vector<unsigned> const& inStreams)
{
	for (unsigned i = 0; i < mFormat->nb_streams; ++i)
	{
		bool const isChosen = std::ranges::find(inStreams, i) != inStreams.end();
		mFormat->streams[i]->discard = isChosen ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
	}
}

bool MovieInput::ReadPacket(AVPacket& outPacket)
{
	for (;;)
	{
		Libav().av_packet_unref(&outPacket);
		int const error = Libav().av_read_frame(mFormat.get(), &outPacket);
		CheckRead(error);
		if (error < 0)
		{
			return false;
		}
		// Streams may come up while reading, and some demuxers do not skip.
		auto const index = static_cast<unsigned>(outPacket.stream_index);
		if (mFormat->streams[index]->discard != AVDISCARD_ALL)
		{
			return true;
		}
	}
}

// What cannot be read, or held in memory, is not the end of the movie.
void MovieInput::CheckRead(int inError) const
{
	// Sizes that damage has made huge end so as well, and then memory is not what is missing.
	if (inError == AVERROR(ENOMEM))
	{
		RefuseInput(mPath, "cannot be read: it asks for more memory than there is, as damaged movies do",
			"get a complete copy, or end other programs");
	}
	if (mReadError != 0)
	{
		RefuseInput(mPath, "cannot be read: " + std::generic_category().message(mReadError));
	}
}

bool MovieInput::SeekTo(unsigned inStream, std::int64_t inTimestamp)
{
	return Libav().av_seek_frame(
			   mFormat.get(), static_cast<int>(inStream), inTimestamp, AVSEEK_FLAG_BACKWARD) >= 0;
}

int MovieInput::Read(void* inSelf, std::uint8_t* outBytes, int inCount)
{
	auto* const self = static_cast<MovieInput*>(inSelf);
	std::size_t const count = std::fread(outBytes, 1, static_cast<std::size_t>(inCount), self->mFile.get());
	if (count == 0 && std::ferror(self->mFile.get()) != 0)
	{
		self->mReadError = errno;
		return AVERROR(errno);
	}
	return count > 0 ? static_cast<int>(count) : AVERROR_EOF;
}

std::int64_t MovieInput::Seek(void* inSelf, std::int64_t inOffset, int inOrigin)
{
	auto* const self = static_cast<MovieInput*>(inSelf);
	if (inOrigin == AVSEEK_SIZE)
	{
		return self->mLength;
	}
	if (std::fseek(self->mFile.get(), inOffset, inOrigin & ~AVSEEK_FORCE) != 0)
	{
		return AVERROR(errno);
	}
	return std::ftell(self->mFile.get());
}

} // namespace SonaroHost
