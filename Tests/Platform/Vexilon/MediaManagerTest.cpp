#include "Vexilon/MediaManager.h"

#include "Support/Answers.h"
#include "Support/Common.h"
#include "Vexilon/MediaVector.h"

namespace VX::MediaManagerTest
{

using zorvcore::classref::InterfaceRef;
using zorvcore::classref::MakeObject;

// A payload of a given size.
struct Payload
{
	unsigned long long GetSizeInBytes() const { return mSize; }

	unsigned long long mSize = 0;
	std::shared_ptr<int> mValue;
};

using Store = MediaVector<Payload>;

InterfaceRef<Store> MakeStore(unsigned long long inEntries)
{
	auto const store = MakeObject<Store>();
	store->Init(inEntries);
	return store;
}

Payload MakePayload(unsigned long long inSize)
{
	return {inSize, std::make_shared<int>(7)};
}

// The entries that are there, as a picture.
std::string Picture(Store& ioStore)
{
	std::string picture;
	for (unsigned long long index = 0; index < ioStore.GetNumEntries(); ++index)
	{
		picture += ioStore.Read(index, [](Payload const&) {}) ? 'X' : '.';
	}
	return picture;
}

class MediaManagerTest : public ::testing::Test
{
protected:
	MediaManagerTest() { mManager->SetByteBudget(mManager->GetByteCount() + 100); }
	~MediaManagerTest() override { mManager->SetByteBudget(mBudget); }

	InterfaceRef<IMediaManager> const mManager = GetMediaManager();
	unsigned long long const mBudget = mManager->GetByteBudget();
	unsigned long long const mBefore = mManager->GetByteCount();
};

TEST_F(MediaManagerTest, WhatWasNotUsedForLongestGoesFirst)
{
	EXPECT_EQ(mBudget, 256ull << 20);
	auto const first = MakeStore(3);
	auto const second = MakeStore(2);
	for (unsigned index = 0; index < 3; ++index)
	{
		EXPECT_TRUE(first->Store(index, MakePayload(25)));
	}
	second->Store(0, MakePayload(25));
	EXPECT_EQ(Picture(*first) + Picture(*second), "XXXX.");
	EXPECT_TRUE(first->Touch(0));
	second->Store(1, MakePayload(50));
	EXPECT_EQ(Picture(*first) + Picture(*second), "X..XX");
	EXPECT_EQ(mManager->GetByteCount(), mBefore + 100);
	EXPECT_FALSE(first->Touch(1));

	// What is entered again at another size counts once.
	EXPECT_TRUE(first->Store(1, MakePayload(25)));
	EXPECT_EQ(mManager->GetByteCount(), mBefore + 100);
	EXPECT_EQ(Picture(*first) + Picture(*second), "XX..X");
	mManager->AddEntry(1, 20, 3, false, first);
	EXPECT_EQ(mManager->GetByteCount(), mBefore + 95);
}

TEST_F(MediaManagerTest, WhatIsInUseStaysAndOthersGo)
{
	auto const store = MakeStore(3);
	store->Store(0, MakePayload(60));
	store->Store(1, MakePayload(30));
	store->Read(0,
		[&](Payload const& inPayload)
		{
			store->Store(2, MakePayload(40));
			EXPECT_EQ(*inPayload.mValue, 7);
		});
	EXPECT_EQ(Picture(*store), "X.X");
	EXPECT_EQ(mManager->GetByteCount(), mBefore + 100);

	// Beyond the budget while it is in use, and back within it at the next chance.
	store->Read(0,
		[&](Payload const&)
		{
			mManager->SetByteBudget(mBefore + 10);
			EXPECT_EQ(mManager->GetByteCount(), mBefore + 60);
		});
	mManager->SetByteBudget(mBefore + 10);
	EXPECT_EQ(Picture(*store), "...");
	EXPECT_EQ(mManager->GetByteCount(), mBefore);
}

// A store that only records what it is asked to purge.
class RecordingMap final : public SN::Testing::Answers<IMediaMap>
{
public:
	void Purge(unsigned long long inIndex) override { mPurged.push_back(inIndex); }
	zorvcore::utility::Guid GetIdentifier() override { return mIdentifier; }
	bool IsEntryReferenced(unsigned long long inIndex) override { return inIndex == mReferenced; }

