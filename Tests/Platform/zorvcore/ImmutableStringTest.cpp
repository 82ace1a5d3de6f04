#include "zorvcore/utility/ImmutableString.h"

#include "Support/Common.h"
#include "Support/Threads.h"

#include <unordered_set>

namespace ImmutableStringTest
{

using zorvcore::utility::ImmutableString;

TEST(ImmutableString, EqualTextsAreOneContent)
{
	std::string const text = "AudioClipRenderer";
	ImmutableString const a(text);
	ImmutableString const b(std::string(text).c_str());
	ImmutableString const other("AudioClipTrackRenderer");
	EXPECT_EQ(a, b);
	EXPECT_EQ(a.GetCString(), b.GetCString());
	EXPECT_NE(a, other);
	EXPECT_FALSE(a < b || b < a);
	EXPECT_NE(a < other, other < a);
	EXPECT_EQ(std::hash<ImmutableString>()(a), std::hash<ImmutableString>()(b));
	EXPECT_EQ((std::set<ImmutableString>{a, b, other, ImmutableString()}.size()), 3u);
	EXPECT_EQ((std::unordered_set<ImmutableString>{a, b, other, ImmutableString()}.size()), 3u);
}

TEST(ImmutableString, CopiesOutliveTheirOriginals)
{
	ImmutableString survivor;
	{
		ImmutableString original("short-lived");
		ImmutableString copy = original;
		ImmutableString moved = std::move(original);
		EXPECT_TRUE(original.IsEmpty()); // NOLINT(bugprone-use-after-move): its state is the promise.
		EXPECT_EQ(copy, moved);
		survivor = copy;
		ImmutableString& self = survivor;
		survivor = self;
		survivor = std::move(self);
	}
	EXPECT_EQ(survivor.GetText(), "short-lived");
	EXPECT_EQ(survivor, ImmutableString("short-lived"));
	survivor = ImmutableString();
	EXPECT_TRUE(survivor.IsEmpty());
}

// Texts come and go on all threads at once, so that many a lookup meets a content whose last reference
// is just going.
TEST(ImmutableString, TwoThatLiveAtOnceAreOneContentUnderThreads)
{
	constexpr unsigned kThreads = 4;
	constexpr unsigned kSteps = 100000;
	SN::Testing::RunOnThreads(kThreads,
		[](unsigned inThread)
		{
			std::string_view const texts[] = {"text 0", "text 1"};
			for (unsigned k = 0; k < kSteps; ++k)
			{
				std::string_view const text = texts[(k / 5 + inThread) % 2];
				ImmutableString const a(text);
				if (k % 3 == 0)
				{
					ImmutableString const b(text);
					ASSERT_EQ(a, b);
				}
				ASSERT_EQ(a.GetText(), text);
			}
		});
}

} // namespace ImmutableStringTest
