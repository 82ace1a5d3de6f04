#include "StreamScan.h"

#include "MovieInput.h"

#include <optional>

namespace SonaroHost
{

namespace
{

// One entry for so many packets: a seek passes over fewer, which costs next to nothing.
constexpr std::int64_t kPacketsOfEntry = 8;

// The packets that show whether one of loose times is off for good: a quarter of a second, and at least so many.
constexpr int kFollowingPart = 4;
constexpr std::size_t kLeastFollowing = 4;

} // namespace

StreamScan::StreamScan(MovieInput const& inInput, MovieIndex::Stream& ioPlan, MediaDamage& ioDamage)
	: mStream(
		  inInput, ioPlan, inInput.GetStream(ioPlan.mIndex).codecpar->sample_rate, MovieStream::Work::kPlace),
	  mPlan(ioPlan),
	  mDamage(ioDamage),
	  mSampleRate(inInput.GetStream(ioPlan.mIndex).codecpar->sample_rate)
{
}

void StreamScan::Take(AVPacket const* inPacket)
{
	if (mPlan.mTimes == PacketTimes::kLoose)
	{
		TakeLoose(inPacket);
		return;
	}
	if (inPacket && mStream.GetPlacer().IsAfterDelay() && mEnterable++ % kPacketsOfEntry == 0)
	{
		std::int64_t const time = inPacket->dts != AV_NOPTS_VALUE ? inPacket->dts : inPacket->pts;
		mPlan.mEntries.push_back(
			{mStream.GetPlacer().GetNext(), mStream.GetPlacer().GetShift(), time, inPacket->pos});
	}
	Note(mStream.Take(inPacket));
}

void StreamScan::TakeLoose(AVPacket const* inPacket)
{
	std::int64_t const wanted = mSampleRate / kFollowingPart;
	if (inPacket)
	{
		MovieStream::Measured const measured = mStream.Measure(*inPacket);
		mFollowing.push_back(measured.mContent);
		mIsFollowingDamaged.push_back(measured.mIsDamaged);
		mFollowingSamples += measured.mContent.mSamples;
	}
	while (
		!mFollowing.empty() && (!inPacket || (mFollowing.size() > kLeastFollowing &&
												 mFollowingSamples - mFollowing.front().mSamples >= wanted)))
	{
		PlaceFirst();
	}
	if (!inPacket)
	{
		Note(mStream.Take(nullptr));
	}
}

void StreamScan::PlaceFirst()
{
	MovieStream::Measured const measured{mFollowing.front(), mIsFollowingDamaged.front()};
	mFollowing.pop_front();
	mIsFollowingDamaged.pop_front();
	mFollowingSamples -= measured.mContent.mSamples;
	std::optional<std::int64_t> const jump = mStream.FindJump(measured, mFollowing);
	if (jump)
	{
		mPlan.mJumps.push_back({mPackets, *jump});
	}
	Note(mStream.Place(measured, jump));
}

void StreamScan::Note(MovieStream::Piece const& inPiece)
{
	++mPackets;
	std::vector<MovieIndex::Run>& runs = mPlan.mRuns;
	std::int64_t const last = runs.empty() ? 0 : runs.back().mEnd;
	if (inPiece.mIsDamaged)
	{
		mIsAnyDamaged = true;
		mDamage.Add({inPiece.mPosition, inPiece.mPosition + inPiece.mCount});
	}
	else if (inPiece.mCount > 0)
	{
		mIsAnyWhole = true;
		// What is missing after a damaged packet was lost with it.
		mDamage.Add({last, mIsAfterDamage ? inPiece.mPosition : last});
	}
	mIsAfterDamage = inPiece.mIsDamaged || (mIsAfterDamage && inPiece.mCount == 0);
	if (inPiece.mCount > 0 && !runs.empty() && last == inPiece.mPosition)
	{
		runs.back().mEnd += inPiece.mCount;
	}
	else if (inPiece.mCount > 0)
	{
		runs.push_back({inPiece.mPosition, inPiece.mPosition + inPiece.mCount});
	}
}

} // namespace SonaroHost
