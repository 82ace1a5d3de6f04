#include "zorvcore/debug/DebugMonitor.h"

#include "AssertCapture.h"
#include "zorvcore/threads/Gate.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

namespace
{

using namespace zorvcore::debug;
using zorvcore::threads::Gate;

TEST(DebugMonitor, ShowsEnabledMonitorsByName)
{
	auto const writer = [](char const* inText)
	{ return [inText](DebugMonitorStream& ioStream) { ioStream << inText; }; };
	RegisterDebugMonitorCallback("b", writer("old"), true);
	RegisterDebugMonitorCallback("b", writer("second"), true);
	RegisterDebugMonitorCallback("a", writer("first"), true);
	RegisterDebugMonitorCallback("c", writer("hidden"), false);
	EXPECT_THAT(GetDebugMonitorNames(), testing::ElementsAre("a", "b", "c"));
	EXPECT_EQ(GetDebugMonitorTexts(), u"a\nfirst\nb\nsecond\n");
	SetDebugMonitorEnabled("c", true);
	SetDebugMonitorEnabled("a", false);
	EXPECT_EQ(GetDebugMonitorTexts(), u"b\nsecond\nc\nhidden\n");
	for (std::string const& name : GetDebugMonitorNames())
	{
		UnregisterDebugMonitorCallback(name);
	}
	EXPECT_EQ(GetDebugMonitorTexts(), u"");
}

TEST(DebugMonitor, UnregisteringWaitsForARunningWriter)
{
	Gate running(false);
	Gate release(false);
	bool finished = false;
	RegisterDebugMonitorCallback(
		"m",
		[&](DebugMonitorStream&)
		{
			running.Open();
			release.PassThrough();
			finished = true;
		},
		true);
	std::thread viewer([] { GetDebugMonitorText("m"); });
	running.PassThrough();
	std::thread owner(
		[&finished]
		{
			UnregisterDebugMonitorCallback("m");
			EXPECT_TRUE(finished);
		});
	// Time for an owner that does not wait to be caught.
	std::this_thread::sleep_for(std::chrono::milliseconds(20));
	release.Open();
	viewer.join();
	owner.join();
}

TEST(DebugMonitor, AWriterMayUnregisterItself)
{
	RegisterDebugMonitorCallback(
		"m",
		[](DebugMonitorStream& ioStream)
		{
			UnregisterDebugMonitorCallback("m");
			ioStream << "last words";
		},
		true);
	EXPECT_EQ(GetDebugMonitorText("m"), u"last words");
	EXPECT_TRUE(GetDebugMonitorNames().empty());
}

} // namespace
