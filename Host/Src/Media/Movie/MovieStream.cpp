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
	  mParameters(inInput.GetStream(inPlan.mIndex).codecpar),
	  mTimeBase(inInput.GetStream(inPlan.mIndex).time_base),
	  mPlacer(inInput.GetStream(inPlan.mIndex), inSampleRate, inPlan.mTimes, inInput.GetStart())
{
	// The copy is not needed here.
	mPlan.mRuns.clear();
	mPlan.mEntries.clear();
	if (inWork == Work::kDecode || !mPlan.mIsCounted)
	{
		mDecoder = std::make_unique<PacketDecoder>(inInput.GetStream(inPlan.mIndex));
	}
}

MovieStream::Piece MovieStream::Take(AVPacket const* inPacket)
{
	bool const isCounted = inPacket && mPlan.mIsCounted;
	PacketDecoder::Result result;
	if (mDecoder)
	{
		result = mDecoder->Decode(inPacket);
	}
	else
	{
		result.mIsDamaged = inPacket && (inPacket->flags & AV_PKT_FLAG_CORRUPT) != 0;
	}
	std::int64_t samples = result.mFrames;
	if (isCounted)
	{
		samples = CountSamples(*inPacket);
		result.mIsDamaged = result.mIsDamaged || (mDecoder && result.mFrames < samples);
	}
	else if (inPacket && result.mIsDamaged)
	{
		samples = GuessSamples(*inPacket);
	}
	bool const isSilent = !mDecoder || result.mIsDamaged;
	float const* const decoded = isSilent ? nullptr : result.mSamples;
	PacketPlacer::Place const place =
		inPacket ? mPlacer.PlaceNext(*inPacket, samples) : mPlacer.PlaceRest(samples);
	std::int64_t const count = std::clamp<std::int64_t>(mPlan.mEnd - place.mPosition, 0, place.mCount);
	return {place.mPosition, count,
		decoded ? decoded + static_cast<std::size_t>(place.mSkipped) * mPlan.mChannels : nullptr,
		result.mIsDamaged};
}

std::int64_t MovieStream::CountSamples(AVPacket const& inPacket) const
{
	if (mPlan.mPacketSamples > 0)
	{
		return mPlan.mPacketSamples;
	}
	if (std::int64_t const frameSize = Libav().av_get_audio_frame_duration2(mParameters, inPacket.size);
		mPlan.mTimes == PacketTimes::kExact &&
		Libav().av_get_exact_bits_per_sample(mParameters->codec_id) > 0)
	{
		return std::max<std::int64_t>(frameSize, 0);
	}
	return GuessSamples(inPacket);
}

std::int64_t MovieStream::GuessSamples(AVPacket const& inPacket) const
{
	std::int64_t const duration =
		Libav().av_rescale_q(std::max<std::int64_t>(inPacket.duration, 0), mTimeBase, {1, mSampleRate});
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
