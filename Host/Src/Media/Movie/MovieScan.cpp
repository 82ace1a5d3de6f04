#include "MovieScan.h"

#include "MovieInput.h"
#include "MovieStream.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

namespace SonaroHost
{

namespace
{

// One entry for so many packets: a seek passes over fewer, which costs next to nothing.
constexpr std::int64_t kPacketsOfEntry = 8;

// By how much the ends that containers state exceed those of sound that is whole.
constexpr int kExactEndPart = 100;
constexpr int kRoughEndPart = 2;

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
	switch (inCodec)
	{
	case AV_CODEC_ID_AAC:
	case AV_CODEC_ID_AC3:
	case AV_CODEC_ID_DTS:
	case AV_CODEC_ID_MP1:
	case AV_CODEC_ID_MP2:
	case AV_CODEC_ID_MP3:
		return true;
	default:
		return false;
	}
}

MovieIndex::Stream MakePlan(MovieInput const& inInput, unsigned inStream)
{
	AVStream const& stream = inInput.GetStream(inStream);
	AVCodecID const codec = stream.codecpar->codec_id;
	bool const isLossless = codec == AV_CODEC_ID_ALAC || codec == AV_CODEC_ID_FLAC;
	bool const hasFineClock =
		std::int64_t{stream.time_base.num} * stream.codecpar->sample_rate <= stream.time_base.den;
	MovieIndex::Stream plan;
	plan.mIndex = inStream;
	plan.mChannels = static_cast<unsigned>(stream.codecpar->ch_layout.nb_channels);
	plan.mTimes = IsPcm(codec) || isLossless ? PacketTimes::kExact
				  : HasFixedPackets(codec)   ? PacketTimes::kRounded
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
	LibavPointer<AVPacket> const packet(Libav().av_packet_alloc());
	for (MovieIndex::Stream& plan : ioPlans)
	{
		if (plan.mTimes != PacketTimes::kRounded)
		{
			continue;
		}
		input.Choose({plan.mIndex});
		PacketDecoder decoder(input.GetStream(plan.mIndex));
		for (int i = 0; i < kPacketsToTry && plan.mPacketSamples == 0 && input.ReadPacket(*packet); ++i)
		{
			PacketDecoder::Result const result = decoder.Decode(packet.get());
			plan.mPacketSamples = result.mIsDamaged ? 0 : static_cast<int>(result.mFrames);
		}
		// Without one whole packet there is nothing to count with.
		plan.mIsCounted = plan.mPacketSamples > 0;
	}
}

// One stream while it is looked through.
class StreamScan
{
public:
	StreamScan(MovieInput const& inInput, MovieIndex::Stream& ioPlan, MediaDamage& ioDamage)
		: mStream(inInput, ioPlan, inInput.GetStream(ioPlan.mIndex).codecpar->sample_rate,
			  MovieStream::Work::kPlace),
		  mPlan(ioPlan),
		  mDamage(ioDamage)
	{
	}

	void Take(AVPacket const* inPacket)
	{
		if (inPacket && mStream.GetPlacer().IsAfterDelay() && mPackets++ % kPacketsOfEntry == 0)
		{
			std::int64_t const time = inPacket->dts != AV_NOPTS_VALUE ? inPacket->dts : inPacket->pts;
			mPlan.mEntries.push_back(
				{mStream.GetPlacer().GetNext(), mStream.GetPlacer().GetShift(), time, inPacket->pos});
		}
		MovieStream::Piece const piece = mStream.Take(inPacket);
		if (piece.mIsDamaged)
		{
			mDamage.Add({piece.mPosition, piece.mPosition + piece.mCount});
		}
		std::vector<MovieIndex::Run>& runs = mPlan.mRuns;
		if (piece.mCount > 0 && !runs.empty() && runs.back().mEnd == piece.mPosition)
		{
			runs.back().mEnd += piece.mCount;
		}
		else if (piece.mCount > 0)
		{
			runs.push_back({piece.mPosition, piece.mPosition + piece.mCount});
		}
	}

