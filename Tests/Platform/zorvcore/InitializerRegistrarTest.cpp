#include "zorvcore/config/InitializerRegistrar.h"

#include "AssertCapture.h"
#include "zorvcore/classref/AsyncDestruction.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <thread>

namespace
{

using namespace zorvcore::config;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> sEvents;

std::vector<std::string> TakeEvents()
{
	return std::exchange(sEvents, {});
}

template <char Name>
bool StartNamed()
{
	sEvents.push_back(std::string("start ") + Name);
	return true;
}

template <char Name>
void StopNamed()
{
	sEvents.push_back(std::string("stop ") + Name);
}

template <char Name>
InitializerRegistrar MakeNamed()
{
	constexpr char kName[] = {Name, '\0'};
	return InitializerRegistrar(kName, 0, &StartNamed<Name>, &StopNamed<Name>);
}

TEST(InitializerRegistrar, ModulesStopInReverseOrderAndStartAgainInOrder)
{
	{
		InitializerRegistrar const a = MakeNamed<'a'>();
		InitializerRegistrar const b = MakeNamed<'b'>();
		EXPECT_THAT(TakeEvents(), ElementsAre("start a", "start b"));
		StopRegisteredModules();
		StopRegisteredModules();
		EXPECT_THAT(TakeEvents(), ElementsAre("stop b", "stop a"));
		StartRegisteredModules();
		StartRegisteredModules();
		EXPECT_THAT(TakeEvents(), ElementsAre("start a", "start b"));
	}
	EXPECT_THAT(TakeEvents(), ElementsAre("stop b", "stop a"));
}

TEST(InitializerRegistrar, AModuleThatRegistersWhileStoppedWaitsForTheStart)
{
	StopRegisteredModules();
	{
		InitializerRegistrar const a = MakeNamed<'a'>();
		EXPECT_FALSE(a.IsStarted());
		{
			InitializerRegistrar const gone = MakeNamed<'g'>();
		}
		EXPECT_THAT(TakeEvents(), IsEmpty());
		StartRegisteredModules();
		EXPECT_TRUE(a.IsStarted());
	}
	EXPECT_THAT(TakeEvents(), ElementsAre("start a", "stop a"));
}

TEST(InitializerRegistrar, AFailedStartIsReportedAndNeverStopped)
{
	struct Case
	{
		char const* mName;
		InitializerRegistrar::StartFunction mStart;
		char const* mReport;
	};
	Case const cases[] = {
		{"gives false", [] { return false; }, "the start failed"},
		{"throws", []() -> bool { throw std::runtime_error("no device"); }, "no device"},
		{"throws what is no exception", []() -> bool { throw 1; }, "unknown exception"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		AssertCapture const capture;
		{
			InitializerRegistrar const module("m", 0, test.mStart, &StopNamed<'m'>);
			EXPECT_FALSE(module.IsStarted());
		}
		EXPECT_THAT(capture.GetMessages(), ElementsAre(HasSubstr(test.mReport)));
		EXPECT_THAT(TakeEvents(), IsEmpty());
	}
}

std::unique_ptr<InitializerRegistrar> sNested;

TEST(InitializerRegistrar, AStartMayRegisterAFurtherModule)
{
	{
		InitializerRegistrar const outer(
			"outer", 0,
			[]
			{
				sNested = std::make_unique<InitializerRegistrar>("n", 0, &StartNamed<'n'>, &StopNamed<'n'>);
				return StartNamed<'o'>();
			},
			[]
			{
				StopNamed<'o'>();
				sNested.reset();
			});
		EXPECT_THAT(TakeEvents(), ElementsAre("start n", "start o"));
	}
	EXPECT_THAT(TakeEvents(), ElementsAre("stop o", "stop n"));
}

bool sDestroyed = false;

void StopAndLeaveADestruction()
{
	zorvcore::classref::detail::CallAsyncDestructionHelper(
		[]
		{
			// Time for a stop that does not wait to be caught.
			std::this_thread::sleep_for(std::chrono::milliseconds(20));
			sDestroyed = true;
		});
}

TEST(InitializerRegistrar, AStopEndsWithNothingLeftToDestroy)
{
	{
		InitializerRegistrar const module("m", 0, nullptr, &StopAndLeaveADestruction);
	}
	EXPECT_TRUE(sDestroyed);
}

} // namespace
