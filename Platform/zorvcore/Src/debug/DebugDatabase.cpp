#include "zorvcore/debug/DebugDatabase.h"

#include "zorvcore/debug/Assert.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

namespace zorvcore::debug
{

namespace
{

std::string_view Trim(std::string_view inText)
{
	constexpr std::string_view kBlanks = " \t\r\n";
	std::size_t const first = inText.find_first_not_of(kBlanks);
	if (first == std::string_view::npos)
	{
		return {};
	}
	return inText.substr(first, inText.find_last_not_of(kBlanks) - first + 1);
}

} // namespace

DebugDatabase& DebugDatabase::Instance()
{
	static auto& database = []() -> DebugDatabase&
	{
		char const* const text = std::getenv("ZORV_DEBUG_DATABASE");
		return *new DebugDatabase(text ? text : "");
	}();
	return database;
}

DebugDatabase::DebugDatabase(std::string_view inText)
{
	while (!inText.empty())
	{
		std::size_t const end = std::min(inText.find(';'), inText.size());
		std::string_view const piece = Trim(inText.substr(0, end));
		inText.remove_prefix(std::min(end + 1, inText.size()));
		std::size_t const equals = piece.find('=');
		std::string_view const key = Trim(piece.substr(0, equals));
		if (piece.empty())
		{
			continue;
		}
		if (equals == std::string_view::npos || key.empty())
		{
			DoSimpleAssert(__FILE__, __LINE__,
				"Malformed entry of the debug database ignored: \"" + std::string(piece) + "\"");
			continue;
		}
		mEntries.insert_or_assign(std::string(key), std::string(Trim(piece.substr(equals + 1))));
	}
}

std::string DebugDatabase::GetEntry(std::string_view inKey, std::string_view inDefault) const
{
	std::lock_guard const lock(mMutex);
	auto const found = mEntries.find(inKey);
	return found == mEntries.end() ? std::string(inDefault) : found->second;
}

bool DebugDatabase::HasEntry(std::string_view inKey) const
{
	std::lock_guard const lock(mMutex);
	return mEntries.find(inKey) != mEntries.end();
}

void DebugDatabase::SetEntry(std::string_view inKey, std::string_view inValue)
{
	std::lock_guard const lock(mMutex);
	mEntries.insert_or_assign(std::string(inKey), std::string(inValue));
	NoteChange();
}

void DebugDatabase::RemoveEntry(std::string_view inKey)
{
	std::lock_guard const lock(mMutex);
	auto const found = mEntries.find(inKey);
	if (found != mEntries.end())
	{
		mEntries.erase(found);
		NoteChange();
	}
}

CachedDebugInteger::CachedDebugInteger(
	std::string_view inKey, std::int32_t inDefault, DebugDatabase& inDatabase)
	: mKey(inKey),
	  mDefault(inDefault),
	  mDatabase(inDatabase)
{
}

std::int32_t CachedDebugInteger::Get() const
{
	std::uint32_t const counter = mDatabase.GetChangeCounter();
	std::uint64_t cached = mCounterAndValue.load(std::memory_order_relaxed);
	if (static_cast<std::uint32_t>(cached >> 32) != counter)
	{
		cached = std::uint64_t(counter) << 32 | static_cast<std::uint32_t>(Read());
		mCounterAndValue.store(cached, std::memory_order_relaxed);
	}
	return static_cast<std::int32_t>(static_cast<std::uint32_t>(cached));
}

std::int32_t CachedDebugInteger::Read() const
{
	using Limits = std::numeric_limits<std::int32_t>;
	std::string const text = mDatabase.GetEntry(mKey, "");
	std::int32_t value = 0;
	auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
	if (end != text.data() + text.size() || error == std::errc::invalid_argument)
	{
		return mDefault;
	}
	if (error == std::errc::result_out_of_range)
	{
		return text.front() == '-' ? Limits::min() : Limits::max();
	}
	return value;
}

} // namespace zorvcore::debug
