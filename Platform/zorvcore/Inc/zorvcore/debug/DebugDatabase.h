#pragma once

#include "zorvcore/Export.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace zorvcore::debug
{

// Process-wide settings for debugging and tuning: text values under text keys. It starts with what the
// environment variable ZORV_DEBUG_DATABASE holds when the database is first used, in the form
//
//	key=value;key=value
//
// Blanks around keys and values are dropped; pieces without "=" or without a key are reported through
// DoSimpleAssert and ignored; of two pieces with one key the later counts.
//
// Threads  Any.
class ZORV_API DebugDatabase
{
public:
	// Never destroyed.
	static DebugDatabase& Instance();

	// A database of its own, holding the entries of inText.
	explicit DebugDatabase(std::string_view inText);
	DebugDatabase(DebugDatabase const&) = delete;
	DebugDatabase& operator=(DebugDatabase const&) = delete;

	std::string GetEntry(std::string_view inKey, std::string_view inDefault) const;
	bool HasEntry(std::string_view inKey) const;
	void SetEntry(std::string_view inKey, std::string_view inValue);
	void RemoveEntry(std::string_view inKey);

	// Moves with every change of an entry, after the change can be read. Never 0 in a new database.
	std::uint32_t GetChangeCounter() const noexcept { return mChangeCounter.load(std::memory_order_acquire); }

private:
	void NoteChange() noexcept { mChangeCounter.fetch_add(1, std::memory_order_release); }

	mutable std::mutex mMutex;
	std::map<std::string, std::string, std::less<>> mEntries;
	std::atomic<std::uint32_t> mChangeCounter{1};
};

// A whole number in the database that is read anew only when the change counter has moved: at rest one
// atomic load and a compare. A value that is no decimal number counts as absent, one outside 32 bits is
// clamped. Any thread.
class ZORV_API CachedDebugInteger
{
public:
	// inDatabase must outlive this.
	CachedDebugInteger(std::string_view inKey, std::int32_t inDefault,
		DebugDatabase& inDatabase = DebugDatabase::Instance());

	std::int32_t Get() const;

private:
	std::int32_t Read() const;

	std::string const mKey;
	std::int32_t const mDefault;
	DebugDatabase& mDatabase;
	// The counter that the value was read at, above the value; in one word, so that a late writer never
	// leaves an old value under a new counter.
	mutable std::atomic<std::uint64_t> mCounterAndValue{0};
};

} // namespace zorvcore::debug
