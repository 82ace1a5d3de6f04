#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include "Support/AssertCapture.h"
#include "Support/Common.h"
#include "zorvcore/threads/CurrentThread.h"
#include "zorvcore/threads/Gate.h"

#include <filesystem>
#include <fstream>
#include <numeric>

#ifdef __linux__
#include <sched.h>
#endif

namespace ExecutorTest
{

using namespace zorvcore::threads;

// Where threads and their names are files.
#ifdef __linux__

bool ThreadExists(std::string const& inName)
{
	for (auto const& thread : std::filesystem::directory_iterator("/proc/self/task"))
	{
		std::string name;
		std::getline(std::ifstream(thread.path() / "comm"), name);
		if (name == inName)
		{
			return true;
		}
	}
	return false;
}

TEST(AsyncThreadedExecutor, TheThreadStartsWithTheFirstTaskUnderTheFirst15BytesOfTheName)
{
	auto const executor = CreateAsyncThreadedExecutor("SN::AudioPrefetch");
	EXPECT_FALSE(ThreadExists("SN::AudioPrefet"));
	bool existed = false;
	executor->Queue([&existed] { existed = ThreadExists("SN::AudioPrefet"); });
	executor->Stop();
	EXPECT_TRUE(existed);
}

#endif

TEST(AsyncThreadedExecutor, OneThreadRunsTasksInOrder)
{
	constexpr int kTasks = 1000;
	std::vector<int> order;
	auto const executor = CreateAsyncThreadedExecutor("order");
	for (int i = 0; i < kTasks; ++i)
	{
		EXPECT_TRUE(executor->Queue([&order, i] { order.push_back(i); }));
	}
	executor->Stop();
	std::vector<int> expected(kTasks);
	std::iota(expected.begin(), expected.end(), 0);
	EXPECT_EQ(order, expected);
}

TEST(AsyncThreadedExecutor, PausedTasksWaitForTheResume)
{
	auto const executor = CreateAsyncThreadedExecutor("pause");
	std::atomic<bool> resumed{false};
	bool ranAfterResume = false;
	executor->Queue([] {});
	executor->Pause();
	executor->Queue([&] { ranAfterResume = resumed; });
	// Time for an executor that ignores the pause to be caught.
	std::this_thread::sleep_for(std::chrono::milliseconds(20));
	resumed = true;
	executor->Resume();
	executor->Stop();
	EXPECT_TRUE(ranAfterResume);
}

TEST(AsyncThreadedExecutor, StopLiftsAPauseDrainsAndRefusesNewTasks)
{
	auto const executor = CreateAsyncThreadedExecutor("drain");
	auto const held = std::make_shared<int>();
	int ran = 0;
	executor->Pause();
	for (int i = 0; i < 100; ++i)
	{
		executor->Queue([&ran, held] { ++ran; });
	}
	executor->Stop();
	EXPECT_EQ(ran, 100);
	EXPECT_EQ(held.use_count(), 1) << "a finished task still holds what it captured";
	EXPECT_FALSE(executor->Queue([&ran] { ++ran; }));
	executor->Pause();
	executor->Stop();
	executor->Dispose();
	executor->Dispose();
	EXPECT_EQ(ran, 100);
}

TEST(AsyncThreadedExecutor, StopWaitsForTheTaskThatRuns)
{
	Gate running(false);
	bool finished = false;
	auto const executor = CreateAsyncThreadedExecutor("running");
	executor->Queue(
		[&]
		{
			running.Open();
			// Time for a stop that does not wait to be caught.
			std::this_thread::sleep_for(std::chrono::milliseconds(20));
			finished = true;
		});
	running.PassThrough();
	executor->Stop();
	EXPECT_TRUE(finished);
}

TEST(AsyncThreadedExecutor, DisposedInItsOwnTaskItStillRunsWhatWasQueued)
{
	Gate begin(false);
	Gate done(false);
	int ran = 0;
	auto executor = CreateAsyncThreadedExecutor("self");
	executor->Queue(
		[&]
		{
			begin.PassThrough();
			executor->Stop();
			EXPECT_FALSE(executor->Queue([] {}));
			executor->Dispose();
			executor.reset();
		});
	for (int i = 0; i < 10; ++i)
	{
		executor->Queue([&ran] { ++ran; });
	}
	executor->Queue([&done] { done.Open(); });
	begin.Open();
	done.PassThrough();
	EXPECT_EQ(ran, 10);
}

TEST(AsyncThreadedExecutor, ReleasingTheLastReferenceInATaskIsHarmless)
{
	Gate begin(false);
	Gate done(false);
	auto executor = CreateAsyncThreadedExecutor("last", 2);
	executor->Queue(
		[&begin, &done, self = executor]() mutable
		{
			begin.PassThrough();
			self.reset();
			done.Open();
		});
	executor.reset();
	begin.Open();
	done.PassThrough();
}

TEST(AsyncThreadedExecutor, ATaskThatThrowsIsReportedAndTheThreadGoesOn)
{
	AssertCapture const capture;
	auto const executor = CreateAsyncThreadedExecutor("thrower");
	std::thread::id first;
	std::thread::id second;
	executor->Queue(
		[&first]
		{
			first = std::this_thread::get_id();
			throw std::runtime_error("disk gone");
		});
	executor->Queue([] { throw 1; });
	executor->Queue([&second] { second = std::this_thread::get_id(); });
	executor->Stop();
	EXPECT_EQ(first, second);
	EXPECT_THAT(capture.GetMessages(), testing::ElementsAre("A task of \"thrower\" threw: disk gone",
										   "A task of \"thrower\" threw: unknown exception"));
}

TEST(AsyncThreadedExecutor, ManyThreadsMayQueueWhileOneDisposes)
{
	for (int round = 0; round < 50; ++round)
	{
		std::atomic<int> accepted{0};
		std::atomic<int> ran{0};
		auto const executor = CreateAsyncThreadedExecutor("race", 2);
		auto const produce = [&]
		{
			while (executor->Queue([&ran] { ++ran; }))
			{
				++accepted;
			}
		};
		std::thread first(produce);
		std::thread second(produce);
		while (ran < 20)
		{
			std::this_thread::yield();
		}
		std::thread disposer([&executor] { executor->Dispose(); });
		executor->Dispose();
		first.join();
		second.join();
		disposer.join();
		EXPECT_EQ(ran, accepted);
	}
}

TEST(AsyncThreadedExecutor, EachOfTwoDisposalsWaitsForTheThreadToEnd)
{
	static std::atomic<bool> sHasEnded;
	// Dies with its thread, after the last task.
	struct LateEnd
	{
		~LateEnd()
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(20));
			sHasEnded = true;
		}
	};
	for (int round = 0; round < 5; ++round)
	{
		sHasEnded = false;
		auto const executor = CreateAsyncThreadedExecutor("late");
		executor->Queue([] { [[maybe_unused]] thread_local LateEnd sLateEnd; });
		auto const dispose = [&executor]
		{
			executor->Dispose();
			EXPECT_TRUE(sHasEnded);
		};
		std::thread other(dispose);
		dispose();
		other.join();
	}
}

