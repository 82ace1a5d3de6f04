#include "Vexilon/MediaEntryLock.h"

#include "Support/Common.h"

namespace VX::MediaEntryLockTest
{

using Lock = MediaEntryLock;

TEST(MediaEntryLock, FailsWhereTheTableHasNoArrow)
{
	struct Case
	{
		char const* mName;
		std::uint32_t mWord;
		bool mRead;
		bool mWrite;
		bool mPurge;
	};
	constexpr Case kCases[] = {
		{"absent", 0x00000000, false, true, false},
		{"being written", 0x00010000, false, false, false},
		{"there", 0x80000000, true, false, true},
		{"there with readers", 0x80000002, true, false, false},
		{"readers full", 0x8000FFFF, false, false, false},
		{"being purged", 0x01000000, false, false, false},
		{"there and being written", 0x80010000, false, false, false},
		{"there and being purged", 0x81000000, false, false, false},
	};
	for (Case const& test : kCases)
	{
		EXPECT_EQ(Lock::CanRead(test.mWord), test.mRead) << test.mName;
		EXPECT_EQ(Lock::CanWrite(test.mWord), test.mWrite) << test.mName;
		EXPECT_EQ(Lock::CanPurge(test.mWord), test.mPurge) << test.mName;
	}
	static_assert(Lock::AfterReleaseWrite(Lock::AfterWrite(0)) == Lock::kPresent);
	static_assert(Lock::AfterReleasePurge(Lock::AfterPurge(Lock::kPresent)) == 0);
	static_assert(Lock::AfterReleaseRead(Lock::AfterRead(Lock::kPresent)) == Lock::kPresent);

	// Releases without a try change nothing.
	Lock lock;
	lock.ReleaseRead();
	lock.ReleasePurge();
	lock.ReleaseWrite();
	EXPECT_FALSE(lock.TryRead());
	EXPECT_TRUE(lock.TryWrite());
	EXPECT_FALSE(lock.TryWrite());
	lock.ReleaseWrite();
	EXPECT_TRUE(lock.TryRead());
	EXPECT_FALSE(lock.TryPurge());
	lock.ReleaseRead();
	EXPECT_TRUE(lock.TryPurge());
	EXPECT_FALSE(lock.TryRead());
	EXPECT_FALSE(lock.TryWrite());
	lock.ReleasePurge();
	EXPECT_FALSE(lock.TryRead());
}

// A model of threads that each do their operation on the word again and again, one memory access at a
// time: load, compare and swap (which may fail for no reason), two accesses to the payload, load, compare
// and swap for the release. Every interleaving is visited.
enum class Role : std::uint8_t
{
	kReader,
	kWriter,
	kPurger,
};

struct Thread
{
	friend auto operator<=>(Thread const&, Thread const&) = default;

	Role mRole = Role::kReader;
	enum Step : std::uint8_t
	{
		kLoad,
		kSwap,
		kFirstAccess,
		kSecondAccess,
		kLoadForRelease,
		kSwapForRelease,
	} mStep = kLoad;
	std::uint32_t mLoaded = 0;
};

constexpr unsigned kThreads = 4;

struct State
{
	friend auto operator<=>(State const&, State const&) = default;

	std::uint32_t mWord = 0;
	std::array<Thread, kThreads> mThreads;
	// Both halves of the payload: 0 absent, else what the writer has stored.
	std::uint8_t mFirstHalf = 0;
	std::uint8_t mSecondHalf = 0;
};

// What a role may do with the word, and what the word is then.
struct Arrows
{
	bool (*mCan)(std::uint32_t);
	std::uint32_t (*mAfter)(std::uint32_t);
	bool (*mCanRelease)(std::uint32_t);
	std::uint32_t (*mAfterRelease)(std::uint32_t);
};
constexpr Arrows kArrows[] = {
	{Lock::CanRead, Lock::AfterRead, Lock::CanReleaseRead, Lock::AfterReleaseRead},
	{Lock::CanWrite, Lock::AfterWrite, Lock::CanReleaseWrite, Lock::AfterReleaseWrite},
	{Lock::CanPurge, Lock::AfterPurge, Lock::CanReleasePurge, Lock::AfterReleasePurge},
};

class Model
{
public:
	explicit Model(std::array<Role, kThreads> const& inRoles)
	{
		State start;
		for (unsigned i = 0; i < kThreads; ++i)
		{
			start.mThreads[i].mRole = inRoles[i];
		}
		Visit(start);
		while (!mOpen.empty() && mFault.empty())
		{
			State const state = mOpen.back();
			mOpen.pop_back();
			Check(state);
			for (unsigned i = 0; i < kThreads; ++i)
			{
				Advance(state, i);
			}
		}
	}

