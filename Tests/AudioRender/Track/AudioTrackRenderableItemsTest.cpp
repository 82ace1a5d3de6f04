#include "Sonaro/AudioTrackRenderableItems.h"

#include "Support/Engine.h"

#include <sstream>

namespace SN::AudioTrackRenderableItemsTest
{

TickTime Frames(double inFrames)
{
	return TickTime(1, k48000Hz) * inFrames;
}

// An item with a name that its clones share, which counts how often it was cut.
class NamedItem final : public SimpleGenerator, public AudioTrackRenderableItemMixin
{
public:
	static constexpr Identifier<NamedItem> kIdentifier{0x64c5d8a7be0f4a77ull, 0xb2c4417fa3d9e511ull};

	enum class Ability
	{
		kGeneratesAndClones,
		kClonesToNoItem,
		kIsNoGenerator,
	};

	explicit NamedItem(int inName, Ability inAbility = Ability::kGeneratesAndClones)
		: SimpleGenerator(1),
		  mName(inName),
		  mAbility(inAbility)
	{
	}

	void Init(TickTime const& inStartTime, TickTime const& inEndTime, TickTime const& inTrackItemStartTime,
		FrameRate const& inFrameRate) override
	{
		++mInits;
		AudioTrackRenderableItemMixin::Init(inStartTime, inEndTime, inTrackItemStartTime, inFrameRate);
	}

	InterfaceRef<IAudioGenerator> Clone() override
	{
		if (mAbility == Ability::kClonesToNoItem)
		{
			return {};
		}
		auto const clone = MakeObject<NamedItem>(mName);
		clone->CopyTimesFrom(*this);
		return clone;
	}
	void GetAudioData(TickTime const&, dsp::AudioBuffer&, bool) override {}

	int mName;
	int mInits = 0;

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		if (inIdentifier == IAudioGenerator::kIdentifier && mAbility == Ability::kIsNoGenerator)
		{
			return nullptr;
		}
		void* const found =
			zorvcore::classref::QueryInterfaces<IAudioTrackRenderableItem, NamedItem>(this, inIdentifier);
		return found ? found : SimpleGenerator::QueryMap(inIdentifier);
	}

private:
	Ability mAbility;
};

InterfaceRef<IAudioTrackRenderableItem> MakeItem(int inName, double inStart, double inEnd,
	NamedItem::Ability inAbility = NamedItem::Ability::kGeneratesAndClones)
{
	auto const item = MakeObject<NamedItem>(inName, inAbility);
	// The clip begins 1000 frames ahead of the item's first piece.
	item->Init(Frames(inStart), Frames(inEnd), Frames(inStart - 1000), k48000Hz);
	item->mInits = 0;
	return item;
}

// "name[start,end)~trackItemStart" of each item; silence is named _.
std::string Picture(AudioTrackRenderableItemList const& inItems)
{
	std::ostringstream text;
	for (auto const& item : inItems)
	{
		InterfaceRef<NamedItem> const named(item);
		text << (text.tellp() > 0 ? " " : "")
			 << (named ? std::string(1, static_cast<char>(named->mName)) : "_") << "["
			 << item->GetStartTime().ToFrame64(k48000Hz) << "," << item->GetEndTime().ToFrame64(k48000Hz)
			 << ")";
		if (named)
		{
			text << "~" << item->GetTrackItemStartTime().ToFrame64(k48000Hz) + 1000;
		}
	}
	return text.str();
}

TEST(AudioTrackRenderableItem, TimesAreAlignedDownOneByOne)
{
	auto const item = MakeItem('a', 0, 1);
	item->Init(Frames(-4.5), Frames(10.9), Frames(-0.1), k48000Hz);
	EXPECT_EQ(item->GetStartTime(), Frames(-5));
	EXPECT_EQ(item->GetEndTime(), Frames(10));
	EXPECT_EQ(item->GetTrackItemStartTime(), Frames(-1));
}

TEST(AudioTrackRenderableItem, SilenceIsKnownAndClonesItsTimes)
{
	auto const silence = CreateSilentAudioTrackRenderableItem(Frames(3), Frames(9), k48000Hz);
	EXPECT_TRUE(IsSilentAudioTrackRenderableItem(silence));
	EXPECT_FALSE(IsSilentAudioTrackRenderableItem(MakeItem('a', 0, 1)));
	EXPECT_FALSE(IsSilentAudioTrackRenderableItem({}));
	EXPECT_EQ(silence->GetTrackItemStartTime(), Frames(3));

	InterfaceRef<IAudioGenerator> const clone = InterfaceRef<IAudioGenerator>(silence)->Clone();
	EXPECT_FALSE(clone == silence);
	EXPECT_EQ(Picture({InterfaceRef<IAudioTrackRenderableItem>(clone)}), "_[3,9)");
	dsp::AudioBuffer buffer(3, 8);
	clone->GetAudioData(kTimeNotATime, buffer, true);
	EXPECT_TRUE(buffer.IsSilent());
}

