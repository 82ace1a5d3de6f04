#include "zorvcore/classref/Implements.h"
#include "zorvcore/classref/InterfaceRef.h"

#include "Support/Common.h"

#include <unordered_set>

namespace ObjectModelTest
{

using namespace zorvcore::classref;

class IFirst : public virtual Unknown
{
public:
	static constexpr Identifier<IFirst> kIdentifier{0x6fd4a1b0e2c94d17ull, 0xa3b85c90d7e6f214ull};
	virtual int First() = 0;
};

class ISecond : public virtual Unknown
{
public:
	static constexpr Identifier<ISecond> kIdentifier{0x1e07c3a95b8d4f62ull, 0xb9d2e4f608a7c531ull};
	virtual int Second() = 0;
};

class IAbsent : public virtual Unknown
{
public:
	static constexpr Identifier<IAbsent> kIdentifier{0x84b2f6d01c3e4a95ull, 0x97c1a0e5d3f2b846ull};
};

// Its interfaces lie at different addresses, with data between them.
class Both : public Implements<Both, IFirst, ISecond>
{
public:
	static constexpr Identifier<Both> kIdentifier{0x2a9c7e5f10b84d63ull, 0x8d4f1b6a92c3e075ull};

	explicit Both(int inValue = 0)
		: mValue(inValue)
	{
	}

	int First() override { return mValue; }
	int Second() override { return mValue + 1; }

private:
	int mValue;
};

// Made with the arguments of its base.
class Derived : public Implements<Derived, Both>
{
public:
	static constexpr Identifier<Derived> kIdentifier{0xf03d6b81a7c54e29ull, 0x9b62d8c4e1a5f730ull};