	PacketPlacer const& GetPlacer() const { return mStream.GetPlacer(); }
	MovieIndex::Stream& GetPlan() { return mPlan; }

private:
	MovieStream mStream;
	MovieIndex::Stream& mPlan;
	MediaDamage& mDamage;
	std::int64_t mPackets = 0;
};

// The end that the container states for a stream, where it does so in its header.
std::optional<std::int64_t> FindStatedEnd(
	MovieInput const& inInput, unsigned inStream, PacketPlacer const& inPlacer)
{
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

// The end that the container states for the whole, where no stream reaches it: the file is cut short.
std::optional<std::int64_t> FindLostEnd(MovieInput const& inInput, std::int64_t inLastTime, int inSampleRate)
{
	AVFormatContext const& format = inInput.GetFormat();
	bool const isStated = inInput.IsRead("matroska") || inInput.IsRead("asf");
	if (!isStated || format.duration <= 0 ||
		format.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE ||
		format.duration - inLastTime < AV_TIME_BASE / kRoughEndPart)
	{
		return std::nullopt;
	}
	return Libav().av_rescale(format.duration, inSampleRate, AV_TIME_BASE);
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

// The end of a packet in units of AV_TIME_BASE.
std::int64_t GetEndTime(MovieInput const& inInput, AVPacket const& inPacket)
{
	std::int64_t const start = inPacket.pts != AV_NOPTS_VALUE ? inPacket.pts : inPacket.dts;
	AVStream const& stream = inInput.GetStream(static_cast<unsigned>(inPacket.stream_index));
	return start == AV_NOPTS_VALUE ? 0
								   : Libav().av_rescale_q(av_sat_add64(start, inPacket.duration),
										 stream.time_base, Libav().av_get_time_base_q());
}

// What the streams are, in the order of their channels, before any packet is read.
MovieIndex MakeIndex(
	std::filesystem::path const& inPath, MovieInput const& inInput, std::vector<unsigned> const& inStreams)
{
	MovieIndex index;
	for (unsigned const stream : inStreams)
	{
		MovieIndex::Stream& plan = index.mStreams.emplace_back(MakePlan(inInput, stream));
		plan.mFirstChannel = index.mChannels;
		index.mChannels += plan.mChannels;
		index.mSampleRate = inInput.GetStream(stream).codecpar->sample_rate;
	}
	FindPacketSamples(inPath, index.mStreams);
	index.mIsSeekExact = std::all_of(index.mStreams.begin(), index.mStreams.end(),
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
std::int64_t ReadPackets(MovieInput& ioInput, std::vector<StreamScan>& ioScans)
{
	std::int64_t lastTime = 0;
	LibavPointer<AVPacket> const packet(Libav().av_packet_alloc());
	while (ioInput.ReadPacket(*packet))
	{
		lastTime = std::max(lastTime, GetEndTime(ioInput, *packet));
		auto const found = std::find_if(ioScans.begin(), ioScans.end(),
			[&](StreamScan& inScan)
			{ return static_cast<int>(inScan.GetPlan().mIndex) == packet->stream_index; });
		if (found != ioScans.end())
		{
			found->Take(packet.get());
		}
	}
	return lastTime;
}

} // namespace

MovieIndex ScanMovie(std::filesystem::path const& inPath, MovieInput& ioInput,
	std::vector<unsigned> const& inStreams, MediaDamage& ioDamage)
{
	MovieIndex index = MakeIndex(inPath, ioInput, inStreams);
	std::vector<unsigned> wanted = inStreams;
	if (ioInput.IsRead("matroska") || ioInput.IsRead("asf"))
	{
		// Whether the file is whole shows in the stream that lasts longest.
		wanted.resize(ioInput.GetFormat().nb_streams);
		std::iota(wanted.begin(), wanted.end(), 0u);
	}
	ioInput.Choose(wanted);
	std::vector<StreamScan> scans = MakeScans(ioInput, index, ioDamage);
	std::int64_t const lastTime = ReadPackets(ioInput, scans);
	std::optional<std::int64_t> const lostEnd = FindLostEnd(ioInput, lastTime, index.mSampleRate);
	for (StreamScan& scan : scans)
	{
		scan.Take(nullptr);
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
