#include "zorvcore/classref/AsyncDestruction.h"

#include "Support/AssertCapture.h"
#include "Support/Common.h"
#include "Support/Threads.h"

#include <cstdio>
#include <cstdlib>

namespace AsyncDestructionTest
{

using namespace zorvcore::classref;

class Traced : public virtual Unknown
{
public:
	explicit Traced(std::function<void()> inAtEnd)
		: mAtEnd(std::move(inAtEnd))
	{
	}
	~Traced() override { mAtEnd(); }

private:
	std::function<void()> mAtEnd;
};

TEST(AsyncDestruction, ObjectsEndOnAnotherThreadAndTheWaitSeesIt)
{
	std::thread::id destroyedOn;
	MakeAsyncDestroyedObject<Traced>([&destroyedOn] { destroyedOn = std::this_thread::get_id(); });
	WaitForAsyncDestruction();
	EXPECT_NE(destroyedOn, std::thread::id());
	EXPECT_NE(destroyedOn, std::this_thread::get_id());
}

TEST(AsyncDestruction, ManyThreadsHandOver)
{
	constexpr int kThreads = 4;
	constexpr int kObjects = 2000;
	std::atomic<int> destroyed{0};
	SN::Testing::RunOnThreads(kThreads,
		[&destroyed](unsigned)
		{
			for (int k = 0; k < kObjects; ++k)
			{
				MakeAsyncDestroyedObject<Traced>([&destroyed] { ++destroyed; });
			}
		});
	WaitForAsyncDestruction();
	EXPECT_EQ(destroyed, kThreads * kObjects);
}

TEST(AsyncDestruction, ADestructionThatThrowsIsReportedAndTheNextRuns)
{
	AssertCapture const capture;
	bool done = false;
	detail::CallAsyncDestructionHelper([] { throw std::runtime_error("stuck"); });
	detail::CallAsyncDestructionHelper([&done] { done = true; });
	WaitForAsyncDestruction();
	EXPECT_TRUE(done);
	EXPECT_THAT(capture.GetMessages(), testing::ElementsAre("stuck"));
}

// Runs when all statics of the process are gone, those of the libraries too.
bool sHandOverAtTheEnd = false;

void Print(std::string_view inText)
{
	std::fwrite(inText.data(), 1, inText.size(), stderr);
}

__attribute__((destructor)) void HandOverAtTheEnd()
{
	if (sHandOverAtTheEnd)
	{
		detail::CallAsyncDestructionHelper([] { Print("second"); });
	}
}

TEST(AsyncDestructionDeathTest, WhatIsPendingOrComesAtProcessExitIsDestroyed)
{
	testing::FLAGS_gtest_death_test_style = "threadsafe";
	EXPECT_EXIT(
		{
			sHandOverAtTheEnd = true;
			detail::CallAsyncDestructionHelper(
				[]
				{
					std::this_thread::sleep_for(std::chrono::milliseconds(50));
					Print("first ");
				});
			std::exit(0);
		},
		testing::ExitedWithCode(0), "first second");
}

} // namespace AsyncDestructionTest
