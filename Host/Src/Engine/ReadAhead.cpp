#include "SonaroHost/Engine/ReadAhead.h"

#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/IAudioPrefetchNotify.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "zorvcore/utility/HighPrecisionTime.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <vector>

namespace SonaroHost
{

namespace Clock = zorvcore::utility::HighPrecisionTime;

// Hears the end of one batch of prefetch requests for those who wait for it.
//
// Threads  Any.
class PrefetchBatch final : public SN::Implements<PrefetchBatch, SN::AudioPrefetch::IAudioPrefetchNotify>
{
public:
	static constexpr SN::Identifier<PrefetchBatch> kIdentifier{0x5b0e6f3c94d7a218ull, 0xe31f80c26a97d54bull};

	struct End
	{
		// False when the batch was given up.
		bool mWasRead = false;
		// The time since this object was made.
		long long mElapsedNanos = 0;
	};

	// The stamp for the batch.
	unsigned long long GetTimeStamp() const { return mTimeStamp; }

	void Complete(int inResult) override
	{
		long long const elapsed =
			Clock::ConvertToNanos(Clock::GetCurrentTimeStamp()) - Clock::ConvertToNanos(mTimeStamp);
		{
			std::lock_guard const lock(mMutex);
			mEnd = End{inResult == SN::kSuccess, elapsed};
		}
		mHasEnded.notify_all();
	}

	End Wait()
	{
		std::unique_lock lock(mMutex);
		mHasEnded.wait(lock, [this] { return mEnd.has_value(); });
		return *mEnd;
	}

private:
	unsigned long long mTimeStamp = Clock::GetCurrentTimeStamp();
	std::mutex mMutex;
	std::condition_variable mHasEnded;
	std::optional<End> mEnd;
};

namespace
{

constexpr double kStretchSeconds = 2.0;

// A batch that was given up leaves the load low, so that the next try is read. More are needed only while others keep
// the queue busy.
constexpr int kMostWaits = 10;

std::int64_t ChooseStretchFrames(OfflineRange const& inRange)
{
	std::int64_t const wanted = SN::TickTime::FromSeconds(kStretchSeconds).ToFrame64(inRange.mFrameRate);
	std::int64_t const blocks = (wanted + inRange.mBlockFrames - 1) / inRange.mBlockFrames;
	return std::max<std::int64_t>(blocks, 1) * inRange.mBlockFrames;
}

} // namespace

ReadAhead::ReadAhead(SN::InterfaceRef<SN::IAudioGenerator> const& inGraph, OfflineRange const& inRange)
	: mGraph(inGraph),
	  mRange(inRange),
	  mStretchFrames(ChooseStretchFrames(inRange))
{
	SN::AudioPrefetch::NotifyPrefetchIntervalChanged(SN::TickTime(mStretchFrames, mRange.mFrameRate));
	SN::AudioPrefetch::Reset();
	Request(0);
}

ReadAhead::~ReadAhead()
{
	if (!mBatch)
	{
		return;
	}
	try
	{
		SN::AudioPrefetch::CancelAllPendingPrefetchRequests(SN::AudioPrefetch::PlaybackPriority);
	}
	catch (std::exception const&)
	{
		// The engine's module has stopped and given up the batch itself, or there is no memory for the mark;
		// the batch is then read for nothing.
	}
}

void ReadAhead::Advance(std::int64_t inFramesDone)
{
	if (inFramesDone % mStretchFrames == 0 && inFramesDone < mRange.mFrames)
	{
		WaitFor(inFramesDone);
		Request(inFramesDone + mStretchFrames);
	}
}

ReadAheadReport ReadAhead::GetReport()
{
	mReport.mWasBehind = SN::AudioPrefetch::WasPrefetchBehind() || mReport.mWasBehind;
	return mReport;
}

void ReadAhead::Request(std::int64_t inFramesDone)
{
	mBatch = {};
	if (inFramesDone >= mRange.mFrames)
	{
		return;
	}
	std::int64_t first = inFramesDone;
	std::int64_t end = std::min(inFramesDone + mStretchFrames, mRange.mFrames);
	if (mRange.mDirection == RenderDirection::kReverse)
	{
		first = mRange.mFrames - end;
		end = mRange.mFrames - inFramesDone;
	}
	first += mRange.mFirstFrame;
	end += mRange.mFirstFrame;
	std::vector<SN::AudioPrefetch::PrefetchRequest> requests;
	SN::PrefetchRequestAccumulator accumulator(
		SN::PrefetchRequestAccumulator::ExtendCapacity, nullptr, &requests);
	mGraph->AccumulatePrefetchRequests(
		{SN::TickTime(first, mRange.mFrameRate), SN::TickTime(end, mRange.mFrameRate)},
		SN::AsynchronousPrefetch, accumulator);
	mBatch = zorvcore::classref::MakeObject<PrefetchBatch>();
	SN::AudioPrefetch::PrefetchAudio(
		SN::AudioPrefetch::PlaybackPriority, requests, mBatch->GetTimeStamp(), mBatch);
}

void ReadAhead::WaitFor(std::int64_t inFramesDone)
{
	double const interval = SN::TickTime(mStretchFrames, mRange.mFrameRate).GetSeconds();
	for (int tries = 0; tries < kMostWaits; ++tries)
	{
		PrefetchBatch::End const end = mBatch->Wait();
		double const percent = static_cast<double>(end.mElapsedNanos) / (interval * 1e7);
		mReport.mDiskLoadPercent =
			std::max(mReport.mDiskLoadPercent, static_cast<int>(std::min(percent, 1e9)));
		if (end.mWasRead)
		{
			return;
		}
		++mReport.mGivenUp;
		Request(inFramesDone);
	}
}

} // namespace SonaroHost
