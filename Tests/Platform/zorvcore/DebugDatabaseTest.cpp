#include "zorvcore/debug/DebugDatabase.h"

#include "Support/AssertCapture.h"
#include "Support/Common.h"

#include <cstdlib>

namespace DebugDatabaseTest
{

using namespace zorvcore::debug;

TEST(DebugDatabase, ReadsEntriesAndReportsMalformedPieces)
{
	struct Case
	{
		char const* mText;
		char const* mValueOfA;
		char const* mValueOfB;
		std::size_t mReports;
	};
	constexpr Case kCases[] = {
		{"", "-", "-", 0},
		{"a=1", "1", "-", 0},
		{"a=1;b=2", "1", "2", 0},
		{"a=1;b=2;", "1", "2", 0},
		{";;a=1;;", "1", "-", 0},
		{" a = 1 2 ; b=", "1 2", "", 0},
		{"a=b=2", "b=2", "-", 0},
		{"a=1;a=2", "2", "-", 0},
		{"a;b=2", "-", "2", 1},
		{"=1; =2;b=3;x", "-", "3", 3},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mText);
		AssertCapture const capture;
		DebugDatabase const database(test.mText);
		EXPECT_EQ(database.GetEntry("a", "-"), test.mValueOfA);
		EXPECT_EQ(database.GetEntry("b", "-"), test.mValueOfB);
		EXPECT_EQ(database.HasEntry("b"), std::string_view(test.mValueOfB) != "-");
		EXPECT_EQ(capture.GetMessages().size(), test.mReports);
	}
}

TEST(DebugDatabase, TheCounterMovesWithChangesAlone)
{
	DebugDatabase database("a=1");
	auto const start = database.GetChangeCounter();
	database.RemoveEntry("b");
	EXPECT_FALSE(database.HasEntry("b"));
	EXPECT_EQ(database.GetChangeCounter(), start);
	database.SetEntry("b", "2");
	auto const afterSet = database.GetChangeCounter();
	EXPECT_NE(afterSet, start);
	database.RemoveEntry("b");
	EXPECT_NE(database.GetChangeCounter(), afterSet);
	EXPECT_FALSE(database.HasEntry("b"));
}

TEST(CachedDebugInteger, FollowsTheDatabase)
{
	struct Case
	{
		char const* mText;
		std::int32_t mExpected;
	};
	constexpr std::int32_t kDefault = 110;
	constexpr Case kCases[] = {
		{"0", 0},
		{"-5", -5},
		{"2147483647", 2147483647},
		{"99999999999999999999", 2147483647},
		{"-99999999999999999999", -2147483647 - 1},
		{"", kDefault},
		{"12x", kDefault},
		{"x", kDefault},
		{"-", kDefault},
	};
	DebugDatabase database("");
	CachedDebugInteger const value("key", kDefault, database);
	EXPECT_EQ(value.Get(), kDefault);
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mText);
		database.SetEntry("key", test.mText);
		EXPECT_EQ(value.Get(), test.mExpected);
		EXPECT_EQ(value.Get(), test.mExpected);
	}
	database.SetEntry("key", "7");
	database.RemoveEntry("key");
	EXPECT_EQ(value.Get(), kDefault);
}

TEST(CachedDebugInteger, NoReaderIsLeftWithAnOldValue)
{
	constexpr int kChanges = 3000;
	DebugDatabase database("");
	CachedDebugInteger const value("key", 0, database);
	std::atomic<bool> done{false};
	auto const read = [&]
	{
		while (!done)
		{
			value.Get();
		}
	};
	std::thread first(read);
	std::thread second(read);
	for (int i = 1; i <= kChanges; ++i)
	{
		database.SetEntry("key", std::to_string(i));
		EXPECT_EQ(value.Get(), i);
	}
	done = true;
	first.join();
	second.join();
	EXPECT_EQ(value.Get(), kChanges);
}

void SetEnvironment(char const* inName, char const* inValue)
{
#ifdef _WIN32
	_putenv_s(inName, inValue);
#else
	setenv(inName, inValue, 1);
#endif
}

TEST(DebugDatabaseDeathTest, TheProcessWideOneComesFromTheEnvironment)
{
	testing::FLAGS_gtest_death_test_style = "threadsafe";
	EXPECT_EXIT(
		{
			SetEnvironment("ZORV_DEBUG_DATABASE", "first=1;second=two");
			std::exit(DebugDatabase::Instance().GetEntry("second", "") == "two" ? 0 : 1);
		},
		testing::ExitedWithCode(0), "");
}

} // namespace DebugDatabaseTest
