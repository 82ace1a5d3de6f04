#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/allocator/SmallBlockAllocator.h"

#include <cstddef>
#include <limits>
#include <new>
#include <vector>

namespace zorvcore::allocator
{

// Memory for containers: tells how much room a block really has, so that a caller may use all of it.
// Blocks of up to SmallBlockAllocator::kLargestBlock bytes are recycled through its lists.
//
// Alignment  16 bytes.
// Errors     std::bad_alloc.
// Threads    Any.
class ZORV_API MemoryRecycler
{
public:
	// outActualSize: bytes that may be used, at least inSize.
	static void* Allocate(std::size_t inSize, std::size_t& outActualSize);
	// inSize is either size of the allocation: the one asked for or the actual one. Null is ignored.
	static void Recycle(void* inBlock, std::size_t inSize) noexcept;
};

// The standard allocator over it. Types of a larger alignment come from the heap.
template <class T>
class STLAllocator
{
public:
	using value_type = T;

	STLAllocator() = default;
	template <class U>
	STLAllocator(STLAllocator<U> const&) noexcept
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
			std::size_t actualSize = 0;
			return static_cast<T*>(MemoryRecycler::Allocate(inCount * sizeof(T), actualSize));
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
			MemoryRecycler::Recycle(inBlock, inCount * sizeof(T));
		}
	}

	template <class U>
	friend bool operator==(STLAllocator const&, STLAllocator<U> const&) noexcept
	{
		return true;
	}
};

template <class T>
using Vector = std::vector<T, STLAllocator<T>>;

} // namespace zorvcore::allocator
