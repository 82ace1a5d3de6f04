#include "MovieScan.h"

#include "Container/AsfLength.h"
#include "MovieInput.h"
#include "Packet/PacketDecoder.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "StreamScan.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <utility>

namespace SonaroHost
{

namespace
{

// By how much the ends that containers state for a stream exceed those of sound that is whole.
constexpr int kExactEndPart = 100;
constexpr int kRoughEndPart = 2;

// By how much the length that a container states for the whole may exceed that of a whole file, of whose last packet the
// length is not always known: 50 milliseconds.
constexpr int kLostEndPart = 20;

// How many packets are decoded to find out how many samples each holds.
constexpr int kPacketsToTry = 100;

bool IsPcm(AVCodecID inCodec)
{
	return inCodec >= AV_CODEC_ID_FIRST_AUDIO && inCodec < AV_CODEC_ID_ADPCM_IMA_QT &&
		   Libav().av_get_exact_bits_per_sample(inCodec) > 0;
}

// Whether each packet gives as many samples as the next.
bool HasFixedPackets(AVCodecID inCodec)
{
	constexpr AVCodecID kCodecs[] = {
		AV_CODEC_ID_AAC, AV_CODEC_ID_AC3, AV_CODEC_ID_DTS, AV_CODEC_ID_MP1, AV_CODEC_ID_MP2, AV_CODEC_ID_MP3};
	return std::ranges::find(kCodecs, inCodec) != std::end(kCodecs);
}

MovieIndex::Stream MakePlan(MovieInput const& inInput, unsigned inStream)
{
	AVStream const& stream = inInput.GetStream(inStream);
	AVCodecID const codec = stream.codecpar->codec_id;
	bool const isLossless = codec == AV_CODEC_ID_ALAC || codec == AV_CODEC_ID_FLAC;
	bool const isExact = IsPcm(codec) || isLossless;
	// AVI has no times, and writers of ASF state wrong ones for the long packets of lossless codecs.
	bool const isTimeless = (!IsPcm(codec) && inInput.IsRead("avi")) || (isLossless && inInput.IsRead("asf"));
	bool const hasFineClock =
		std::int64_t{stream.time_base.num} * stream.codecpar->sample_rate <= stream.time_base.den;
	MovieIndex::Stream plan;
	plan.mIndex = inStream;
	plan.mChannels = static_cast<unsigned>(stream.codecpar->ch_layout.nb_channels);
	plan.mTimes = isTimeless               ? PacketTimes::kNone
				  : isExact                ? PacketTimes::kExact
				  : HasFixedPackets(codec) ? PacketTimes::kRounded
										   : PacketTimes::kLoose;
	plan.mIsCounted =
		IsPcm(codec) || HasFixedPackets(codec) || (isLossless && hasFineClock && inInput.IsRead("mov"));
	plan.mEnd = std::numeric_limits<std::int64_t>::max();
	return plan;
}

// Decodes the first packets of streams whose packets are alike.
void FindPacketSamples(std::filesystem::path const& inPath, std::vector<MovieIndex::Stream>& ioPlans)
{
	MovieInput input(inPath);
	LibavPointer<AVPacket> const packet(Own(Libav().av_packet_alloc()));
	for (MovieIndex::Stream& plan : ioPlans)
	{
		AVStream const& stream = input.GetStream(plan.mIndex);
		if (!HasFixedPackets(stream.codecpar->codec_id))
		{
			continue;
		}
		input.Choose({plan.mIndex});
		PacketDecoder decoder(stream);
		for (int i = 0; i < kPacketsToTry && plan.mPacketSamples == 0 && input.ReadPacket(*packet); ++i)
		{
			PacketDecoder::Result const result = decoder.Decode(packet.get());
			plan.mPacketSamples = result.mIsDamaged ? 0 : static_cast<int>(result.mFrames);
		}
		// Without one whole packet there is nothing to count with.
		plan.mIsCounted = plan.mPacketSamples > 0;
	}
}

// The end that the container states for a stream, where it does so in its header.
std::optional<std::int64_t> FindStatedEnd(
	MovieInput const& inInput, unsigned inStream, PacketPlacer const& inPlacer)
{
	if (auto const tagged = inInput.FindTaggedLength())
	{
		return tagged;
	}
	AVStream const& stream = inInput.GetStream(inStream);
	bool const isStated = inInput.IsRead("mov") || inInput.IsRead("mxf") || inInput.IsRead("avi");
	// The duration of streams of AVI is what there is of them, and the number of their frames is what the header states.
	std::int64_t const duration = inInput.IsRead("avi") ? stream.nb_frames : stream.duration;
	if (!isStated || duration == AV_NOPTS_VALUE || duration <= 0)
	{
		return std::nullopt;
	}
	std::int64_t const start = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
	return inPlacer.ToPosition(av_sat_add64(start, duration));
}

// The last times of all streams of a file, in units of AV_TIME_BASE.
class LastTimes
{
public:
	explicit LastTimes(MovieInput const& inInput)
		: mInput(inInput)
	{
	}

