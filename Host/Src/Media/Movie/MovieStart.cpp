#include "MovieStart.h"

#include "MovieInput.h"
#include "SonaroHost/Base/TimePosition.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace SonaroHost
{

namespace
{

std::string FindTag(AVDictionary const* inTags, char const* inName)
{
	AVDictionaryEntry const* const entry = Libav().av_dict_get(inTags, inName, nullptr, 0);
	return entry ? entry->value : "";
}

// The rate by which a movie counts its frames: that of the stream itself, otherwise of the picture.
AVRational FindFrameRate(AVFormatContext const& inFormat, AVStream const* inStream)
{
	auto const isRate = [](AVRational inRate)
	{ return inRate.num > 0 && inRate.den > 0 && inRate.num / inRate.den < 1000; };
	if (inStream && inStream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO && isRate(inStream->avg_frame_rate))
	{
		return inStream->avg_frame_rate;
	}
	for (unsigned i = 0; i < inFormat.nb_streams; ++i)
	{
		AVStream const& stream = *inFormat.streams[i];
		bool const isPicture = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
		for (AVRational const rate : {stream.r_frame_rate, stream.avg_frame_rate})
		{
			if (isPicture && isRate(rate))
			{
				return rate;
			}
		}
	}
	return {0, 1};
}

std::optional<MediaStart> ReadTimecode(std::string const& inText, AVRational inRate)
{
	AVTimecode timecode{};
	if (inText.empty() || inRate.num == 0 ||
		Libav().av_timecode_init_from_string(&timecode, inRate, inText.c_str(), nullptr) < 0)
	{
		return std::nullopt;
	}
	std::array<char, 64> rate{};
	std::snprintf(rate.data(), rate.size(), " at %.6g fps", av_q2d(inRate));
	return MediaStart{timecode.start, inRate.num, inRate.den, inText + rate.data()};
}

} // namespace

std::optional<MediaStart> FindMovieStart(MovieInput const& inInput, int inSampleRate)
{
	AVFormatContext const& format = inInput.GetFormat();
	for (unsigned i = 0; i < format.nb_streams; ++i)
	{
		AVStream const& stream = *format.streams[i];
		if (auto start = ReadTimecode(FindTag(stream.metadata, "timecode"), FindFrameRate(format, &stream)))
		{
			return start;
		}
	}
	if (auto start = ReadTimecode(FindTag(format.metadata, "timecode"), FindFrameRate(format, nullptr)))
	{
		return start;
	}
	std::int64_t const samples =
		std::strtoll(FindTag(format.metadata, "time_reference").c_str(), nullptr, 10);
	return samples > 0
			   ? std::optional(MediaStart{samples, inSampleRate, 1, FormatTime(samples, inSampleRate)})
			   : std::nullopt;
}

} // namespace SonaroHost
