#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/config/Exceptions.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace zorvcore::async
{

// The outcome was asked for before there is one: "Future: Not Ready", code eWaitFailed.
class ZORV_API FutureNotReadyException : public config::zorv_exception
{
public:
	FutureNotReadyException();
};

// There will be no outcome: "Future Is Cancelled", code eWaitFailed.
class ZORV_API FutureIsCancelledException : public config::zorv_exception
{
public:
	FutureIsCancelledException();
};

enum class FutureStatus
{
	kNotReady,
	kReady,
	kFailed,
	kCancelled
};

namespace detail
{

// What a promise and its futures share. The status leaves kNotReady once and then stays.
class ZORV_API FutureState
{
public:
	virtual ~FutureState();

	FutureStatus GetStatus() const;
	std::exception_ptr GetException() const;
	bool WaitUntil(std::chrono::steady_clock::time_point inTime) const;

	// Each is false, and changes nothing, when there is an outcome already.
	bool Fail(std::exception_ptr inException);
	bool Cancel();

protected:
	// Calls inStore under the lock if there is no outcome yet, and is ready then.
	template <class Store>
	bool Complete(Store&& inStore)
	{
		std::lock_guard const lock(mMutex);
		if (mStatus != FutureStatus::kNotReady)
		{
			return false;
		}
		inStore();
		SetStatus(FutureStatus::kReady);
		return true;
	}

private:
	void SetStatus(FutureStatus inStatus);

	mutable std::mutex mMutex;
	mutable std::condition_variable mChanged;
	FutureStatus mStatus = FutureStatus::kNotReady;
	std::exception_ptr mException;
};

template <class T>
class FutureValue final : public FutureState
{
public:
	template <class... Args>
	bool SetValue(Args&&... inArgs)
	{
		return Complete([&] { mValue.emplace(std::forward<Args>(inArgs)...); });
	}

	// Only when ready.
	T const& GetValue() const { return *mValue; }

private:
	std::optional<T> mValue;
};

} // namespace detail

// The outcome of work under way elsewhere, whatever its type: a value, an exception, or none because it was
// cancelled. Copies share the outcome. Any thread. One that was default-made counts as cancelled.
class ZORV_API UntypedFuture
{
public:
	UntypedFuture() = default;
	explicit UntypedFuture(std::shared_ptr<detail::FutureState> inState)
		: mState(std::move(inState))
	{
	}

	FutureStatus GetStatus() const;

	// What stands in the way of a value: the exception of the work, FutureNotReadyException,
	// FutureIsCancelledException, or null when ready.
	std::exception_ptr GetException() const;

	// Lets the worker know that nobody wants the outcome any more; does nothing when there is one already.
	void Cancel();

protected:
	detail::FutureState* GetState() const { return mState.get(); }

private:
	friend ZORV_API bool WaitForUntypedUntil(
		UntypedFuture const& inFuture, std::chrono::steady_clock::time_point inTime);

	std::shared_ptr<detail::FutureState> mState;
};

// Waits for the outcome, of whatever kind. False when the time came first.
ZORV_API bool WaitForUntypedUntil(
	UntypedFuture const& inFuture, std::chrono::steady_clock::time_point inTime);

template <class T>
class Future : public UntypedFuture
{
public:
	Future() = default;
	explicit Future(std::shared_ptr<detail::FutureValue<T>> inState)
		: UntypedFuture(std::move(inState))
	{
	}

	// The value; rethrows GetException when there is none. Does not wait.
	T const& Get() const
	{
		ThrowUnlessReady();
		return static_cast<detail::FutureValue<T>*>(this->GetState())->GetValue();
	}

protected:
	void ThrowUnlessReady() const
	{
		if (std::exception_ptr const exception = GetException())
		{
			std::rethrow_exception(exception);
		}
	}
};

// The outcome of work that gives no value.
template <>
class Future<void> : public Future<std::monostate>
{
public:
	using Future<std::monostate>::Future;

	void Get() const { ThrowUnlessReady(); }
};

// The worker's end. Gone without an outcome, it cancels. Any thread; the first outcome counts, and the
// setters return whether theirs was it.
template <class T>
class Promise
{
public:
	Promise() = default;
	Promise(Promise&&) noexcept = default;
	Promise& operator=(Promise&& ioOther) noexcept
	{
		std::swap(mState, ioOther.mState);
		return *this;
	}
	~Promise()
	{
		if (mState)
		{
			mState->Cancel();
		}
	}

	Future<T> GetFuture() const { return Future<T>(mState); }

	// The value, or nothing for void.
	template <class... Args>
	bool SetValue(Args&&... inArgs)
	{
		return mState->SetValue(std::forward<Args>(inArgs)...);
	}
	bool SetException(std::exception_ptr inException) { return mState->Fail(std::move(inException)); }
	bool Cancel() { return mState->Cancel(); }

	// Whether somebody cancelled: the work may end early.
	bool IsCancelled() const { return mState->GetStatus() == FutureStatus::kCancelled; }

private:
	using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

	// Null when moved from.
	std::shared_ptr<detail::FutureValue<Value>> mState = std::make_shared<detail::FutureValue<Value>>();
};

} // namespace zorvcore::async
