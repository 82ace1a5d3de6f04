#include "zorvcore/config/InitializerRegistrar.h"

#include "Support/AssertCapture.h"
#include "Support/Common.h"
#include "zorvcore/classref/AsyncDestruction.h"
#include "zorvcore/classref/Unknown.h"

namespace InitializerRegistrarTest
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

// Loads and unloads a module while it dies.
class Loader final : public zorvcore::classref::Unknown
{
public:
	~Loader() override { InitializerRegistrar const module = MakeNamed<'l'>(); }
};

TEST(InitializerRegistrar, WhatDiesInTheBackgroundAtAStopMayLoadModules)
{
	auto const stop = [] { zorvcore::classref::MakeAsyncDestroyedObject<Loader>(); };
	{
		InitializerRegistrar const module("outer", 0, nullptr, stop);
		StopRegisteredModules();
		// Not started while all modules are stopped.
		EXPECT_THAT(TakeEvents(), IsEmpty());
		StartRegisteredModules();
	}
	EXPECT_THAT(TakeEvents(), ElementsAre("start l", "stop l"));
}

} // namespace InitializerRegistrarTest
