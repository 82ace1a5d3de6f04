#include "zorvcore/async/Future.h"

#include "Support/Common.h"

namespace FutureTest
{

using namespace zorvcore;
using namespace zorvcore::async;
using Clock = std::chrono::steady_clock;

std::string TextOf(std::exception_ptr const& inException)
{
	try
	{
		std::rethrow_exception(inException);
	}
	catch (std::exception const& exception)
	{
		return exception.what();
	}
}

struct Outcome
{
	char const* mName;
	void (*mAct)(Promise<int>&);
	FutureStatus mStatus;
	// Null for a value.
	char const* mText;
};
constexpr Outcome kOutcomes[] = {
	{"nothing yet", [](Promise<int>&) {}, FutureStatus::kNotReady, "Future: Not Ready"},
	{"value", [](Promise<int>& io) { io.SetValue(7); }, FutureStatus::kReady, nullptr},
	{"exception",
		[](Promise<int>& io) { io.SetException(std::make_exception_ptr(std::runtime_error("broken"))); },
		FutureStatus::kFailed, "broken"},
	{"cancelled by the worker", [](Promise<int>& io) { io.Cancel(); }, FutureStatus::kCancelled,
		"Future Is Cancelled"},
	{"cancelled by the reader", [](Promise<int>& io) { io.GetFuture().Cancel(); }, FutureStatus::kCancelled,
		"Future Is Cancelled"},
	{"worker gone", [](Promise<int>& io) { Promise<int>(std::move(io)); }, FutureStatus::kCancelled,
		"Future Is Cancelled"},
	{"the first outcome counts",
		[](Promise<int>& io)
		{
			EXPECT_TRUE(io.SetValue(7));
			EXPECT_FALSE(io.SetValue(8));
			EXPECT_FALSE(io.SetException(std::make_exception_ptr(1)));
			EXPECT_FALSE(io.Cancel());
		},
		FutureStatus::kReady, nullptr},
	{"too late for a value",
		[](Promise<int>& io)
		{
			EXPECT_TRUE(io.Cancel());
			EXPECT_TRUE(io.IsCancelled());
			EXPECT_FALSE(io.SetValue(7));
		},
		FutureStatus::kCancelled, "Future Is Cancelled"},
};

TEST(Future, ReportsItsOutcome)
{
	for (Outcome const& test : kOutcomes)
	{
		SCOPED_TRACE(test.mName);
		Promise<int> promise;
		Future<int> const future = promise.GetFuture();
		test.mAct(promise);
		EXPECT_EQ(future.GetStatus(), test.mStatus);
		EXPECT_EQ(WaitForUntypedUntil(future, Clock::now()), test.mStatus != FutureStatus::kNotReady);
		if (test.mText)
		{
			EXPECT_EQ(TextOf(future.GetException()), test.mText);
			EXPECT_ANY_THROW(future.Get());
			EXPECT_FALSE(ResultSucceeded(config::ExtractResultFromException(future.GetException())));
		}
		else
		{
			EXPECT_EQ(future.GetException(), nullptr);
			EXPECT_EQ(future.Get(), 7);
		}
	}
}

TEST(Future, TheWaitSeesWhatTheWorkerDidBefore)
{
	for (int round = 0; round < 200; ++round)
	{
		Promise<void> promise;
		UntypedFuture const future = promise.GetFuture();
		int work = 0;
		std::thread worker(
			[&work, promise = std::move(promise)]() mutable
			{
				work = 1;
				promise.SetValue();
			});
		EXPECT_TRUE(WaitForUntypedUntil(future, Clock::now() + std::chrono::hours(24)));
		EXPECT_EQ(work, 1);
		EXPECT_EQ(future.GetStatus(), FutureStatus::kReady);
		worker.join();
	}
}

} // namespace FutureTest
