#pragma once

#include "Vexilon/MediaEntryLock.h"
#include "Vexilon/MediaManager.h"
#include "zorvcore/classref/Implements.h"
#include "zorvcore/classref/InterfaceRef.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace VX
{

// Names a new store.
ZORV_API zorvcore::utility::Guid CreateMediaMapIdentifier();

// A store of purgeable payloads by index, entered with the media manager. A payload can be moved without throwing, is
// absent when made by default, and reports its memory by GetSizeInBytes().
//
// Nobody waits: a reader who does not find a payload, or finds it being written or purged, goes without.
//
//	Read     R1 TryRead, R2 the payload is used, R3 ReleaseRead
//	Store    W1 TryWrite, W2 the payload is put in, W3 ReleaseWrite, W4 it is entered with the manager
//	Purge    P1 TryPurge, P2 the payload is taken out, P3 ReleasePurge; where P1 fails, P4: R1 to R3 with W4 for R2
//	Discard  D1 TryPurge, D2 it leaves the manager, D3 the payload is taken out, D4 ReleasePurge
//
// W4 comes after W3, since a purge in between would find the entry being written and forget it. D2 comes before D4, since
// another Store may enter it from then on.
//
// Threads  Any, after Init.
template <class T>
class MediaVector final : public zorvcore::classref::Implements<MediaVector<T>, IMediaMap>
{
public:
	static constexpr zorvcore::classref::Identifier<MediaVector> kIdentifier{
		0x1f8c2d7ab5e94630ull, 0xa94d07e3c16f5b82ull};

	MediaVector() = default;
	~MediaVector() override { Discard(); }

	// Makes so many absent entries and registers with the manager. Called once, before all else.
	void Init(unsigned long long inEntries)
	{
		mManager = GetMediaManager();
		mIdentifier = CreateMediaMapIdentifier();
		mEntries = std::make_unique<MapEntry[]>(inEntries);
		mNumEntries = inEntries;
		mManager->Register(*this);
	}

	unsigned long long GetNumEntries() const { return mNumEntries; }

	// Calls inUse with the payload, which cannot be purged meanwhile; false when it cannot be had. Neither
	// allocates nor locks nor frees. What inUse throws passes through.
	template <class Use>
	bool Read(unsigned long long inIndex, Use&& inUse)
	{
		if (inIndex >= mNumEntries || !mEntries[inIndex].mLock.TryRead())
		{
			return false;
		}
		auto const release = [](MediaEntryLock* ioLock) { ioLock->ReleaseRead(); };
		std::unique_ptr<MediaEntryLock, decltype(release)> const scope(&mEntries[inIndex].mLock, release);
		std::forward<Use>(inUse)(std::as_const(mEntries[inIndex].mBuffer));
		return true;
	}

	// Whether the payload is there; then the manager hears that it was used. The entry is not held for it,
	// so that a Discard at the same time does not pass it over.
	bool Touch(unsigned long long inIndex)
	{
		if (inIndex >= mNumEntries || !mEntries[inIndex].mLock.IsReadable())
		{
			return false;
		}
		mManager->TouchEntry(inIndex, mIdentifier);
		return true;
	}

	// Puts a payload where none is; false, and the payload is dropped, when somebody was faster.
	bool Store(unsigned long long inIndex, T inPayload)
	{
		if (inIndex >= mNumEntries || !mEntries[inIndex].mLock.TryWrite())
		{
			return false;
		}
		MapEntry& entry = mEntries[inIndex];
		unsigned long long const size = inPayload.GetSizeInBytes();
		entry.mBuffer = std::move(inPayload);
		entry.mState = kState;
		entry.mLock.ReleaseWrite();
		Enter(inIndex, size);
		return true;
	}

	// Empties every entry that nobody uses at the moment.
	void Discard()
	{
		for (unsigned long long index = 0; index < mNumEntries; ++index)
		{
			MapEntry& entry = mEntries[index];
			if (entry.mLock.TryPurge())
			{
				mManager->RemoveEntry(index, mIdentifier);
				T const dropped = TakePayload(entry);
			}
		}
	}

	void Purge(unsigned long long inIndex) override
	{
		if (inIndex >= mNumEntries)
		{
			return;
		}
		MapEntry& entry = mEntries[inIndex];
		if (entry.mLock.TryPurge())
		{
			T const dropped = TakePayload(entry);
			return;
		}
		// P4: it is in use, and is entered again while it is held, so that nobody can take it away in between.
		Read(inIndex, [&](T const& inPayload) { Enter(inIndex, inPayload.GetSizeInBytes()); });
	}

	zorvcore::utility::Guid GetIdentifier() override { return mIdentifier; }

	bool IsEntryReferenced(unsigned long long inIndex) override
	{
		return inIndex < mNumEntries && mEntries[inIndex].mReferenced.load(std::memory_order_acquire) > 0;
	}

private:
	// The one state that entries are written with.
	static constexpr std::uint32_t kState = 3;

	struct MapEntry
	{
		T mBuffer{};
		std::uint32_t mState = kState;
		MediaEntryLock mLock;
		// Above 0 while the manager should count the entry as in use.
		std::atomic<std::uint32_t> mReferenced{0};
	};

	void Enter(unsigned long long inIndex, unsigned long long inSize)
	{
		mManager->AddEntry(
			inIndex, inSize, kState, false, zorvcore::classref::InterfaceRef<IMediaMap>::FromThis(this));
	}

	// Called under the purge lock, which it releases. The payload is for the caller to drop.
	static T TakePayload(MapEntry& ioEntry)
	{
		T payload = std::exchange(ioEntry.mBuffer, T());
		ioEntry.mState = kState;
		ioEntry.mLock.ReleasePurge();
		ioEntry.mReferenced.exchange(0, std::memory_order_acq_rel);
		return payload;
	}

	std::unique_ptr<MapEntry[]> mEntries;
	unsigned long long mNumEntries = 0;
	zorvcore::classref::InterfaceRef<IMediaManager> mManager;
	zorvcore::utility::Guid mIdentifier;
};

} // namespace VX
