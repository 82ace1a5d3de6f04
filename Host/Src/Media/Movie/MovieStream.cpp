#include "MovieStream.h"

#include "MovieInput.h"

#include <algorithm>

namespace SonaroHost
{

namespace
{

// Longer ones are not to be believed.
constexpr std::int64_t kLargestPacketSeconds = 60;

} // namespace

MovieStream::MovieStream(
	MovieInput const& inInput, MovieIndex::Stream const& inPlan, int inSampleRate, Work inWork)
	: mPlan(inPlan),
	  mSampleRate(inSampleRate),
	  mWork(inWork),
	  mStream(inInput.GetStream(inPlan.mIndex)),
	  mPlacer(mStream, inSampleRate, inPlan.mTimes, inInput.GetStart())
{
	// The copy is not needed here.
	mPlan.mRuns.clear();
	mPlan.mEntries.clear();
	if (inWork == Work::kDecode || !mPlan.mIsCounted)
	{
		mDecoder = std::make_unique<PacketDecoder>(mStream);
	}
}

MovieStream::Piece MovieStream::Take(AVPacket const* inPacket)
{
	if (inPacket)
	{
		Measured const measured = Measure(*inPacket);
		return Place(measured, FindJumpOfPlan());
	}
	mDecoded = mDecoder ? mDecoder->Decode(nullptr) : PacketDecoder::Result();
	return Cut(mPlacer.PlaceRest(mDecoded.mFrames), mDecoded.mIsDamaged);
}

MovieStream::Measured MovieStream::Measure(AVPacket const& inPacket)
{
	std::optional<std::int64_t> const counted = mPlan.mIsCounted ? CountSamples(inPacket) : std::nullopt;
	if (!mDecoder && !counted)
	{
		mDecoder = std::make_unique<PacketDecoder>(mStream);
	}
	mDecoded = {};
	mDecoded.mIsDamaged = (inPacket.flags & AV_PKT_FLAG_CORRUPT) != 0;
	bool const isDecoded = mDecoder && (mWork == Work::kDecode || !counted);
	if (isDecoded)
	{
		mDecoded = mDecoder->Decode(&inPacket);
	}
	// Packets of a codec with a fixed length that give less are damaged; the last ones of lossless codecs may be short.
	bool const isShort = isDecoded && mPlan.mPacketSamples > 0 && mDecoded.mFrames < mPlan.mPacketSamples;
	mDecoded.mIsDamaged = mDecoded.mIsDamaged || isShort;
	std::int64_t const samples = counted               ? *counted
								 : mDecoded.mIsDamaged ? GuessSamples(inPacket)
													   : mDecoded.mFrames;
	mLastSamples = mDecoded.mIsDamaged ? mLastSamples : samples;
	return {mPlacer.Describe(inPacket, samples), mDecoded.mIsDamaged};
}

std::optional<std::int64_t> MovieStream::FindJumpOfPlan()
{
	std::int64_t const packet = mPackets++;
	bool const isJump = mJump < mPlan.mJumps.size() && mPlan.mJumps[mJump].mPacket == packet;
	return isJump ? std::optional(mPlan.mJumps[mJump++].mPosition) : std::nullopt;
}

MovieStream::Piece MovieStream::Place(Measured const& inMeasured, std::optional<std::int64_t> inJump)
{
	return Cut(mPlan.mTimes == PacketTimes::kLoose ? mPlacer.PlaceNext(inMeasured.mContent, inJump)
												   : mPlacer.PlaceNext(inMeasured.mContent),
		inMeasured.mIsDamaged);
}

MovieStream::Piece MovieStream::Cut(PacketPlacer::Place const& inPlace, bool inIsDamaged) const
{
	bool const isSilent = mWork == Work::kPlace || !mDecoded.mSamples || inIsDamaged;
	std::int64_t const there = isSilent ? inPlace.mCount : mDecoded.mFrames - inPlace.mSkipped;
	std::int64_t const end = std::min(mPlan.mEnd - inPlace.mPosition, inPlace.mCount);
	float const* const samples =
		isSilent ? nullptr : mDecoded.mSamples + static_cast<std::size_t>(inPlace.mSkipped) * mPlan.mChannels;
	return {inPlace.mPosition, std::max<std::int64_t>(std::min(end, there), 0), samples, inIsDamaged};
}

std::optional<std::int64_t> MovieStream::CountSamples(AVPacket const& inPacket) const
{
	if (mPlan.mPacketSamples > 0)
	{
		return mPlan.mPacketSamples;
	}
	if (Libav().av_get_exact_bits_per_sample(mStream.codecpar->codec_id) > 0)
	{
		int const samples = Libav().av_get_audio_frame_duration2(mStream.codecpar, inPacket.size);
		return std::max(samples, 0);
	}
	return inPacket.duration > 0 ? std::optional(GuessSamples(inPacket)) : std::nullopt;
}

std::int64_t MovieStream::GuessSamples(AVPacket const& inPacket) const
{
	if (inPacket.duration <= 0 || mPlan.mTimes == PacketTimes::kNone)
	{
		return mLastSamples;
	}
	std::int64_t const duration =
		Libav().av_rescale_q(inPacket.duration, mStream.time_base, {1, mSampleRate});
	return std::clamp<std::int64_t>(duration, 0, kLargestPacketSeconds * mSampleRate);
}

void MovieStream::GoOnAt(MovieIndex::Entry const& inEntry)
{
	mPlacer.GoOnAt(inEntry.mNext, inEntry.mShift);
	if (mDecoder)
	{
		mDecoder->Reset();
	}
}

} // namespace SonaroHost
