#include "zorvcore/utility/ImmutableString.h"

#include "zorvcore/allocator/SmallBlockAllocator.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_set>

namespace zorvcore::utility
{

using allocator::SmallBlockAllocator;

// One text with its count of references, the characters and a zero following it in the same block. At a count of 0 it
// is dying: nobody may revive it, and the thread that took the count there deletes it.
struct ImmutableString::Content
{
	static Content* Create(std::string_view inText)
	{
		void* const block = SmallBlockAllocator::Allocate(BlockSize(inText.size()));
		auto* const content = ::new (block) Content{{1}, inText.size()};
		std::memcpy(content->Characters(), inText.data(), inText.size());
		content->Characters()[inText.size()] = '\0';
		return content;
	}

	static void Destroy(Content* inContent) noexcept
	{
		std::size_t const size = BlockSize(inContent->mLength);
		inContent->~Content();
		SmallBlockAllocator::Dispose(inContent, size);
	}

	bool AddReferenceUnlessDying() noexcept
	{
		std::size_t references = mReferences.load(std::memory_order_relaxed);
		while (references != 0 &&
			   !mReferences.compare_exchange_weak(references, references + 1, std::memory_order_relaxed))
		{
		}
		return references != 0;
	}

	char* Characters() noexcept { return reinterpret_cast<char*>(this + 1); }
	std::string_view Text() noexcept { return {Characters(), mLength}; }

	static std::size_t BlockSize(std::size_t inLength) { return sizeof(Content) + inLength + 1; }

	std::atomic<std::size_t> mReferences;
	std::size_t mLength;
};

// The contents by their text: at most one for each, and none that is dying stays in the way of a new
// one. Never destroyed.
class ImmutableString::Table
{
public:
	static Table& Instance()
	{
		static auto& table = *new Table;
		return table;
	}

	// The content of inText with a reference for the caller.
	Content* Intern(std::string_view inText)
	{
		std::lock_guard const lock(mMutex);
		auto const found = mContents.find(inText);
		if (found != mContents.end())
		{
			if ((*found)->AddReferenceUnlessDying())
			{
				return *found;
			}
			mContents.erase(found);
		}
		Content* const content = Content::Create(inText);
		try
		{
			mContents.insert(content);
		}
		catch (...)
		{
			Content::Destroy(content);
			throw;
		}
		return content;
	}

	// Takes a dying content out, unless a new one has taken its place already.
	void Remove(Content* inContent) noexcept
	{
		std::lock_guard const lock(mMutex);
		auto const found = mContents.find(inContent->Text());
		if (found != mContents.end() && *found == inContent)
		{
			mContents.erase(found);
		}
	}

private:
	struct ByText
	{
		using is_transparent = void;

		static std::string_view TextOf(Content* inContent) noexcept { return inContent->Text(); }
		static std::string_view TextOf(std::string_view inText) noexcept { return inText; }

		template <class T>
		std::size_t operator()(T const& inKey) const noexcept
		{
			return std::hash<std::string_view>()(TextOf(inKey));
		}
		template <class T, class U>
		bool operator()(T const& inA, U const& inB) const noexcept
		{
			return TextOf(inA) == TextOf(inB);
		}
	};

	std::mutex mMutex;
	std::unordered_set<Content*, ByText, ByText> mContents;
};

ImmutableString::ImmutableString(std::string_view inText)
	: mContent(inText.empty() ? nullptr : Table::Instance().Intern(inText))
{
}

ImmutableString::ImmutableString(ImmutableString const& inOther) noexcept
	: mContent(inOther.mContent)
{
	if (mContent)
	{
		mContent->mReferences.fetch_add(1, std::memory_order_relaxed);
	}
}

void ImmutableString::Release(Content* inContent) noexcept
{
	if (inContent->mReferences.fetch_sub(1, std::memory_order_acq_rel) == 1)
	{
		Table::Instance().Remove(inContent);
		Content::Destroy(inContent);
	}
}

std::string_view ImmutableString::GetText() const noexcept
{
	return mContent ? mContent->Text() : std::string_view();
}

char const* ImmutableString::GetCString() const noexcept
{
	return mContent ? mContent->Characters() : "";
}

} // namespace zorvcore::utility