	void Take(AVPacket const& inPacket)
	{
		std::int64_t const start = inPacket.pts != AV_NOPTS_VALUE ? inPacket.pts : inPacket.dts;
		auto const stream = static_cast<std::size_t>(inPacket.stream_index);
		if (start == AV_NOPTS_VALUE)
		{
			return;
		}
		mTimes.resize(std::max(mTimes.size(), stream + 1), AV_NOPTS_VALUE);
		std::int64_t const before = std::exchange(mTimes[stream], start);
		// Packets that do not say how long they are last as long as the one before.
		std::int64_t const step = before == AV_NOPTS_VALUE ? 0 : std::max<std::int64_t>(start - before, 0);
		std::int64_t const length = inPacket.duration > 0 ? inPacket.duration : step;
		AVRational const clock = mInput.GetStream(static_cast<unsigned>(stream)).time_base;
		mEnd = std::max(
			mEnd, Libav().av_rescale_q(av_sat_add64(start, length), clock, Libav().av_get_time_base_q()));
	}

	void TakeEnd(std::int64_t inSamples, int inSampleRate)
	{
		mEnd = std::max(mEnd, Libav().av_rescale(inSamples, AV_TIME_BASE, inSampleRate));
	}

	std::int64_t GetEnd() const { return mEnd; }

private:
	MovieInput const& mInput;
	std::vector<std::int64_t> mTimes;
	std::int64_t mEnd = 0;
};

// Whether the header states how long the longest of all streams is.
bool StatesLength(MovieInput const& inInput)
{
	return inInput.IsRead("matroska") || inInput.IsRead("asf") || inInput.IsRead("flv");
}

// The end that the container states for the whole, where no stream reaches it: the file is cut short.
std::optional<std::int64_t> FindLostEnd(
	std::filesystem::path const& inPath, MovieInput const& inInput, std::int64_t inLastTime, int inSampleRate)
{
	AVFormatContext const& format = inInput.GetFormat();
	bool const isStated = StatesLength(inInput) && format.duration > 0 &&
						  format.duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
	std::optional<std::int64_t> const length = inInput.IsRead("asf") ? ReadAsfLength(GetReadablePath(inPath))
											   : isStated            ? std::optional(format.duration)
																	 : std::nullopt;
	bool const isLost = length && *length - inLastTime > AV_TIME_BASE / kLostEndPart;
	return isLost ? std::optional(Libav().av_rescale(*length, inSampleRate, AV_TIME_BASE)) : std::nullopt;
}

void SetEnd(StreamScan& ioScan, MovieInput const& inInput, std::optional<std::int64_t> const& inLostEnd,
	int inRate, MediaDamage& ioDamage)
{
	MovieIndex::Stream& plan = ioScan.GetPlan();
	std::int64_t const found = plan.mRuns.empty() ? 0 : plan.mRuns.back().mEnd;
	plan.mEnd = found;
	std::optional<std::int64_t> const stated = FindStatedEnd(inInput, plan.mIndex, ioScan.GetPlacer());
	std::int64_t const slack = inRate / (inInput.IsRead("avi") ? kRoughEndPart : kExactEndPart);
	if (stated && *stated > found + slack)
	{
		plan.mEnd = *stated;
	}
	plan.mEnd = std::max(plan.mEnd, inLostEnd.value_or(0));
	ioDamage.Add({found, plan.mEnd});
}

// What the streams are, in the order of their channels, before any packet is read.
MovieIndex MakeIndex(
	std::filesystem::path const& inPath, MovieInput const& inInput, std::vector<unsigned> const& inStreams)
{
	MovieIndex index;
	index.mEdits = inInput.GetEdits();
	for (unsigned const stream : inStreams)
	{
		MovieIndex::Stream& plan = index.mStreams.emplace_back(MakePlan(inInput, stream));
		plan.mFirstChannel = index.mChannels;
		index.mChannels += plan.mChannels;
		index.mSampleRate = inInput.GetStream(stream).codecpar->sample_rate;
	}
	FindPacketSamples(inPath, index.mStreams);
	index.mIsSeekExact = std::ranges::all_of(index.mStreams,
		[](MovieIndex::Stream const& inPlan) { return inPlan.mTimes == PacketTimes::kExact; });
	return index;
}

std::vector<StreamScan> MakeScans(MovieInput const& inInput, MovieIndex& ioIndex, MediaDamage& ioDamage)
{
	std::vector<StreamScan> scans;
	scans.reserve(ioIndex.mStreams.size());
	for (MovieIndex::Stream& plan : ioIndex.mStreams)
	{
		PacketPlacer const placer(
			inInput.GetStream(plan.mIndex), ioIndex.mSampleRate, plan.mTimes, inInput.GetStart());
		// Edits may end within a packet.
		if (inInput.IsRead("mov"))
		{
			plan.mEnd = FindStatedEnd(inInput, plan.mIndex, placer).value_or(plan.mEnd);
		}
		scans.emplace_back(inInput, plan, ioDamage);
	}
	return scans;
}

// Reads all packets. Returns the latest end of one, in units of AV_TIME_BASE.
std::int64_t ReadPackets(MovieInput& ioInput, std::vector<StreamScan>& ioScans, int inSampleRate)
{
	LastTimes times(ioInput);
	LibavPointer<AVPacket> const packet(Own(Libav().av_packet_alloc()));
	while (ioInput.ReadPacket(*packet))
	{
		times.Take(*packet);
		auto const found = std::ranges::find_if(ioScans, [&](StreamScan& inScan)
			{ return static_cast<int>(inScan.GetPlan().mIndex) == packet->stream_index; });
		if (found != ioScans.end())
		{
			found->Take(packet.get());
		}
	}
	for (StreamScan& scan : ioScans)
	{
		scan.Take(nullptr);
		times.TakeEnd(scan.GetPlacer().GetNext(), inSampleRate);
	}
	return times.GetEnd();
}

void CheckReadable(std::vector<StreamScan> const& inScans)
{
	if (std::ranges::all_of(inScans, &StreamScan::IsUnreadable))
	{
		throw std::runtime_error("none of its packets can be decoded, because they are encrypted or damaged");
	}
}

} // namespace

MovieIndex ScanMovie(std::filesystem::path const& inPath, MovieInput& ioInput,
	std::vector<unsigned> const& inStreams, MediaDamage& ioDamage)
{
	MovieIndex index = MakeIndex(inPath, ioInput, inStreams);
	std::vector<unsigned> wanted = inStreams;
	if (StatesLength(ioInput))
	{
		// Whether the file is whole shows in the stream that lasts longest.
		wanted.resize(ioInput.GetFormat().nb_streams);
		std::iota(wanted.begin(), wanted.end(), 0u);
	}
	ioInput.Choose(wanted);
	std::vector<StreamScan> scans = MakeScans(ioInput, index, ioDamage);
	std::int64_t const lastTime = ReadPackets(ioInput, scans, index.mSampleRate);
	CheckReadable(scans);
	std::optional<std::int64_t> const lostEnd = FindLostEnd(inPath, ioInput, lastTime, index.mSampleRate);
	for (StreamScan& scan : scans)
	{
		SetEnd(scan, ioInput, lostEnd, index.mSampleRate, ioDamage);
		index.mFrames = std::max(index.mFrames, scan.GetPlan().mEnd);
		if (!index.mIsSeekExact)
		{
			scan.GetPlan().mEntries.clear();
		}
	}
	return index;
}

} // namespace SonaroHost
