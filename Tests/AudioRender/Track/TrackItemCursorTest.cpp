#include "AudioRender/Track/TrackItemCursor.h"

#include "Support/FakeItem.h"
#include "Support/Pull.h"

#include <gtest/gtest.h>

#include <string>

namespace SN::TrackItemCursorTest
{
namespace
{

using namespace Testing;

// Three items: 0 to 100, 100 to 200 and, after a gap, 300 to 400.
void Fill(TrackItemCursor& ioCursor)
{
	TrackItemCursor::Items items;
	for (long long const start : {0, 100, 300})
	{
		auto const item = FakeItem::Make(1, start, start + 100, start);
		items.push_back({item, item});
	}
	ioCursor.SetItems(items);
}

long long GetStart(TrackItemCursor const& inCursor)
{
	return inCursor.GetCurrent().mItem->GetStartTime().ToFrame64(k48000Hz);
}

TEST(TrackItemCursor, FindsTheItemOfATimeFromAnyOther)
{
	struct Case
	{
		char const* mName;
		long long mFrom;
		long long mTo;
		bool mIsFound;
		// Where the cursor stands then; -1 for the end.
		long long mStart;
	};
	Case const cases[] = {
		{"within an item", 10, 99, true, 0},
		{"to the next one's first frame", 10, 100, true, 100},
		{"over an item", 10, 399, true, 300},
		{"forward into a gap", 10, 250, true, 300},
		{"back over an item", 350, 0, true, 0},
		{"back into a gap", 350, 250, true, 100},
		{"before the list", 350, -1, false, 0},
		{"after the list", 10, 400, false, -1},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		TrackItemCursor cursor;
		Fill(cursor);
		EXPECT_TRUE(cursor.MoveTo(At(test.mFrom)));
		EXPECT_EQ(cursor.MoveTo(At(test.mTo)), test.mIsFound);
		EXPECT_EQ(cursor.IsAtEnd(), test.mStart < 0);
		EXPECT_EQ(cursor.IsAtEnd() ? -1 : GetStart(cursor), test.mStart);
	}
}

TEST(TrackItemCursor, GivesEachItemItsPartOfARangeAndStaysWhereItIs)
{
	struct Case
	{
		char const* mName;
		long long mFrom;
		long long mStart;
		long long mEnd;
		std::string mParts;
	};
	Case const cases[] = {
		{"all of the current item", 0, 0, 100, "0:0-100 "},
		{"parts of two items", 0, 50, 150, "0:50-100 100:100-150 "},
		{"over the gap", 150, 150, 350, "100:150-200 300:200-350 "},
		{"back from the last item", 350, 20, 120, "0:20-100 100:100-120 "},
		{"beyond the list", 350, 390, 500, "300:390-400 "},
		{"after the list", 350, 400, 500, ""},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		TrackItemCursor cursor;
		Fill(cursor);
		cursor.MoveTo(At(test.mFrom));
		long long const start = GetStart(cursor);
		std::string parts;
		cursor.ForEachWithin({At(test.mStart), At(test.mEnd)},
			[&](TrackItem const& inItem, PrefetchRange const& inPart)
			{
				parts += std::to_string(inItem.mItem->GetStartTime().ToFrame64(k48000Hz)) + ":" +
						 std::to_string(inPart.mStart.ToFrame64(k48000Hz)) + "-" +
						 std::to_string(inPart.mEnd.ToFrame64(k48000Hz)) + " ";
			});
		EXPECT_EQ(parts, test.mParts);
		EXPECT_EQ(GetStart(cursor), start);
	}
}

TEST(TrackItemCursor, StaysAtTheEndUntilItIsSentBack)
{
	TrackItemCursor cursor;
	Fill(cursor);
	EXPECT_TRUE(cursor.MoveOn());
	EXPECT_TRUE(cursor.MoveOn());
	cursor.ReturnFromEnd();
	EXPECT_EQ(GetStart(cursor), 300);
	EXPECT_FALSE(cursor.MoveOn());
	int calls = 0;
	cursor.ForEachWithin({At(0), At(400)}, [&](TrackItem const&, PrefetchRange const&) { ++calls; });
	EXPECT_EQ(calls, 0);
	cursor.ReturnFromEnd();
	EXPECT_EQ(GetStart(cursor), 0);
}

} // namespace
} // namespace SN::TrackItemCursorTest
