#include "MovieDecoder.h"

#include "MovieInput.h"
#include "MovieStream.h"
#include "SonaroHost/Files/StandardStreams.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

// Samples of streams that wait for another one: 256 MiB. Files that are made to be played need a small part of it.
constexpr std::size_t kMostWaiting = std::size_t{1} << 26;

// How far back a second try to seek goes, in entries of the index; each further one goes four times as far.
constexpr std::size_t kFirstStepBack = 4;
constexpr std::size_t kLargestStepBack = 1024;

} // namespace

struct MovieDecoder::Lane
{
	Lane(MovieInput const& inInput, MovieIndex::Stream const& inPlan, int inSampleRate)
		: mPlan(&inPlan),
		  mStream(inInput, inPlan, inSampleRate, MovieStream::Work::kDecode),
		  mSamples(inPlan.mChannels)
	{
	}

	MovieIndex::Stream const* mPlan;
	MovieStream mStream;
	PlacedSamples mSamples;
	// The first run that is not read yet.
	std::size_t mRun = 0;
	// Whether it is known where the next packet stands.
	bool mIsPlaced = true;
};

MovieDecoder::MovieDecoder(std::filesystem::path inPath, std::shared_ptr<MovieIndex const> inIndex,
	std::shared_ptr<MediaDamage> inDamage)
	: mPath(std::move(inPath)),
	  mIndex(std::move(inIndex)),
	  mDamage(std::move(inDamage)),
	  mPacket(Own(Libav().av_packet_alloc()))
{
	Open();
}

MovieDecoder::~MovieDecoder() = default;

void MovieDecoder::Open()
{
	mLanes.clear();
	mInput = std::make_unique<MovieInput>(mPath, mIndex->mEdits);
	std::vector<unsigned> streams;
	for (MovieIndex::Stream const& plan : mIndex->mStreams)
	{
		if (plan.mIndex >= mInput->GetFormat().nb_streams)
		{
			RefuseInput(mPath, "has changed since it was opened first", "run the command again");
		}
		streams.push_back(plan.mIndex);
		mLanes.emplace_back(*mInput, plan, mIndex->mSampleRate);
	}
	mInput->Choose(streams);
	mIsAtEnd = false;
}

std::int64_t MovieDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	std::int64_t const count = std::clamp<std::int64_t>(mIndex->mFrames - mPosition, 0, inFrames);
	std::int64_t const end = mPosition + count;
	for (Lane& lane : mLanes)
	{
		while (!IsReady(lane, end) && ReadOn())
		{
		}
	}
	for (Lane& lane : mLanes)
	{
		lane.mSamples.Take(mPosition, outSamples + lane.mPlan->mFirstChannel, count, mIndex->mChannels);
	}
	mPosition = end;
	return count;
}

// Whether no packet to come holds anything before the end.
bool MovieDecoder::IsReady(Lane& ioLane, std::int64_t inEnd) const
{
	std::vector<MovieIndex::Run> const& runs = ioLane.mPlan->mRuns;
	std::int64_t const next =
		ioLane.mIsPlaced ? std::max(ioLane.mStream.GetPlacer().GetNext(), mPosition) : mPosition;
	while (ioLane.mRun < runs.size() && runs[ioLane.mRun].mEnd <= next)
	{
		++ioLane.mRun;
	}
	return mIsAtEnd || ioLane.mRun == runs.size() || runs[ioLane.mRun].mFirst >= inEnd ||
		   (ioLane.mIsPlaced && next >= inEnd);
}

bool MovieDecoder::ReadOn()
{
	if (mIsAtEnd)
	{
		return false;
	}
	if (!mInput->ReadPacket(*mPacket))
	{
		mIsAtEnd = true;
		for (Lane& lane : mLanes)
		{
			Take(lane, nullptr);
		}
		return false;
	}
	for (Lane& lane : mLanes)
	{
		if (static_cast<int>(lane.mPlan->mIndex) == mPacket->stream_index &&
			(lane.mIsPlaced || Enter(lane, *mPacket)))
		{
			Take(lane, mPacket.get());
		}
	}
	CheckWaiting();
	return true;
}

