#include "PacketPlacer.h"

extern "C"
{
#include <libavutil/intreadwrite.h>
}

#include <algorithm>

namespace SonaroHost
{

namespace
{

// Writers that count milliseconds are off by up to one, and so may those be who copied from them.
constexpr int kRoundedPart = 500;
// Frames of codecs that hold some back are up to a tenth of a second long.
constexpr int kLoosePart = 5;

// Times that go back by more, or forward by more, are those of something else.
constexpr std::int64_t kLargestOverlapSeconds = 1;
constexpr std::int64_t kLargestGapSeconds = 3600;

// Further than any movie goes; sums of a few such positions do not overflow.
constexpr std::int64_t kFurthest = std::int64_t{1} << 56;

std::int64_t GetTolerance(AVRational inTimeBase, int inSampleRate, PacketTimes inTimes)
{
	std::int64_t const ticks =
		Libav().av_rescale(2 * std::int64_t{inTimeBase.num}, inSampleRate, inTimeBase.den);
	bool const isFine = std::int64_t{inTimeBase.num} * inSampleRate <= inTimeBase.den;
	switch (inTimes)
	{
	case PacketTimes::kExact:
		return isFine ? 0 : ticks;
	case PacketTimes::kRounded:
		return std::max<std::int64_t>(ticks, inSampleRate / kRoundedPart);
	case PacketTimes::kLoose:
		break;
	}
	return std::max<std::int64_t>(ticks, inSampleRate / kLoosePart);
}

} // namespace

PacketPlacer::PacketPlacer(
	AVStream const& inStream, int inSampleRate, PacketTimes inTimes, std::int64_t inStart)
	: mTimeBase(inStream.time_base),
	  mSampleRate(inSampleRate),
	  mStart(Libav().av_rescale_q(inStart, Libav().av_get_time_base_q(), inStream.time_base)),
	  mTolerance(GetTolerance(inStream.time_base, inSampleRate, inTimes)),
	  mSkip(std::max(inStream.codecpar->initial_padding, 0))
{
}

std::int64_t PacketPlacer::ToPosition(std::int64_t inTimestamp) const
{
	std::int64_t const position =
		Libav().av_rescale_q(av_sat_sub64(inTimestamp, mStart), mTimeBase, {1, mSampleRate});
	return std::clamp(position, -kFurthest, kFurthest);
}

PacketPlacer::Place PacketPlacer::PlaceNext(AVPacket const& inPacket, std::int64_t inSamples)
{
	std::size_t size = 0;
	std::uint8_t const* const trim =
		Libav().av_packet_get_side_data(&inPacket, AV_PKT_DATA_SKIP_SAMPLES, &size);
	std::int64_t padding = 0;
	if (trim && size >= 8)
	{
		mSkip = std::max<std::int64_t>(mSkip, AV_RL32(trim));
		padding = AV_RL32(trim + 4);
	}
	std::int64_t const skipped =
		inPacket.flags & AV_PKT_FLAG_DISCARD ? inSamples : std::min(mSkip, inSamples);
	mSkip = std::max<std::int64_t>(mSkip - inSamples, 0);
	std::int64_t const kept = std::max<std::int64_t>(inSamples - skipped - padding, 0);
	std::int64_t start = mNext;
	if (inPacket.pts != AV_NOPTS_VALUE)
	{
		// The sum in ticks: where they are coarse, start and delay are rounded alike.
		std::int64_t const ticks = Libav().av_rescale_q(skipped, {1, mSampleRate}, mTimeBase);
		std::int64_t const told = ToPosition(av_sat_add64(inPacket.pts, ticks)) + mShift;
		std::int64_t const off = told - mNext;
		bool const isElsewhere = mHasStarted && (off < -kLargestOverlapSeconds * mSampleRate ||
													off > kLargestGapSeconds * mSampleRate);
		mShift = isElsewhere ? mShift - off : mShift;
		bool const isOff = !mHasStarted || off < -mTolerance || off > mTolerance;
		start = isOff && !isElsewhere ? told : mNext;
	}
	if (kept == 0)
	{
		// A codec that holds its first samples back presents them where their packet is.
		bool const isHeldBack = inSamples == 0 && !mHasStarted;
		mNext = isHeldBack ? std::max<std::int64_t>(start, 0) : mNext;
		mHasStarted = mHasStarted || isHeldBack;
		return {mNext, inSamples, 0};
	}
	Place place = Trim(start, kept);
	place.mSkipped += skipped;
	return place;
}

PacketPlacer::Place PacketPlacer::PlaceRest(std::int64_t inSamples)
{
	return Trim(mNext, inSamples);
}

// What lies before the movie, or where the last packet was, is not presented.
PacketPlacer::Place PacketPlacer::Trim(std::int64_t inStart, std::int64_t inSamples)
{
	std::int64_t const end = inStart + inSamples;
	std::int64_t const first = std::min(std::max({inStart, mNext, std::int64_t{0}}), std::max(end, mNext));
	Place const place{first, std::clamp<std::int64_t>(first - inStart, 0, inSamples),
		std::max<std::int64_t>(end - first, 0)};
	mHasStarted = true;
	mNext = std::max(end, mNext);
	return place;
}

void PacketPlacer::GoOnAt(std::int64_t inNext, std::int64_t inShift)
{
	mNext = inNext;
	mShift = inShift;
	mSkip = 0;
	mHasStarted = true;
}

} // namespace SonaroHost
