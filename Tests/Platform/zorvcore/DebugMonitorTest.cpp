#include "zorvcore/debug/DebugMonitor.h"

#include "Support/AssertCapture.h"
#include "Support/Common.h"
#include "zorvcore/threads/Gate.h"

#include <optional>

namespace DebugMonitorTest
{

using namespace zorvcore::debug;
using zorvcore::threads::Gate;

TEST(DebugMonitor, ShowsEnabledMonitorsByName)
{
	auto const writer = [](char const* inText)
	{ return [inText](DebugMonitorStream& ioStream) { ioStream << inText; }; };
	auto former = RegisterDebugMonitorCallback("b", writer("old"), true);
	auto const second = RegisterDebugMonitorCallback("b", writer("second"), true);
	auto const first = RegisterDebugMonitorCallback("a", writer("first"), true);
	auto const hidden = RegisterDebugMonitorCallback("c", writer("hidden"), false);
	// Takes off nothing but itself.
	former = {};
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
	{
		auto const last = RegisterDebugMonitorCallback("a", writer("last"), true);
		EXPECT_EQ(GetDebugMonitorTexts(), u"a\nlast\n");
	}
	EXPECT_EQ(GetDebugMonitorTexts(), u"");
}

void ExpectUnregisteringWaits(bool inIsByName)
{
	Gate running(false);
	Gate release(false);
	bool finished = false;
	std::optional registration = RegisterDebugMonitorCallback(
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
		[&]
		{
			if (inIsByName)
			{
				UnregisterDebugMonitorCallback("m");
			}
			registration.reset();
			EXPECT_TRUE(finished);
		});
	// Time for an owner that does not wait to be caught.
	std::this_thread::sleep_for(std::chrono::milliseconds(20));
	release.Open();
	viewer.join();
	owner.join();
}

TEST(DebugMonitor, UnregisteringWaitsForARunningWriter)
{
	ExpectUnregisteringWaits(true);
	ExpectUnregisteringWaits(false);
}

TEST(DebugMonitor, AWriterMayUnregisterItself)
{
	auto const registration = RegisterDebugMonitorCallback(
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

} // namespace DebugMonitorTest
