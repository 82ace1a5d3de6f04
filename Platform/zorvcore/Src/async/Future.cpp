#include "zorvcore/async/Future.h"

#include "../threads/WaitUntil.h"

namespace zorvcore::async
{

FutureNotReadyException::FutureNotReadyException()
	: zorv_exception({}, 0, eWaitFailed, "Future: Not Ready")
{
}

FutureIsCancelledException::FutureIsCancelledException()
	: zorv_exception({}, 0, eWaitFailed, "Future Is Cancelled")
{
}

detail::FutureState::~FutureState() = default;

FutureStatus detail::FutureState::GetStatus() const
{
	std::lock_guard const lock(mMutex);
	return mStatus;
}

std::exception_ptr detail::FutureState::GetException() const
{
	std::lock_guard const lock(mMutex);
	switch (mStatus)
	{
	case FutureStatus::kNotReady:
		return std::make_exception_ptr(FutureNotReadyException());
	case FutureStatus::kReady:
		return nullptr;
	case FutureStatus::kFailed:
		return mException;
	case FutureStatus::kCancelled:
		break;
	}
	return std::make_exception_ptr(FutureIsCancelledException());
}

bool detail::FutureState::WaitUntil(std::chrono::steady_clock::time_point inTime) const
{
	std::unique_lock lock(mMutex);
	return threads::WaitUntil(mChanged, lock, inTime, [this] { return mStatus != FutureStatus::kNotReady; });
}

bool detail::FutureState::Fail(std::exception_ptr inException)
{
	std::lock_guard const lock(mMutex);
	if (mStatus != FutureStatus::kNotReady)
	{
		return false;
	}
	mException = std::move(inException);
	SetStatus(FutureStatus::kFailed);
	return true;
}

bool detail::FutureState::Cancel()
{
	std::lock_guard const lock(mMutex);
	if (mStatus != FutureStatus::kNotReady)
	{
		return false;
	}
	SetStatus(FutureStatus::kCancelled);
	return true;
}

void detail::FutureState::SetStatus(FutureStatus inStatus)
{
	mStatus = inStatus;
	mChanged.notify_all();
}

FutureStatus UntypedFuture::GetStatus() const
{
	return mState ? mState->GetStatus() : FutureStatus::kCancelled;
}

std::exception_ptr UntypedFuture::GetException() const
{
	return mState ? mState->GetException() : std::make_exception_ptr(FutureIsCancelledException());
}

void UntypedFuture::Cancel()
{
	if (mState)
	{
		mState->Cancel();
	}
}

bool WaitForUntypedUntil(UntypedFuture const& inFuture, std::chrono::steady_clock::time_point inTime)
{
	return !inFuture.mState || inFuture.mState->WaitUntil(inTime);
}

} // namespace zorvcore::async
