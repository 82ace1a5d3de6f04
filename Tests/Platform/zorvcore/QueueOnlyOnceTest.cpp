#include "zorvcore/threads/QueueOnlyOnce.h"

#include "zorvcore/threads/Gate.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace
{

using namespace zorvcore::threads;

TEST(QueueOnlyOnce, TriggersWhileQueuedCollapse)
{
	int runs = 0;
	auto const executor = CreateAsyncThreadedExecutor("once");
	auto const trigger = QueueOnlyOnce::Create([&runs] { ++runs; }, executor);
	executor->Pause();
	for (int i = 0; i < 5; ++i)
	{
		EXPECT_TRUE(trigger->Queue());
	}
	executor->Stop();
	EXPECT_EQ(runs, 1);
	EXPECT_FALSE(trigger->Queue());
	EXPECT_FALSE(trigger->Queue());
}

TEST(QueueOnlyOnce, ATriggerDuringTheRunQueuesItAgain)
{
	int runs = 0;
	Gate running(false);
	Gate triggered(false);
	auto const executor = CreateAsyncThreadedExecutor("once");
	auto const trigger = QueueOnlyOnce::Create(
		[&]
		{
			++runs;
			running.Open();
			triggered.PassThrough();
		},
		executor);
	trigger->Queue();
	running.PassThrough();
	trigger->Queue();
	trigger->Queue();
	triggered.Open();
	executor->Stop();
	EXPECT_EQ(runs, 2);
}

// The service pattern: producers add work and trigger; a run takes all that it finds. Nothing may be left
// over when the last trigger has been served.
TEST(QueueOnlyOnce, NoWorkIsLeftBehindUnderStress)
{
	constexpr unsigned kProducers = 3;
	constexpr unsigned kItems = 5000;
	std::mutex mutex;
	unsigned waiting = 0;
	unsigned taken = 0;
	auto const executor = CreateAsyncThreadedExecutor("stress");
	auto const trigger = QueueOnlyOnce::Create(
		[&]
		{
			std::unique_lock lock(mutex);
			taken += std::exchange(waiting, 0);
		},
		executor);
	std::vector<std::thread> producers;
	for (unsigned i = 0; i < kProducers; ++i)
	{
		producers.emplace_back(
			[&]
			{
				for (unsigned k = 0; k < kItems; ++k)
				{
					{
						std::lock_guard const lock(mutex);
						++waiting;
					}
					trigger->Queue();
				}
			});
	}
	for (std::thread& producer : producers)
	{
		producer.join();
	}
	executor->Stop();
	EXPECT_EQ(waiting, 0u);
	EXPECT_EQ(taken, kProducers * kItems);
}

} // namespace