TEST(CurrentThread, OnlyTheFirstThreadIsTheMainThread)
{
	bool other = true;
	std::thread([&other] { other = CurrentThreadIsMainThread(); }).join();
	EXPECT_FALSE(other);
	EXPECT_TRUE(CurrentThreadIsMainThread());
}

#ifdef __linux__

TEST(CurrentThread, RealtimeIsThatThreadsAloneWherePermitted)
{
	int const before = sched_getscheduler(0);
	bool isPermitted = false;
	int policy = 0;
	int policyOfItsChild = 0;
	sched_param scheduling{};
	std::thread(
		[&]
		{
			isPermitted = SetCurrentThreadRealtime(5);
			policy = sched_getscheduler(0) & ~SCHED_RESET_ON_FORK;
			sched_getparam(0, &scheduling);
			std::thread([&] { policyOfItsChild = sched_getscheduler(0); }).join();
		})
		.join();
	EXPECT_EQ(policy, isPermitted ? SCHED_RR : before);
	EXPECT_EQ(isPermitted, scheduling.sched_priority > 0);
	EXPECT_LE(scheduling.sched_priority, 5);
	EXPECT_EQ(policyOfItsChild, before);
	EXPECT_EQ(sched_getscheduler(0), before);
}

#endif

} // namespace ExecutorTest