	std::string mFault;
	std::size_t mNumStates = 0;
	bool mWasRead = false;
	bool mWasPurged = false;

private:
	void Visit(State const& inState)
	{
		if (mSeen.insert(inState).second)
		{
			mOpen.push_back(inState);
			++mNumStates;
		}
	}

	static bool IsInside(Thread const& inThread) { return inThread.mStep >= Thread::kFirstAccess; }

	void Check(State const& inState)
	{
		unsigned readers = 0;
		unsigned owners = 0;
		for (Thread const& thread : inState.mThreads)
		{
			(thread.mRole == Role::kReader ? readers : owners) += IsInside(thread) ? 1 : 0;
		}
		if (owners > 1 || (owners == 1 && readers > 0))
		{
			mFault = "a writer or purger is not alone";
		}
		if ((inState.mWord & Lock::kReaders) != readers)
		{
			mFault = "readers are miscounted";
		}
		if (owners + readers == 0 && inState.mWord != 0 && inState.mWord != Lock::kPresent)
		{
			mFault = "the entry is stuck";
		}
	}

	void Advance(State inState, unsigned inThread)
	{
		Thread& thread = inState.mThreads[inThread];
		Arrows const& arrows = kArrows[static_cast<unsigned>(thread.mRole)];
		switch (thread.mStep)
		{
		case Thread::kLoad:
		case Thread::kLoadForRelease:
			thread.mLoaded = inState.mWord;
			thread.mStep = thread.mStep == Thread::kLoad ? Thread::kSwap : Thread::kSwapForRelease;
			break;
		case Thread::kSwap:
			if (!arrows.mCan(thread.mLoaded))
			{
				thread.mStep = Thread::kLoad;
				break;
			}
			if (!Swap(inState, inThread, arrows.mAfter))
			{
				return;
			}
			thread.mStep = Thread::kFirstAccess;
			break;
		case Thread::kFirstAccess:
			Access(thread.mRole, inState.mFirstHalf);
			thread.mStep = Thread::kSecondAccess;
			break;
		case Thread::kSecondAccess:
			Access(thread.mRole, inState.mSecondHalf);
			if (thread.mRole == Role::kReader && inState.mFirstHalf != inState.mSecondHalf)
			{
				mFault = "a reader sees a mixture";
			}
			thread.mStep = Thread::kLoadForRelease;
			break;
		case Thread::kSwapForRelease:
			if (!arrows.mCanRelease(thread.mLoaded))
			{
				mFault = "a lock was lost";
				return;
			}
			if (!Swap(inState, inThread, arrows.mAfterRelease))
			{
				return;
			}
			thread.mStep = Thread::kLoad;
			break;
		}
		if (thread.mStep == Thread::kLoad)
		{
			// What was loaded is forgotten, so that equal states are found equal.
			thread.mLoaded = 0;
		}
		Visit(inState);
	}

	// The weak form may fail; then it loads anew and goes on from there.
	bool Swap(State& ioState, unsigned inThread, std::uint32_t (*inAfter)(std::uint32_t))
	{
		State failed = ioState;
		failed.mThreads[inThread].mLoaded = ioState.mWord;
		Visit(failed);
		std::uint32_t const loaded = ioState.mThreads[inThread].mLoaded;
		bool const isSwapped = ioState.mWord == loaded;
		ioState.mWord = isSwapped ? inAfter(loaded) : ioState.mWord;
		return isSwapped;
	}

	void Access(Role inRole, std::uint8_t& ioHalf)
	{
		bool const wasThere = ioHalf != 0;
		if (inRole != Role::kWriter && !wasThere)
		{
			mFault = "a payload is read or purged that is not there";
		}
		if (inRole == Role::kWriter && wasThere)
		{
			mFault = "a payload is overwritten";
		}
		ioHalf = inRole == Role::kReader ? ioHalf : inRole == Role::kWriter ? 1 : 0;
		mWasRead = mWasRead || inRole == Role::kReader;
		mWasPurged = mWasPurged || inRole == Role::kPurger;
	}

	std::set<State> mSeen;
	std::vector<State> mOpen;
};

TEST(MediaEntryLock, HoldsInEveryInterleavingOfFourThreads)
{
	using enum Role;
	constexpr std::array<Role, kThreads> kMixtures[] = {
		{kReader, kReader, kWriter, kPurger},
		{kReader, kWriter, kWriter, kPurger},
		{kReader, kWriter, kPurger, kPurger},
		{kReader, kReader, kReader, kWriter},
	};
	for (auto const& roles : kMixtures)
	{
		Model const model(roles);
		EXPECT_EQ(model.mFault, "");
		EXPECT_TRUE(model.mWasRead);
		EXPECT_EQ(model.mWasPurged, roles[3] == kPurger);
		EXPECT_GT(model.mNumStates, 100u);
	}
}

} // namespace VX::MediaEntryLockTest
