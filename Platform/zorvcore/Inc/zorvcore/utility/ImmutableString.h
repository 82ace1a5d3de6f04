#pragma once

#include "zorvcore/Export.h"

#include <compare>
#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>

namespace zorvcore::utility
{

// A shared constant string. Equal texts share one content, so that equality, order and hash go by the
// content's identity: the cost of comparing two pointers. The order is the same for the life of a
// content, and no alphabetical one.
//
// Cost     Making one from a text takes a process-wide lock and may allocate: not for the render path.
//          Copies count a reference and never allocate; neither does comparing. Releasing the last
//          reference takes the lock.
// Empty    The default; every empty text equals it.
// Threads  Any. One object is not to be changed by two threads at a time. Static objects may be made
//          and destroyed in any order.
class ZORV_API ImmutableString
{
public:
	constexpr ImmutableString() noexcept = default;
	// inText: UTF-8.
	explicit ImmutableString(std::string_view inText);
	ImmutableString(ImmutableString const& inOther) noexcept;
	constexpr ImmutableString(ImmutableString&& ioOther) noexcept
		: mContent(std::exchange(ioOther.mContent, nullptr))
	{
	}
	ImmutableString& operator=(ImmutableString const& inOther) noexcept
	{
		ImmutableString(inOther).Swap(*this);
		return *this;
	}
	ImmutableString& operator=(ImmutableString&& ioOther) noexcept
	{
		ImmutableString(std::move(ioOther)).Swap(*this);
		return *this;
	}
	~ImmutableString()
	{
		if (mContent)
		{
			Release(mContent);
		}
	}

	bool IsEmpty() const noexcept { return !mContent; }
	// Valid as long as any string of this content lives.
	std::string_view GetText() const noexcept;
	// The same, zero-terminated.
	char const* GetCString() const noexcept;

	friend bool operator==(ImmutableString const& inA, ImmutableString const& inB) noexcept
	{
		return inA.mContent == inB.mContent;
	}
	friend std::strong_ordering operator<=>(ImmutableString const& inA, ImmutableString const& inB) noexcept
	{
		return std::compare_three_way()(inA.mContent, inB.mContent);
	}

private:
	friend struct std::hash<ImmutableString>;
	struct Content;
	class Table;

	static void Release(Content* inContent) noexcept;
	void Swap(ImmutableString& ioOther) noexcept { std::swap(mContent, ioOther.mContent); }

	// Null for the empty text.
	Content* mContent = nullptr;
};

} // namespace zorvcore::utility

template <>
struct std::hash<zorvcore::utility::ImmutableString>
{
	std::size_t operator()(zorvcore::utility::ImmutableString const& inString) const noexcept
	{
		return std::hash<void const*>()(inString.mContent);
	}
};