	using Implements::Implements;
};

// Fills an interface in and has no identifier of its own.
class FirstMixin : public IFirst
{
public:
	int First() override { return 7; }
};

// An object of its own, with an identifier and no interface.
class Trait : public Implements<Trait>
{
public:
	static constexpr Identifier<Trait> kIdentifier{0x5be1047d93ac4f28ull, 0xa0c96d7e12f4b385ull};
	int mTrait = 9;
};

class Counted
{
public:
	virtual ~Counted() = default;
	int mCount = 3;
};

// Has no identifier: the interfaces of its bases are all that it answers for.
class Assembled : public Implements<Assembled, FirstMixin, Trait, ISecond>, public Counted
{
public:
	int Second() override { return 8; }
};

TEST(ObjectModel, EveryInterfaceLeadsToEveryOther)
{
	InterfaceRef<Both> const object = MakeObject<Both>(40);
	InterfaceRef<IFirst> const first = object;
	InterfaceRef<ISecond> const second = first;
	EXPECT_EQ(first->First(), 40);
	EXPECT_EQ(second->Second(), 41);
	EXPECT_EQ(InterfaceRef<IFirst>(second).Get(), first.Get());
	EXPECT_EQ(InterfaceRef<Both>(second).Get(), object.Get());
	EXPECT_EQ(
		InterfaceRef<Both>(InterfaceRef<UnknownBase>(InterfaceRef<Unknown>(second))).Get(), object.Get());
}

TEST(ObjectModel, DerivedClassAnswersForItsBase)
{
	InterfaceRef<ISecond> const second = MakeObject<Derived>();
	EXPECT_TRUE(InterfaceRef<Both>(second).IsValid());
	EXPECT_TRUE(InterfaceRef<Derived>(second).IsValid());
	EXPECT_FALSE(InterfaceRef<Derived>(InterfaceRef<ISecond>(MakeObject<Both>())).IsValid());
}

TEST(ObjectModel, AnAnswerIsWhatACastOfTheObjectGives)
{
	auto const derived = MakeObject<Derived>(40);
	InterfaceRef<Unknown> const asUnknown = derived;
	EXPECT_EQ(asUnknown.Get(), static_cast<Unknown*>(derived.Get()));
	EXPECT_EQ(InterfaceRef<UnknownBase>(asUnknown).Get(), static_cast<UnknownBase*>(derived.Get()));
	EXPECT_EQ(InterfaceRef<ISecond>(asUnknown).Get(), static_cast<ISecond*>(derived.Get()));
	EXPECT_EQ(InterfaceRef<Both>(asUnknown).Get(), static_cast<Both*>(derived.Get()));
	EXPECT_EQ(InterfaceRef<Derived>(asUnknown).Get(), derived.Get());
	EXPECT_EQ(derived->Second(), 41);

	auto const assembled = MakeObject<Assembled>();
	InterfaceRef<ISecond> const second(InterfaceRef<Unknown>{assembled});
	ASSERT_TRUE(second.IsValid());
	EXPECT_EQ(second.Get(), static_cast<ISecond*>(assembled.Get()));
	InterfaceRef<IFirst> const first = second;
	ASSERT_TRUE(first.IsValid());
	EXPECT_EQ(first.Get(), static_cast<IFirst*>(assembled.Get()));
	InterfaceRef<Trait> const trait = second;
	ASSERT_TRUE(trait.IsValid());
	EXPECT_EQ(trait.Get(), static_cast<Trait*>(assembled.Get()));
	EXPECT_FALSE(InterfaceRef<Both>(second).IsValid());
}

TEST(ObjectModel, UnansweredQueryGivesAnEmptyReference)
{
	InterfaceRef<IAbsent> const absent = MakeObject<Both>();
	EXPECT_FALSE(absent.IsValid());
	EXPECT_EQ(absent, nullptr);
	EXPECT_EQ(absent.GetUnknown(), nullptr);
	EXPECT_FALSE(InterfaceRef<IFirst>(absent).IsValid());
}

TEST(ObjectModel, ReferencesCompareOrderAndHashByObject)
{
	InterfaceRef<Both> const object = MakeObject<Both>();
	InterfaceRef<Both> const other = MakeObject<Both>();
	InterfaceRef<IFirst> const first = object;
	InterfaceRef<ISecond> const second = object;
	EXPECT_EQ(first, second);
	EXPECT_NE(first, other);
	EXPECT_FALSE(first < second || second < first);
	EXPECT_NE(first < other, InterfaceRef<ISecond>(other) < first);
	EXPECT_EQ(std::hash<InterfaceRef<IFirst>>()(first), std::hash<InterfaceRef<ISecond>>()(second));

	std::map<InterfaceRef<Unknown>, int> map{{first, 1}, {second, 2}, {other, 3}};
	EXPECT_EQ(map.size(), 2u);
	std::unordered_set<InterfaceRef<Unknown>> const set{first, second, other, nullptr};
	EXPECT_EQ(set.size(), 3u);
}

TEST(ObjectModel, EmptyDereferenceNamesTheType)
{
	InterfaceRef<IFirst> const empty;
	try
	{
		empty->First();
		FAIL() << "no exception";
	}
	catch (zorvcore::config::NullPtrException const& exception)
	{
		EXPECT_THAT(exception.what(), testing::HasSubstr("IFirst"));
		EXPECT_EQ(exception.GetResultCode(), zorvcore::eNullPointer);
	}
}

TEST(ObjectModel, AnObjectFindsItsOwnOwnership)
{
	InterfaceRef<Both> object = MakeObject<Both>();
	auto self = InterfaceRef<ISecond>::FromThis(object.Get());
	EXPECT_EQ(self, object);
	std::weak_ptr<UnknownBase> const alive = object->GetSharedFromThis();
	object.Reset();
	EXPECT_FALSE(alive.expired());
	self.Reset();
	EXPECT_TRUE(alive.expired());
	EXPECT_FALSE(InterfaceRef<ISecond>::FromThis(nullptr).IsValid());

	Both unshared;
	EXPECT_THROW(unshared.GetSharedFromThis(), std::bad_weak_ptr);
}

} // namespace ObjectModelTest
