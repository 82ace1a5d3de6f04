#include "PrefetchBatch.h"

#include "zorvcore/utility/HighPrecisionTime.h"

namespace SonaroHost
{

namespace Clock = zorvcore::utility::HighPrecisionTime;

PrefetchBatch::PrefetchBatch()
	: mTimeStamp(Clock::GetCurrentTimeStamp())
{
}

void PrefetchBatch::Complete(int inResult)
{
	long long const elapsed =
		Clock::ConvertToNanos(Clock::GetCurrentTimeStamp()) - Clock::ConvertToNanos(mTimeStamp);
	{
		std::lock_guard const lock(mMutex);
		mEnd = End{inResult == SN::kSuccess, elapsed};
	}
	mHasEnded.notify_all();
}

PrefetchBatch::End PrefetchBatch::Wait()
{
	std::unique_lock lock(mMutex);
	mHasEnded.wait(lock, [this] { return mEnd.has_value(); });
	return *mEnd;
}

} // namespace SonaroHost