void MovieDecoder::Take(Lane& ioLane, AVPacket const* inPacket)
{
	if (!ioLane.mIsPlaced)
	{
		return;
	}
	MovieStream::Piece const piece = ioLane.mStream.Take(inPacket);
	if (piece.mIsDamaged)
	{
		mDamage->Add({piece.mPosition, piece.mPosition + piece.mCount});
	}
	std::int64_t const passed = std::clamp<std::int64_t>(mPosition - piece.mPosition, 0, piece.mCount);
	if (piece.mSamples)
	{
		ioLane.mSamples.Add(piece.mPosition + passed,
			piece.mSamples + static_cast<std::size_t>(passed) * ioLane.mPlan->mChannels,
			piece.mCount - passed);
	}
}

void MovieDecoder::CheckWaiting() const
{
	std::size_t waiting = 0;
	for (Lane const& lane : mLanes)
	{
		waiting += lane.mSamples.GetSize();
	}
	if (waiting > kMostWaiting)
	{
		RefuseInput(mPath, "has audio streams that are not interleaved, which takes too much memory",
			"choose one stream, or rewrite the file with a muxer that interleaves");
	}
}

bool MovieDecoder::SeekTo(std::int64_t inFrame)
{
	if (inFrame == mPosition)
	{
		return true;
	}
	mPosition = inFrame;
	for (std::size_t back = 0; back <= kLargestStepBack; back = back == 0 ? kFirstStepBack : 4 * back)
	{
		if (JumpBefore(inFrame, back))
		{
			return true;
		}
	}
	Open();
	return true;
}

bool MovieDecoder::JumpBefore(std::int64_t inFrame, std::size_t inBack)
{
	unsigned stream = 0;
	MovieIndex::Entry const* earliest = nullptr;
	for (Lane& lane : mLanes)
	{
		std::vector<MovieIndex::Entry> const& entries = lane.mPlan->mEntries;
		auto const after = std::upper_bound(entries.begin(), entries.end(), inFrame,
			[](std::int64_t inPosition, MovieIndex::Entry const& inEntry)
			{ return inPosition < inEntry.mNext; });
		auto const before = static_cast<std::size_t>(after - entries.begin());
		bool const isNeeded = !lane.mPlan->mRuns.empty() && lane.mPlan->mRuns.back().mEnd > inFrame;
		if (isNeeded && before <= inBack)
		{
			return false;
		}
		if (isNeeded)
		{
			MovieIndex::Entry const& entry = entries[before - 1 - inBack];
			bool const isEarlier =
				!earliest ||
				Libav().av_compare_ts(entry.mTimestamp, mInput->GetStream(lane.mPlan->mIndex).time_base,
					earliest->mTimestamp, mInput->GetStream(stream).time_base) < 0;
			stream = isEarlier ? lane.mPlan->mIndex : stream;
			earliest = isEarlier ? &entry : earliest;
		}
		lane.mSamples.Clear();
		lane.mRun = 0;
		lane.mIsPlaced = false;
	}
	mIsAtEnd = false;
	mIsTooLate = false;
	if (!earliest || !mInput->SeekTo(stream, earliest->mTimestamp))
	{
		return false;
	}
	auto const isMissing = [](Lane const& inLane) { return !inLane.mIsPlaced; };
	for (Lane& lane : mLanes)
	{
		// One that has nothing from here on is found at the end, which need not be waited for.
		while (!lane.mIsPlaced && !IsReady(lane, mIndex->mFrames) && !mIsTooLate && ReadOn())
		{
		}
	}
	return !mIsTooLate && (!mIsAtEnd || std::ranges::none_of(mLanes, isMissing));
}

bool MovieDecoder::Enter(Lane& ioLane, AVPacket const& inPacket)
{
	std::vector<MovieIndex::Entry> const& entries = ioLane.mPlan->mEntries;
	std::int64_t const time = inPacket.dts != AV_NOPTS_VALUE ? inPacket.dts : inPacket.pts;
	auto const found = std::lower_bound(entries.begin(), entries.end(), time,
		[](MovieIndex::Entry const& inEntry, std::int64_t inTime) { return inEntry.mTimestamp < inTime; });
	if (found == entries.end() || found->mTimestamp != time || found->mByte != inPacket.pos)
	{
		return false;
	}
	ioLane.mStream.GoOnAt(*found);
	ioLane.mIsPlaced = true;
	mIsTooLate = mIsTooLate || found->mNext > std::max(mPosition, ioLane.mPlan->mRuns.front().mFirst);
	return true;
}

} // namespace SonaroHost
