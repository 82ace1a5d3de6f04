#include "Vexilon/MediaManager.h"

#include "Vexilon/MediaVector.h"
#include "zorvcore/debug/DebugDatabase.h"

#include <atomic>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

namespace VX
{

namespace
{

using zorvcore::classref::InterfaceRef;
using zorvcore::classref::Unknown;
using zorvcore::utility::Guid;

constexpr unsigned long long kDefaultByteBudget = 256ull << 20;

class MediaManager final : public zorvcore::classref::Implements<MediaManager, IMediaManager>
{
public:
	void Register(IMediaMap& inMap) override;
	void AddEntry(unsigned long long inIndex, unsigned long long inSizeInBytes, unsigned inState, bool inFlag,
		InterfaceRef<IMediaMap> const& inOwner) override;
	void TouchEntry(unsigned long long inIndex, Guid const& inIdentifier) override;
	void RemoveEntry(unsigned long long inIndex, Guid const& inIdentifier) override;
	void SetByteBudget(unsigned long long inBytes) override;
	unsigned long long GetByteBudget() override;
	unsigned long long GetByteCount() override;

	static unsigned long long ReadByteBudget();

private:
	using WeakMap = std::weak_ptr<Unknown>;

	struct Entry
	{
		Guid mIdentifier;
		unsigned long long mIndex = 0;
		unsigned long long mSize = 0;
		unsigned mState = 0;
	};
	using Entries = std::list<Entry>;
	using Key = std::pair<Guid, unsigned long long>;

	void PurgeBeyondBudget();
	// The entry that was not used for the longest time, out of the list; empty within the budget.
	Entries TakeVictim();
	// Empty when the store is gone.
	InterfaceRef<IMediaMap> FindMap(Guid const& inIdentifier);
	std::size_t GetNumEntries();

	std::mutex mMutex;
	// The one used last at the front.
	Entries mEntries;
	std::map<Key, Entries::iterator> mByKey;
	std::map<Guid, WeakMap> mMaps;
	unsigned long long mByteCount = 0;
	unsigned long long mByteBudget = ReadByteBudget();
};

void MediaManager::Register(IMediaMap& inMap)
{
	auto const map = InterfaceRef<IMediaMap>::FromThis(&inMap);
	std::lock_guard const lock(mMutex);
	std::erase_if(mMaps, [](auto const& inKnown) { return inKnown.second.expired(); });
	mMaps[inMap.GetIdentifier()] = map.GetUnknown();
}

void MediaManager::AddEntry(unsigned long long inIndex, unsigned long long inSizeInBytes, unsigned inState,
	bool, InterfaceRef<IMediaMap> const& inOwner)
{
	Guid const identifier = inOwner->GetIdentifier();
	// Made beforehand, so that nothing can fail halfway.
	Entries added;
	added.push_back({identifier, inIndex, inSizeInBytes, inState});
	{
		std::lock_guard const lock(mMutex);
		if (!mMaps.contains(identifier))
		{
			return;
		}
		auto const [known, isNew] = mByKey.try_emplace({identifier, inIndex}, added.begin());
		if (isNew)
		{
			mEntries.splice(mEntries.begin(), added);
		}
		else
		{
			mByteCount -= known->second->mSize;
			known->second->mSize = inSizeInBytes;
			mEntries.splice(mEntries.begin(), mEntries, known->second);
		}
		mByteCount += inSizeInBytes;
	}
	PurgeBeyondBudget();
}

void MediaManager::TouchEntry(unsigned long long inIndex, Guid const& inIdentifier)
{
	std::lock_guard const lock(mMutex);
	auto const known = mByKey.find({inIdentifier, inIndex});
	if (known != mByKey.end())
	{
		mEntries.splice(mEntries.begin(), mEntries, known->second);
	}
}

void MediaManager::RemoveEntry(unsigned long long inIndex, Guid const& inIdentifier)
{
	// Freed outside the lock.
	Entries removed;
	std::lock_guard const lock(mMutex);
	auto const known = mByKey.find({inIdentifier, inIndex});
	if (known != mByKey.end())
	{
		mByteCount -= known->second->mSize;
		removed.splice(removed.begin(), mEntries, known->second);
		mByKey.erase(known);
	}
}

void MediaManager::SetByteBudget(unsigned long long inBytes)
{
	{
		std::lock_guard const lock(mMutex);
		mByteBudget = inBytes;
	}
	PurgeBeyondBudget();
}

unsigned long long MediaManager::GetByteBudget()
{
	std::lock_guard const lock(mMutex);
	return mByteBudget;
}

unsigned long long MediaManager::GetByteCount()
{
	std::lock_guard const lock(mMutex);
	return mByteCount;
}

void MediaManager::PurgeBeyondBudget()
{
	// A store that cannot purge enters its chunk again, which must not begin another round.
	static thread_local bool sIsPurging = false;
	if (std::exchange(sIsPurging, true))
	{
		return;
	}
	std::unique_ptr<bool, void (*)(bool*)> const scope(&sIsPurging, [](bool* outFlag) { *outFlag = false; });
	// Each entry at most once: what is in use comes back as just used.
	for (std::size_t candidates = GetNumEntries(); candidates > 0; --candidates)
	{
		Entries const victim = TakeVictim();
		if (victim.empty())
		{
			break;
		}
		auto const map = FindMap(victim.front().mIdentifier);
		if (!map)
		{
			continue;
		}
		if (map->IsEntryReferenced(victim.front().mIndex))
		{
			AddEntry(victim.front().mIndex, victim.front().mSize, victim.front().mState, false, map);
		}
		else
		{
			map->Purge(victim.front().mIndex);
		}
	}
}

InterfaceRef<IMediaMap> MediaManager::FindMap(Guid const& inIdentifier)
{
	std::shared_ptr<Unknown> map;
	{
		std::lock_guard const lock(mMutex);
		auto const known = mMaps.find(inIdentifier);
		map = known != mMaps.end() ? known->second.lock() : nullptr;
	}
	return InterfaceRef<IMediaMap>::FromUnknown(map);
}

std::size_t MediaManager::GetNumEntries()
{
	std::lock_guard const lock(mMutex);
	return mEntries.size();
}

MediaManager::Entries MediaManager::TakeVictim()
{
	Entries victim;
	std::lock_guard const lock(mMutex);
	if (mByteCount > mByteBudget && !mEntries.empty())
	{
		auto const oldest = std::prev(mEntries.end());
		mByteCount -= oldest->mSize;
		mByKey.erase({oldest->mIdentifier, oldest->mIndex});
		victim.splice(victim.begin(), mEntries, oldest);
	}
	return victim;
}

unsigned long long MediaManager::ReadByteBudget()
{
	std::string const text = zorvcore::debug::DebugDatabase::Instance().GetEntry(
		"VX.MediaManager.ByteBudget", std::to_string(kDefaultByteBudget));
	unsigned long long budget = kDefaultByteBudget;
	auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), budget);
	return error == std::errc() ? budget : kDefaultByteBudget;
}

} // namespace

InterfaceRef<IMediaManager> GetMediaManager()
{
	static InterfaceRef<IMediaManager> const sManager = zorvcore::classref::MakeObject<MediaManager>();
	return sManager;
}

Guid CreateMediaMapIdentifier()
{
	constexpr std::uint64_t kFamily = 0x5c0a9e7743b1d268ull;
	static std::atomic<std::uint64_t> sLast{0};
	return {kFamily, ++sLast};
}

} // namespace VX
