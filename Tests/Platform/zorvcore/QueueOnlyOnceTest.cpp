#include "zorvcore/threads/QueueOnlyOnce.h"

#include "Support/Common.h"
#include "Support/Threads.h"
#include "zorvcore/threads/Gate.h"

#include <future>

namespace QueueOnlyOnceTest
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

// Refuses a task, but not before somebody else has had the time to trigger it too.
class RefusingExecutor final : public AsyncThreadedExecutor
{
public:
	bool Queue(std::function<void()>) override
	{
		if (mMeanwhile)
		{
			mResult = std::async(std::launch::async, std::exchange(mMeanwhile, nullptr));
			mResult.wait_for(std::chrono::milliseconds(100));
		}
		return false;
	}
	void Pause() override {}
	void Resume() override {}
	void Stop() override {}
	void Dispose() override {}

	std::function<bool()> mMeanwhile;
	std::future<bool> mResult;
};

TEST(QueueOnlyOnce, NoTriggerCountsOnOneThatIsRefused)
{
	auto const executor = std::make_shared<RefusingExecutor>();
	auto const trigger = QueueOnlyOnce::Create([] { FAIL(); }, executor);
	executor->mMeanwhile = [&] { return trigger->Queue(); };
	EXPECT_FALSE(trigger->Queue());
	EXPECT_FALSE(executor->mResult.get());
}

// The service pattern: producers add work and trigger; a run takes all that it finds. Nothing may be left
// over when the last trigger has been served.
TEST(QueueOnlyOnce, NoWorkIsLeftOverUnderStress)
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
	SN::Testing::RunOnThreads(kProducers,
		[&](unsigned)
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
	executor->Stop();
	EXPECT_EQ(waiting, 0u);
	EXPECT_EQ(taken, kProducers * kItems);
}

} // namespace QueueOnlyOnceTest
