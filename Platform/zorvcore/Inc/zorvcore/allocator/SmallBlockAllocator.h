#pragma once

#include "zorvcore/Export.h"

#include <cstddef>
#include <limits>
#include <new>

namespace zorvcore::allocator
{

// Memory for small objects from free lists by size class; the heap above the largest class.
//
// Alignment  16 bytes.
// Errors     std::bad_alloc; a size of 0 gives a block of its own.
// Memory     A block goes back to its list, never to the system: what the lists hold is bounded by the
//            peak use of each class. Sanitizer builds go straight to the heap, so that leaks and
//            overruns are seen.
// Threads    Any, also in destructors of statics and of thread locals. Each thread has lists of its own
//            and trades with a shared store in batches, so that most calls take no lock.
class ZORV_API SmallBlockAllocator
{
public:
	static constexpr std::size_t kAlignment = 16;
	static constexpr std::size_t kLargestBlock = 256;

	static void* Allocate(std::size_t inSize);
	// inSize is the size that Allocate was asked for. Null is ignored.
	static void Dispose(void* inBlock, std::size_t inSize) noexcept;
};

// The standard allocator over it. Types of a larger alignment come from the heap.
template <class T>
class SmallBlockSTLAllocator
{
public:
	using value_type = T;

	SmallBlockSTLAllocator() = default;
	template <class U>
	SmallBlockSTLAllocator(SmallBlockSTLAllocator<U> const&) noexcept
	{
	}

	T* allocate(std::size_t inCount)
	{
		if (inCount > std::numeric_limits<std::size_t>::max() / sizeof(T))
		{
			throw std::bad_array_new_length();
		}
		if constexpr (alignof(T) > SmallBlockAllocator::kAlignment)
		{
			return static_cast<T*>(::operator new(inCount * sizeof(T), std::align_val_t(alignof(T))));
		}
		else
		{
			return static_cast<T*>(SmallBlockAllocator::Allocate(inCount * sizeof(T)));
		}
	}

	void deallocate(T* inBlock, [[maybe_unused]] std::size_t inCount) noexcept
	{
		if constexpr (alignof(T) > SmallBlockAllocator::kAlignment)
		{
			::operator delete(inBlock, std::align_val_t(alignof(T)));
		}
		else
		{
			SmallBlockAllocator::Dispose(inBlock, inCount * sizeof(T));
		}
	}

	template <class U>
	friend bool operator==(SmallBlockSTLAllocator const&, SmallBlockSTLAllocator<U> const&) noexcept
	{
		return true;
	}
};

} // namespace zorvcore::allocator
