#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/classref/InterfaceRef.h"
#include "zorvcore/classref/Unknown.h"
#include "zorvcore/utility/Guid.h"

namespace VX
{

// A store of media whose entries may be taken away when memory runs short.
//
// Threads  Any, at any time; the manager calls with none of its own locks held.
class ZORV_API IMediaMap : public virtual zorvcore::classref::Unknown
{
public:
	static constexpr zorvcore::classref::Identifier<IMediaMap> kIdentifier{
		0x7e3f41b2d86a4c05ull, 0x9a17c6e0f2d85b31ull};

	// Gives the entry's memory back, unless it is in use: then it is entered with the manager again.
	virtual void Purge(unsigned long long inIndex) = 0;
	// Distinguishes stores.
	virtual zorvcore::utility::Guid GetIdentifier() = 0;
	// Whether the entry counts as in use, so that others go first.
	virtual bool IsEntryReferenced(unsigned long long inIndex) = 0;

	~IMediaMap() override = default;
};

// The keeper of purgeable memory: counts the bytes of all entries and purges those that were not used for
// the longest time when the budget is exceeded. It holds stores weakly.
//
// Budget   256 MiB; "VX.MediaManager.ByteBudget" of the debug database is looked up when the manager is
//          made.
// Threads  Any. Nothing waits for a store. Entries are purged on the thread whose AddEntry or
//          SetByteBudget exceeded the budget.
class ZORV_API IMediaManager : public virtual zorvcore::classref::Unknown
{
public:
	static constexpr zorvcore::classref::Identifier<IMediaManager> kIdentifier{
		0xd4507f9a3c1e46b8ull, 0x86e2b90f5da7413cull};

	// Makes a store known, before its first entry: what it enters without is not taken.
	virtual void Register(IMediaMap& inMap) = 0;

	// An entry is there, so many bytes large and just used; one that is known already gets the new size.
	// inState is the store's own, and so is inFlag.
	virtual void AddEntry(unsigned long long inIndex, unsigned long long inSizeInBytes, unsigned inState,
		bool inFlag, zorvcore::classref::InterfaceRef<IMediaMap> const& inOwner) = 0;
	// An entry was used. Nothing for one that is not known, here and below.
	virtual void TouchEntry(unsigned long long inIndex, zorvcore::utility::Guid const& inIdentifier) = 0;
	virtual void RemoveEntry(unsigned long long inIndex, zorvcore::utility::Guid const& inIdentifier) = 0;

	virtual void SetByteBudget(unsigned long long inBytes) = 0;
	virtual unsigned long long GetByteBudget() = 0;
	// The bytes of all entries that are known. They exceed the budget only while what is in use does.
	virtual unsigned long long GetByteCount() = 0;

	~IMediaManager() override = default;
};

// The one of the process, made at the first call.
ZORV_API zorvcore::classref::InterfaceRef<IMediaManager> GetMediaManager();

} // namespace VX
