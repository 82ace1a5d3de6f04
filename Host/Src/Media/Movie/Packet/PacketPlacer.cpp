#include "PacketPlacer.h"

extern "C"
{
#include <libavutil/intreadwrite.h>
}

#include <algorithm>
#include <iterator>

namespace SonaroHost
{

namespace
{

// Writers that count milliseconds are off by up to one, and so may those be who copied from them.
constexpr int kRoundedPart = 500;

// Times that go back by more, or forward by more, are those of something else.
constexpr std::int64_t kLargestOverlapSeconds = 1;
constexpr std::int64_t kLargestGapSeconds = 3600;

// Further than any movie goes; sums of a few such positions do not overflow.
constexpr std::int64_t kFurthest = std::int64_t{1} << 56;

std::int64_t GetTolerance(AVRational inTimeBase, int inSampleRate, PacketTimes inTimes)
{
	std::int64_t const ticks =
		Libav().av_rescale(2 * std::int64_t{inTimeBase.num}, inSampleRate, inTimeBase.den);
	if (inTimes == PacketTimes::kExact)
	{
		bool const isFine = std::int64_t{inTimeBase.num} * inSampleRate <= inTimeBase.den;
		return isFine ? 0 : ticks;
	}
	return std::max<std::int64_t>(ticks, inSampleRate / kRoundedPart);
}

// Frames that go over two packets come with the second one, while the times are those of where they begin. Times that
// are late for that alone are so by less than a packet, from the second one on.
bool KeepsFrames(AVCodecID inCodec)
{
	constexpr AVCodecID kCodecs[] = {
		AV_CODEC_ID_WMAV1, AV_CODEC_ID_WMAV2, AV_CODEC_ID_WMAPRO, AV_CODEC_ID_WMALOSSLESS};
	return std::ranges::find(kCodecs, inCodec) != std::end(kCodecs);
}

} // namespace

PacketPlacer::PacketPlacer(
	AVStream const& inStream, int inSampleRate, PacketTimes inTimes, std::int64_t inStart)
	: mTimeBase(inStream.time_base),
	  mSampleRate(inSampleRate),
	  mTimes(inTimes),
	  mStart(Libav().av_rescale_q(inStart, Libav().av_get_time_base_q(), inStream.time_base)),
	  mTolerance(GetTolerance(inStream.time_base, inSampleRate, inTimes)),
	  mKeepsFrames(KeepsFrames(inStream.codecpar->codec_id)),
	  mBeginsAtSecond(inStream.codecpar->codec_id == AV_CODEC_ID_VORBIS),
	  mHoldsParts(inStream.codecpar->codec_id == AV_CODEC_ID_PCM_DVD),
	  mDelay(std::max(inStream.codecpar->initial_padding, 0))
{
}

std::int64_t PacketPlacer::ToPosition(std::int64_t inTimestamp) const
{
	std::int64_t const position =
		Libav().av_rescale_q(av_sat_sub64(inTimestamp, mStart), mTimeBase, {1, mSampleRate});
	return std::clamp(position, -kFurthest, kFurthest);
}

PacketPlacer::Content PacketPlacer::Describe(AVPacket const& inPacket, std::int64_t inSamples) const
{
	Content content;
	content.mTime = inPacket.pts;
	content.mSamples = inSamples;
	content.mIsDropped = (inPacket.flags & AV_PKT_FLAG_DISCARD) != 0;
	std::size_t size = 0;
	std::uint8_t const* const trim =
		Libav().av_packet_get_side_data(&inPacket, AV_PKT_DATA_SKIP_SAMPLES, &size);
	if (trim && size >= 8)
	{
		content.mDelay = AV_RL32(trim);
		content.mPadding = AV_RL32(trim + 4);
	}
	return content;
}

PacketPlacer::Place PacketPlacer::PlaceNext(Content const& inContent)
{
	bool const hasTime = inContent.mTime != AV_NOPTS_VALUE && (mTimes != PacketTimes::kNone || !mHasStarted);
	if (!hasTime)
	{
		return PlaceFrom(inContent, mNext);
	}
	std::int64_t const stated = GetStated(inContent, CountDropped(inContent));
	if (IsElsewhere(stated - mNext))
	{
		mShift -= stated - mNext;
		return PlaceFrom(inContent, mNext);
	}
	return PlaceFrom(inContent, !mHasStarted || IsOff(stated - mNext) ? stated : mNext);
}

std::optional<std::int64_t> PacketPlacer::FindJump(
	Content const& inContent, std::deque<Content> const& inFollowing)
{
	if (inContent.mTime == AV_NOPTS_VALUE)
	{
		return std::nullopt;
	}
	std::int64_t const dropped = CountDropped(inContent);
	std::int64_t const stated = GetStated(inContent, dropped);
	std::int64_t const off = stated - mNext;
	mLongestPacket = mHoldsParts ? std::max(mLongestPacket, inContent.mSamples) : 0;
	if (!mHasStarted)
	{
		return stated;
	}
	std::int64_t const mostKept = mIsAtSecond && mWasHeldBack   ? inContent.mSamples + mTolerance
								  : mIsAtSecond && mKeepsFrames ? inContent.mSamples - 1
																: 0;
	if (IsElsewhere(off) || (off > 0 && off <= mostKept))
	{
		mShift -= off;
		return std::nullopt;
	}
	std::int64_t next = mNext + inContent.mSamples - dropped;
	std::int64_t least = off;
	bool isJump = IsOff(off);
	for (auto content = inFollowing.begin(); isJump && content != inFollowing.end(); ++content)
	{
		if (content->mTime != AV_NOPTS_VALUE)
		{
			std::int64_t const later = GetStated(*content, 0) - next;
			if (IsElsewhere(later))
			{
				break;
			}
			isJump = IsOff(later) && (later < 0) == (off < 0);
			least = off < 0 ? std::max(least, later) : std::min(least, later);
		}
		next += content->mSamples;
	}
	// Where the times that follow agree, they are rounded alike.
	return isJump ? std::optional(mNext + (IsOff(off - least) ? least : off)) : std::nullopt;
}

PacketPlacer::Place PacketPlacer::PlaceNext(Content const& inContent, std::optional<std::int64_t> inJump)
{
	return PlaceFrom(inContent, inJump.value_or(mNext));
}

std::int64_t PacketPlacer::CountDropped(Content const& inContent) const
{
	return inContent.mIsDropped ? inContent.mSamples
								: std::min(std::max(mDelay, inContent.mDelay), inContent.mSamples);
}

// The sum in ticks: where they are coarse, start and delay are rounded alike.
std::int64_t PacketPlacer::GetStated(Content const& inContent, std::int64_t inDropped) const
{
	std::int64_t const ticks = Libav().av_rescale_q(inDropped, {1, mSampleRate}, mTimeBase);
	return ToPosition(av_sat_add64(inContent.mTime, ticks)) + mShift;
}

bool PacketPlacer::IsElsewhere(std::int64_t inOff) const
{
	return mHasStarted &&
		   (inOff < -kLargestOverlapSeconds * mSampleRate || inOff > kLargestGapSeconds * mSampleRate);
}

bool PacketPlacer::IsOff(std::int64_t inOff) const
{
	std::int64_t const tolerance = std::max(mTolerance, mLongestPacket);
	return inOff < -tolerance || inOff > tolerance;
}

PacketPlacer::Place PacketPlacer::PlaceFrom(Content const& inContent, std::int64_t inStart)
{
	std::int64_t const samples = inContent.mSamples;
	std::int64_t const dropped = CountDropped(inContent);
	mDelay = std::max<std::int64_t>(std::max(mDelay, inContent.mDelay) - samples, 0);
	std::int64_t const kept = std::max<std::int64_t>(samples - dropped - inContent.mPadding, 0);
	if (kept == 0)
	{
		// A codec that holds its first samples back presents them where their packet is. Of Vorbis, that is the next one,
		// unless the movie begins with this one: then its writer has moved all times on by what this one takes.
		bool const isHeldBack = samples == 0 && !mHasStarted && !(mBeginsAtSecond && inStart > 0);
		mNext = isHeldBack ? std::max<std::int64_t>(inStart, 0) : mNext;
		mHasStarted = mHasStarted || isHeldBack;
		mIsAtSecond = mIsAtSecond || isHeldBack;
		mWasHeldBack = mWasHeldBack || isHeldBack;
		return {mNext, samples, 0};
	}
	mIsAtSecond = !mHasStarted;
	Place place = Trim(inStart, kept);
	place.mSkipped += dropped;
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
	mDelay = 0;
	mHasStarted = true;
}

} // namespace SonaroHost
