#include "Movies.h"

#include "Container/QuickTimeTracks.h"
#include "EditedDecoder.h"
#include "Media/MovieFile.h"
#include "MovieDecoder.h"
#include "MovieInput.h"
#include "MovieLayout.h"
#include "MovieScan.h"
#include "MovieStart.h"
#include "Packet/PacketDecoder.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Media/NoSoundError.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace SonaroHost
{

namespace
{

// Of what is read alone, a single stream, the number is as useful as a name.
std::string GetStreamName(AVStream const& inStream)
{
	std::string name;
	for (char const* const tag : {"title", "language"})
	{
		AVDictionaryEntry const* const entry = Libav().av_dict_get(inStream.metadata, tag, nullptr, 0);
		std::string const text = entry ? entry->value : "";
		if (name.empty() && text != "und")
		{
			name = text;
		}
	}
	return name;
}

AudioStreamInfo DescribeStream(AVStream const& inStream)
{
	AVCodecDescriptor const* const codec = Libav().avcodec_descriptor_get(inStream.codecpar->codec_id);
	AudioStreamInfo info;
	info.mEncoding =
		codec && codec->long_name ? codec->long_name : Libav().avcodec_get_name(inStream.codecpar->codec_id);
	info.mName = GetStreamName(inStream);
	info.mChannels = static_cast<unsigned>(std::max(inStream.codecpar->ch_layout.nb_channels, 0));
	info.mSampleRate = inStream.codecpar->sample_rate;
	return info;
}

// Why a stream cannot be read; empty when it can.
std::string FindFault(AudioStreamInfo const& inStream)
{
	if (inStream.mSampleRate < 1)
	{
		return "has no sample rate";
	}
	return inStream.mChannels < 1 ? "has no channels" : "";
}

std::string NameStream(std::size_t inIndex)
{
	return "audio stream " + std::to_string(inIndex + 1);
}

// What the decoder has against a stream; nothing where it takes it.
std::string FindFaultOfDecoder(AVStream const& inStream)
{
	try
	{
		PacketDecoder const decoder(inStream);
		return {};
	}
	catch (std::runtime_error const& error)
	{
		return std::string("cannot be decoded: ") + error.what();
	}
}

// What keeps a track of a QuickTime or MP4 file from being read, by its number; nothing where it is in order.
std::string FindFaultOfTrack(std::vector<QuickTimeTrack> const& inTracks, std::size_t inNumber)
{
	if (inNumber >= inTracks.size())
	{
		return {};
	}
	return inTracks[inNumber].mIsElsewhere   ? "has its audio in another file, which is not followed"
		   : inTracks[inNumber].mIsEncrypted ? "is encrypted"
											 : "";
}

// Whether the container says that a stream's packets are encrypted. Those of QuickTime and MP4 say so in their tracks.
bool IsEncrypted(MovieInput const& inInput, AVStream const& inStream)
{
	auto const has = [](AVDictionary const* inMetadata, char const* inKey)
	{ return Libav().av_dict_get(inMetadata, inKey, nullptr, 0) != nullptr; };
	// What the demuxers of Matroska and of ASF note down.
	return (inInput.IsRead("matroska") && has(inStream.metadata, "enc_key_id")) ||
		   (inInput.IsRead("asf") && has(inInput.GetFormat().metadata, "ASF_Protection_Type"));
}

// The streams that are read, as indices of all streams of the file. Marks them in the info, and remarks on the others.
std::vector<unsigned> ChooseStreams(
	MovieInput const& inInput, std::vector<QuickTimeTrack> const& inTracks, AudioFileInfo& ioInfo)
{
	std::vector<unsigned> chosen;
	for (std::size_t i = 0; i < ioInfo.mStreams.size(); ++i)
	{
		AudioStreamInfo& stream = ioInfo.mStreams[i];
		if (ioInfo.mStream != 0 && i + 1 != ioInfo.mStream)
		{
			continue;
		}
		AVStream const& read = inInput.GetStream(inInput.GetAudioStreams()[i]);
		std::string fault = IsEncrypted(inInput, read) ? "is encrypted" : FindFaultOfTrack(inTracks, i);
		fault = fault.empty() ? FindFault(stream) : fault;
		if (fault.empty())
		{
			fault = FindFaultOfDecoder(read);
		}
		if (fault.empty() && !chosen.empty() && stream.mSampleRate != ioInfo.mSampleRate)
		{
			fault = "has " + std::to_string(stream.mSampleRate) + " Hz and not " +
					std::to_string(ioInfo.mSampleRate) +
					" Hz as the first one; it is heard alone when it is chosen as the stream";
		}
		if (!fault.empty())
		{
			ioInfo.mRemarks.push_back(NameStream(i) + " is not read: it " + fault);
			continue;
		}
		ioInfo.mSampleRate = stream.mSampleRate;
		ioInfo.mEncoding = chosen.empty() ? stream.mEncoding : ioInfo.mEncoding;
		stream.mIsRead = true;
		chosen.push_back(inInput.GetAudioStreams()[i]);
	}
	return chosen;
}

void CheckStream(AudioFileInfo const& inInfo)
{
	if (inInfo.mStreams.empty())
	{
		throw SilentMovieError(MakeInputParts(inInfo.mPath, "is a movie without sound"));
	}
	if (inInfo.mStream > inInfo.mStreams.size())
	{
		RefuseInput(inInfo.mPath, "has no audio stream " + std::to_string(inInfo.mStream) +
									  ": the last one is " + std::to_string(inInfo.mStreams.size()));
	}
}

int GetIntegerBits(AVCodecParameters const& inParameters)
{
	AVCodecID const codec = inParameters.codec_id;
	if (codec == AV_CODEC_ID_ALAC || codec == AV_CODEC_ID_FLAC)
	{
		return inParameters.bits_per_raw_sample;
	}
	std::string const name = Libav().avcodec_get_name(codec);
	bool const isInteger = name.starts_with("pcm_s") || name.starts_with("pcm_u");
	return isInteger ? Libav().av_get_exact_bits_per_sample(codec) : 0;
}

void CheckChannels(AudioFileInfo const& inInfo)
{
	unsigned channels = 0;
	for (AudioStreamInfo const& stream : inInfo.mStreams)
	{
		channels += stream.mIsRead ? stream.mChannels : 0;
	}
	if (channels > kMaxChannels)
	{
		RefuseInput(inInfo.mPath,
			"has " + std::to_string(channels) + " channels; at most " + std::to_string(kMaxChannels) +
				" are supported",
			"choose one of its streams");
	}
}

// Throws a NoSoundError for a movie that libav would read if it could be loaded.
void CheckLibav(std::filesystem::path const& inPath)
{
	if (!FindLibavFault().empty() && IsMovieFile(inPath))
	{
		throw NoSoundError(
			{inPath, {}, "is a movie, and libav, which reads movies, cannot be used: " + FindLibavFault(),
				"install libav, or export the movie's audio as a sound file"});
	}
}

// The tracks in the order of the file; none where the file has none of QuickTime.
std::vector<QuickTimeTrack> FindTracks(MovieInput const& inInput, std::filesystem::path const& inPath)
{
	return inInput.IsRead("mov") ? ReadQuickTimeTracks(GetReadablePath(inPath))
								 : std::vector<QuickTimeTrack>();
}

// The tracks of streams, which are indices of all streams of the file.
std::vector<QuickTimeTrack> PickTracks(MovieInput const& inInput, std::vector<QuickTimeTrack> const& inTracks,
	std::vector<unsigned> const& inStreams)
{
	std::vector<unsigned> const& audio = inInput.GetAudioStreams();
	std::vector<QuickTimeTrack> picked;
	for (unsigned const stream : inStreams)
	{
		auto const number = static_cast<std::size_t>(std::ranges::find(audio, stream) - audio.begin());
		picked.push_back(number < inTracks.size() ? inTracks[number] : QuickTimeTrack());
	}
	return picked;
}

// A stream and what its edit list presents of it. A track without one is presented whole.
MovieIndex::Edited ReadEdited(
	std::filesystem::path const& inPath, unsigned inStream, QuickTimeTrack const& inTrack)
{
	MovieInput input(inPath, MovieEdits::kIgnored);
	MovieIndex::Edited edited;
	edited.mDamage = std::make_shared<MediaDamage>();
	edited.mMedia = std::make_shared<MovieIndex const>(ScanMovie(inPath, input, {inStream}, *edited.mDamage));
	edited.mSegments = inTrack.mEdits.empty()
						   ? std::vector<MovieIndex::Segment>{{0, edited.mMedia->mFrames, 0}}
						   : MakeSegments(inTrack, edited.mMedia->mSampleRate, edited.mMedia->mFrames);
	return edited;
}

MovieIndex ReadEditedIndex(std::filesystem::path const& inPath, std::vector<unsigned> const& inStreams,
	std::vector<QuickTimeTrack> const& inTracks, MediaDamage& ioDamage)
{
	MovieIndex index;
	for (std::size_t i = 0; i < inStreams.size(); ++i)
	{
		MovieIndex::Edited edited = ReadEdited(inPath, inStreams[i], inTracks[i]);
		edited.mFirstChannel = index.mChannels;
		index.mChannels += edited.mMedia->mChannels;
		index.mSampleRate = edited.mMedia->mSampleRate;
		std::int64_t const end = edited.mSegments.empty() ? 0 : edited.mSegments.back().mEnd;
		index.mFrames = std::max(index.mFrames, end);
		AddEditedDamage(edited, 0, end, ioDamage);
		index.mEdited.push_back(std::move(edited));
	}
	return index;
}

bool IsWithoutAudio(MovieIndex const& inIndex)
{
	auto const isEmpty = [](auto const& inStream) { return inStream.mRuns.empty(); };
	return std::ranges::all_of(inIndex.mStreams, isEmpty) &&
		   std::ranges::all_of(
			   inIndex.mEdited, [](auto const& inEdited) { return IsWithoutAudio(*inEdited.mMedia); });
}

// What is silent in a stream, since there are no packets for it; empty where nothing is. Damage is reported elsewhere.
std::string DescribeGaps(MovieIndex::Stream const& inStream, AudioFileInfo const& inInfo)
{
	MediaDamage gaps;
	for (std::size_t i = 1; i < inStream.mRuns.size(); ++i)
	{
		gaps.Add({inStream.mRuns[i - 1].mEnd, inStream.mRuns[i].mFirst});
	}
	auto list = gaps.Get();
	std::erase_if(list,
		[damage = inInfo.mDamage->Get()](MediaDamage::Stretch const& inGap)
		{
			return std::ranges::any_of(damage, [&inGap](MediaDamage::Stretch const& inDamaged)
				{ return inDamaged.mFirst < inGap.mEnd && inGap.mFirst < inDamaged.mEnd; });
		});
	if (list.empty())
	{
		return {};
	}
	return "has " + FormatCount(list.size(), "gap") + " between its packets, which " +
		   (list.size() == 1 ? "is silent: from " : "are silent: the first from ") +
		   FormatTime(list.front().mFirst, inInfo.mSampleRate) + " to " +
		   FormatTime(list.front().mEnd, inInfo.mSampleRate);
}

void RemarkOnGaps(MovieInput const& inInput, AudioFileInfo& ioInfo)
{
	for (MovieIndex::Stream const& stream : ioInfo.mMovie->mStreams)
	{
		if (std::string const gaps = DescribeGaps(stream, ioInfo); !gaps.empty())
		{
			auto const& audio = inInput.GetAudioStreams();
			auto const number =
				static_cast<std::size_t>(std::ranges::find(audio, stream.mIndex) - audio.begin());
			ioInfo.mRemarks.push_back(NameStream(number) + " " + gaps);
		}
	}
}

// Reads all packets, to find the length and where everything lies.
void ReadIndex(MovieInput& ioInput, std::vector<unsigned> const& inStreams,
	std::vector<QuickTimeTrack> const& inTracks, AudioFileInfo& ioInfo)
{
	try
	{
		bool const isEdited = std::ranges::any_of(inTracks, HasSeveralSegments);
		auto const index = std::make_shared<MovieIndex const>(
			isEdited ? ReadEditedIndex(ioInfo.mPath, inStreams, inTracks, *ioInfo.mDamage)
					 : ScanMovie(ioInfo.mPath, ioInput, inStreams, *ioInfo.mDamage));
		ioInfo.mFrames = index->mFrames;
		ioInfo.mMovie = index;
		RemarkOnGaps(ioInput, ioInfo);
	}
	catch (HostError const&)
	{
		throw;
	}
	catch (std::runtime_error const& error)
	{
		RefuseInput(ioInfo.mPath, std::string("has sound that cannot be read: ") + error.what(),
			"export it as a sound file");
	}
	if (IsWithoutAudio(*ioInfo.mMovie))
	{
		RefuseInput(ioInfo.mPath,
			"has audio streams, but no audio in them: it is damaged, or its audio is in other files",
			"get a complete copy, with all of its audio in it");
	}
}

} // namespace

std::optional<AudioFileInfo> InspectMovie(std::filesystem::path const& inPath, unsigned inStream)
{
	CheckLibav(inPath);
	if (!FindLibavFault().empty())
	{
		return std::nullopt;
	}
	std::optional<MovieInput> input;
	try
	{
		input.emplace(inPath);
	}
	catch (NoSoundError const&)
	{
		return std::nullopt;
	}
	AudioFileInfo info;
	info.mPath = inPath;
	info.mStream = inStream;
	info.mContainer = input->GetFormat().iformat->long_name;
	for (unsigned const stream : input->GetAudioStreams())
	{
		info.mStreams.push_back(DescribeStream(input->GetStream(stream)));
	}
	CheckStream(info);
	std::vector<QuickTimeTrack> const tracks = FindTracks(*input, inPath);
	std::vector<unsigned> const streams = ChooseStreams(*input, tracks, info);
	if (streams.empty())
	{
		RefuseInput(inPath, "has sound that cannot be read: " + info.mRemarks.front(),
			"export its audio as a sound file");
	}
	CheckChannels(info);
	info.mIntegerBits = GetIntegerBits(*input->GetStream(streams.front()).codecpar);
	info.mStart = FindMovieStart(*input, info.mSampleRate);
	std::vector<QuickTimeTrack> const picked = PickTracks(*input, tracks, streams);
	SetMovieLayout(*input, streams, picked, info);
	ReadIndex(*input, streams, picked, info);
	return info;
}

std::unique_ptr<SoundDecoder> OpenMovieDecoder(AudioFileInfo const& inInfo)
{
	if (!inInfo.mMovie->mEdited.empty())
	{
		return std::make_unique<EditedDecoder>(inInfo.mPath, inInfo.mMovie, inInfo.mDamage);
	}
	return std::make_unique<MovieDecoder>(inInfo.mPath, inInfo.mMovie, inInfo.mDamage);
}

std::string DescribeMovieLibraries()
{
	if (!FindLibavFault().empty())
	{
		return {};
	}
	auto const describe = [](char const* inName, unsigned inVersion)
	{
		return std::string(inName) + " " + std::to_string(AV_VERSION_MAJOR(inVersion)) + "." +
			   std::to_string(AV_VERSION_MINOR(inVersion)) + "." +
			   std::to_string(AV_VERSION_MICRO(inVersion));
	};
	return describe("libavformat", Libav().avformat_version()) + ", " +
		   describe("libavcodec", Libav().avcodec_version()) + ", " +
		   describe("libswresample", Libav().swresample_version());
}

void SilenceMovieLibraries()
{
	SilenceLibav();
}

} // namespace SonaroHost