TEST(AudioTrackRenderableItem, TheFirstPairThatIsNotFlushDecidesContinuity)
{
	struct Case
	{
		char const* mName;
		std::vector<std::pair<double, double>> mItems;
		AudioTrackRenderableItemListContinuity mExpected;
		char const* mContinuous;
	};
	Case const cases[] = {
		{"empty", {}, Continuous, ""},
		{"one", {{5, 6}}, Continuous, "a[5,6)~5"},
		{"flush", {{0, 4}, {4, 6}, {6, 9}}, Continuous, "a[0,4)~0 b[4,6)~4 c[6,9)~6"},
		{"gap", {{0, 4}, {5, 6}}, Gap, "a[0,4)~0 _[4,5) b[5,6)~5"},
		{"overlap", {{0, 4}, {3, 6}}, Overlap, "a[0,4)~0 b[3,6)~3"},
		{"gap before overlap", {{0, 4}, {6, 9}, {8, 12}}, Gap, "a[0,4)~0 _[4,6) b[6,9)~6 c[8,12)~8"},
		{"overlap before gap", {{0, 4}, {3, 6}, {8, 12}}, Overlap, "a[0,4)~0 b[3,6)~3 _[6,8) c[8,12)~8"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		AudioTrackRenderableItemList items;
		for (auto const& [start, end] : test.mItems)
		{
			items.push_back(MakeItem('a' + static_cast<int>(items.size()), start, end));
		}
		EXPECT_EQ(GetAudioTrackRenderableItemListContinuity(items), test.mExpected);
		EXPECT_EQ(Picture(MakeContinuousAudioTrackRenderableItemList(items, k48000Hz)), test.mContinuous);
	}
	EXPECT_THROW(GetAudioTrackRenderableItemListContinuity({MakeItem('a', 0, 1), {}}),
		zorvcore::config::zorv_exception);
}

TEST(AudioTrackRenderableItem, AppendingFillsGapsAndRefusesWhatIsShorterThanAFrame)
{
	AudioTrackRenderableItemList items;
	AppendAudioTrackRenderableItem(MakeItem('a', 0, 0), k48000Hz, items);
	EXPECT_EQ(Picture(items), "");
	AppendAudioTrackRenderableItem(MakeItem('b', 2, 4), k48000Hz, items);
	AppendAudioTrackRenderableItem(MakeItem('c', 4, 5), k48000Hz, items);
	// Half a frame, kept off the frame grid by a finer rate.
	auto const half = MakeItem('d', 9, 9);
	half->Init(Frames(9), Frames(9.5), Frames(9), k48000Hz * 2);
	AppendAudioTrackRenderableItem(half, k48000Hz, items);
	AppendAudioTrackRenderableItem(MakeItem('e', 7, 9), k48000Hz, items);
	EXPECT_EQ(Picture(items), "b[2,4)~2 c[4,5)~4 _[5,7) e[7,9)~7");
}

struct Span
{
	char mName;
	double mStart;
	double mEnd;
};

AudioTrackRenderableItemList MakeList(std::vector<Span> const& inSpans)
{
	AudioTrackRenderableItemList items;
	for (Span const& span : inSpans)
	{
		items.push_back(MakeItem(span.mName, span.mStart, span.mEnd));
	}
	return items;
}

// Of how many pieces there are; what is heard of them, below.
TEST(AudioTrackRenderableItem, MergingCutsSplitsAndRemovesWhatLiesUnderneath)
{
	struct Case
	{
		char const* mName;
		std::vector<Span> mSource;
		char const* mExpected;
	};
	Case const cases[] = {
		{"exactly over one", {{'S', 10, 20}}, "a[0,10)~0 S[10,20)~10 c[20,30)~20 d[40,50)~40"},
		{"from the first into the last", {{'S', 5, 45}}, "a[0,5)~0 S[5,45)~5 d[45,50)~40"},
		{"inside one", {{'S', 12, 18}},
			"a[0,10)~0 b[10,12)~10 S[12,18)~12 b[18,20)~10 c[20,30)~20 d[40,50)~40"},
		{"two inside one", {{'S', 2, 4}, {'T', 6, 8}},
			"a[0,2)~0 S[2,4)~2 a[4,6)~0 T[6,8)~6 a[8,10)~0 b[10,20)~10 c[20,30)~20 d[40,50)~40"},
		{"two flush", {{'S', 5, 15}, {'T', 15, 25}},
			"a[0,5)~0 S[5,15)~5 T[15,25)~15 c[25,30)~20 d[40,50)~40"},
		{"one after the end, then one inside", {{'S', 60, 70}, {'T', 45, 50}},
			"a[0,10)~0 b[10,20)~10 c[20,30)~20 d[40,45)~40 T[45,50)~45"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		AudioTrackRenderableItemList items =
			MakeList({{'a', 0, 10}, {'b', 10, 20}, {'c', 20, 30}, {'d', 40, 50}});
		MergeAudioTrackRenderableItems(MakeList(test.mSource), items, k48000Hz);
		EXPECT_EQ(Picture(items), test.mExpected);
	}
}

TEST(AudioTrackRenderableItem, MergingTouchesOnlyWhatItCuts)
{
	AudioTrackRenderableItemList const before = MakeList({{'a', 0, 10}, {'b', 10, 20}, {'c', 20, 30}});
	AudioTrackRenderableItemList items = before;
	MergeAudioTrackRenderableItems(MakeList({{'S', 5, 20}}), items, k48000Hz);
	EXPECT_EQ(items[0], before[0]);
	EXPECT_EQ(items[2], before[2]);
	EXPECT_EQ(InterfaceRef<NamedItem>(before[0])->mInits, 1);
	EXPECT_EQ(InterfaceRef<NamedItem>(before[1])->mInits, 0) << "removed, not cut";
	EXPECT_EQ(InterfaceRef<NamedItem>(before[2])->mInits, 0);
}

TEST(AudioTrackRenderableItem, SplittingNeedsAGeneratorThatClonesToAnItem)
{
	AudioTrackRenderableItemList items = {MakeItem('a', 0, 10),
		MakeItem('b', 10, 20, NamedItem::Ability::kIsNoGenerator), MakeItem('c', 20, 30)};
	EXPECT_THROW(MergeAudioTrackRenderableItems(MakeList({{'S', 2, 4}, {'T', 12, 14}}), items, k48000Hz),
		zorvcore::config::zorv_exception);
	EXPECT_EQ(Picture(items), "a[0,2)~0 S[2,4)~2 a[4,10)~0 b[10,20)~10 c[20,30)~20")
		<< "what was merged before stands, and nothing is lost";

	items = {MakeItem('a', 0, 10, NamedItem::Ability::kClonesToNoItem)};
	MergeAudioTrackRenderableItems(MakeList({{'S', 2, 4}}), items, k48000Hz);
	// One piece for two cuts: it stays in front, and the later cut has the last word.
	EXPECT_EQ(Picture(items), "a[4,2)~0 S[2,4)~2");

	items = MakeList({{'a', 0, 10}});
	EXPECT_THROW(MergeAudioTrackRenderableItems({InterfaceRef<IAudioTrackRenderableItem>()}, items, k48000Hz),
		zorvcore::config::zorv_exception);
	EXPECT_EQ(Picture(items), "a[0,10)~0");
}

// The timeline painted frame by frame: what is heard, and how far into its clip.
struct Painted
{
	friend bool operator==(Painted const&, Painted const&) = default;
	int mName = 0;
	long long mOffset = 0;
};

void Paint(std::vector<Painted>& ioTimeline, AudioTrackRenderableItemList const& inItems)
{
	for (auto const& item : inItems)
	{
		long long const end = item->GetEndTime().ToFrame64(k48000Hz);
		for (long long frame = item->GetStartTime().ToFrame64(k48000Hz); frame < end; ++frame)
		{
			ioTimeline[static_cast<std::size_t>(frame)] = {InterfaceRef<NamedItem>(item)->mName,
				frame - item->GetTrackItemStartTime().ToFrame64(k48000Hz)};
		}
	}
}

// Items in the order of time, apart, flush or (only where allowed) overlapping.
AudioTrackRenderableItemList RandomList(std::mt19937& ioRandom, int inFirstName, bool inMayOverlap)
{
	AudioTrackRenderableItemList items;
	long long start = static_cast<long long>(ioRandom() % 20);
	for (unsigned count = static_cast<unsigned>(ioRandom() % 12); count > 0; --count)
	{
		long long const end = start + 1 + static_cast<long long>(ioRandom() % 15);
		items.push_back(MakeItem(inFirstName + static_cast<int>(items.size()), static_cast<double>(start),
			static_cast<double>(end)));
		long long const gap = ioRandom() % 2 == 0 ? 0 : static_cast<long long>(ioRandom() % 10);
		start = inMayOverlap ? start + 1 + static_cast<long long>(ioRandom() % 15) : end + gap;
	}
	return items;
}

TEST(AudioTrackRenderableItem, TenThousandMergesEqualThePaintedTimeline)
{
	std::mt19937 random(99);
	for (int trial = 0; trial < 10000; ++trial)
	{
		AudioTrackRenderableItemList items = RandomList(random, 1000, false);
		AudioTrackRenderableItemList const source = RandomList(random, 2000, trial % 4 == 3);
		std::vector<Painted> expected(600);
		Paint(expected, items);
		// What begins at or after the target's end is dropped; later items paint over earlier ones.
		TickTime end = items.empty() ? -kTimeMax : items.back()->GetEndTime();
		for (auto const& item : source)
		{
			if (item->GetStartTime() < end)
			{
				Paint(expected, {item});
				end = std::max(end, item->GetEndTime());
			}
		}

		MergeAudioTrackRenderableItems(source, items, k48000Hz);

		std::vector<Painted> merged(600);
		Paint(merged, items);
		ASSERT_EQ(merged == expected, true) << "trial " << trial << ": " << Picture(items);
		ASSERT_NE(GetAudioTrackRenderableItemListContinuity(items), Overlap) << "trial " << trial;
		for (std::size_t index = 1; index < items.size(); ++index)
		{
			ASSERT_LE(items[index - 1]->GetEndTime(), items[index]->GetStartTime()) << "trial " << trial;
		}
	}
}

} // namespace SN::AudioTrackRenderableItemsTest
