#include "Support/AssertCapture.h"
#include "Support/Common.h"
#include "Support/Threads.h"
#include "zorvcore/threads/AtomicIntegral.h"
#include "zorvcore/threads/Gate.h"
#include "zorvcore/threads/RecursiveMutex.h"

#include <type_traits>

namespace MutexAndGateTest
{

using namespace zorvcore::threads;
using Clock = std::chrono::steady_clock;

static_assert(std::is_same_v<AtomicIntegral<int>, AtomicIntegral<int, 0>>);

TEST(RecursiveMutex, KeepsThreadsApartThroughNestedLocks)
{
	constexpr int kThreads = 4;
	constexpr int kSteps = 5000;
	RecursiveMutex mutex("counter");
	int counter = 0;
	SN::Testing::RunOnThreads(kThreads,
		[&](unsigned)
		{
			for (int k = 0; k < kSteps; ++k)
			{
				ScopedRecursiveLock const outer(mutex, "outer");
				ScopedRecursiveLock const inner(mutex, "inner");
				++counter;
			}
		});
	EXPECT_EQ(counter, kThreads * kSteps);
}

TEST(RecursiveMutex, ALongWaitIsReportedOnceAndGoesOn)
{
	RecursiveMutex mutex("store");
	Gate reported(false);
	std::vector<std::string> messages;
	auto const former = zorvcore::debug::SetAssertHandler(
		[&](zorvcore::debug::AssertReport const& inReport)
		{
			messages.emplace_back(inReport.mMessage);
			reported.Open();
		});
	bool released = false;
	mutex.Lock("the owner", 60000);
	mutex.Lock("the owner again", 60000);
	std::thread waiter(
		[&]
		{
			ScopedRecursiveLock const lock(mutex, "the waiter", 1);
			EXPECT_TRUE(released);
		});
	reported.PassThrough();
	mutex.Unlock();
	released = true;
	mutex.Unlock();
	waiter.join();
	zorvcore::debug::SetAssertHandler(former);
	EXPECT_THAT(
		messages, testing::ElementsAre(
					  "Suspected deadlock on \"store\": held by \"the owner\", awaited by \"the waiter\""));
}

TEST(Gate, LetsThroughWhileOpenOnly)
{
	Gate gate(false);
	EXPECT_FALSE(gate.PassThroughUntil(Clock::now()));
	EXPECT_FALSE(gate.PassThroughUntil(Clock::time_point::min()));
	gate.Open();
	EXPECT_TRUE(gate.PassThroughUntil(Clock::now()));
	EXPECT_TRUE(gate.PassThroughUntil(Clock::time_point::min()));
	gate.PassThrough();
	gate.Close();
	EXPECT_FALSE(gate.PassThroughUntil(Clock::now()));
}

TEST(Gate, OpeningWakesAllWaitersAndTheLastMayDestroyIt)
{
	for (int round = 0; round < 200; ++round)
	{
		auto gate = std::make_shared<Gate>(false);
		std::weak_ptr<Gate> const watched = gate;
		auto const wait = [](std::shared_ptr<Gate> inGate)
		{ EXPECT_TRUE(inGate->PassThroughUntil(Clock::time_point::max())); };
		std::thread first(wait, gate);
		std::thread second(wait, gate);
		Gate* const opened = gate.get();
		std::thread opener([opened] { opened->Open(); });
		opener.join();
		gate.reset();
		first.join();
		second.join();
		EXPECT_TRUE(watched.expired());
	}
}

TEST(AtomicIntegral, CountsUnderThreadsFromItsDefault)
{
	constexpr int kSteps = 10000;
	AtomicIntegral<int, 5> count;
	SN::Testing::RunOnThreads(2,
		[&count](unsigned)
		{
			for (int i = 0; i < kSteps; ++i)
			{
				count.Add(2);
				count.Add(-1);
			}
		});
	EXPECT_EQ(count.Exchange(1), 5 + 2 * kSteps);
	EXPECT_EQ(count.Add(3), 4);
	count.Set(9);
	EXPECT_EQ(count.Get(), 9);
}

} // namespace MutexAndGateTest