	std::vector<unsigned long long> mPurged;
	unsigned long long mReferenced = 0;

private:
	zorvcore::utility::Guid const mIdentifier = CreateMediaMapIdentifier();
};

TEST_F(MediaManagerTest, WhatIsReferencedIsPassedOver)
{
	auto const map = MakeObject<RecordingMap>();
	mManager->Register(*map);
	mManager->AddEntry(0, 60, 3, false, map);
	mManager->AddEntry(1, 30, 3, false, map);
	mManager->AddEntry(2, 40, 3, false, map);
	EXPECT_EQ(map->mPurged, std::vector<unsigned long long>{1});
	EXPECT_EQ(mManager->GetByteCount(), mBefore + 100);
	mManager->RemoveEntry(0, map->GetIdentifier());
	mManager->RemoveEntry(2, map->GetIdentifier());
}

TEST_F(MediaManagerTest, AStoreTakesItsEntriesAlong)
{
	std::weak_ptr<int> value;
	{
		auto const store = MakeStore(2);
		Payload payload = MakePayload(30);
		value = payload.mValue;
		store->Store(0, std::move(payload));
		EXPECT_FALSE(store->Store(0, MakePayload(30))) << "it is there already";
		EXPECT_FALSE(store->Store(2, MakePayload(30))) << "out of range";
		store->Store(1, MakePayload(30));
		store->Purge(1);
		store->Purge(7);
		EXPECT_EQ(Picture(*store), "X.");
		EXPECT_FALSE(store->IsEntryReferenced(0));
		EXPECT_FALSE(store->IsEntryReferenced(7));
		EXPECT_FALSE(value.expired());
	}
	EXPECT_TRUE(value.expired());
	// The entry that was purged without the manager's knowing may linger until its bytes are wanted.
	mManager->SetByteBudget(mBefore);
	EXPECT_EQ(mManager->GetByteCount(), mBefore);
	mManager->TouchEntry(0, {});
	mManager->RemoveEntry(0, {});

	auto const discarded = MakeStore(3);
	mManager->SetByteBudget(mBefore + 100);
	discarded->Store(0, MakePayload(20));
	discarded->Store(2, MakePayload(20));
	discarded->Read(2, [&](Payload const&) { discarded->Discard(); });
	EXPECT_EQ(Picture(*discarded), "..X");
	EXPECT_EQ(mManager->GetByteCount(), mBefore + 20);
}

TEST_F(MediaManagerTest, WhatIsEnteredByNobodyKnownIsNotTaken)
{
	mManager->AddEntry(0, 60, 3, false, MakeObject<RecordingMap>());
	EXPECT_EQ(mManager->GetByteCount(), mBefore);
}

TEST_F(MediaManagerTest, AReadThatThrowsReleasesItsEntry)
{
	auto const store = MakeStore(1);
	store->Store(0, MakePayload(10));
	EXPECT_THROW(store->Read(0, [](Payload const&) { throw 1; }), int);
	store->Discard();
	EXPECT_EQ(Picture(*store), ".");
}

TEST_F(MediaManagerTest, ADiscardMissesNothingThatIsOnlyTouched)
{
	auto const store = MakeStore(1);
	std::atomic<bool> isOver{false};
	std::thread toucher(
		[&]
		{
			while (!isOver)
			{
				store->Touch(0);
			}
		});
	int missed = 0;
	for (int i = 0; i < 50000; ++i)
	{
		store->Store(0, MakePayload(10));
		store->Discard();
		missed += Picture(*store) == "X" ? 1 : 0;
	}
	isOver = true;
	toucher.join();
	EXPECT_EQ(missed, 0);
}

} // namespace VX::MediaManagerTest
