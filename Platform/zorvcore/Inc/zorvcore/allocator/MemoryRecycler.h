#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/allocator/SmallBlockAllocator.h"
#include "zorvcore/allocator/StandardAllocator.h"

#include <cstddef>
#include <vector>

namespace zorvcore::allocator
{

// Memory for containers: reports how much room a block really has, so that a caller may use all of it. Blocks of up
// to SmallBlockAllocator::kLargestBlock bytes are recycled through its lists.
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

namespace detail
{

// The recycler in the form that StandardAllocator asks for.
struct RecycledMemory
{
	static constexpr std::size_t kAlignment = SmallBlockAllocator::kAlignment;

	static void* Allocate(std::size_t inSize)
	{
		std::size_t actualSize = 0;
		return MemoryRecycler::Allocate(inSize, actualSize);
	}
	static void Dispose(void* inBlock, std::size_t inSize) noexcept
	{
		MemoryRecycler::Recycle(inBlock, inSize);
	}
};

} // namespace detail

template <class T>
using STLAllocator = StandardAllocator<T, detail::RecycledMemory>;

template <class T>
using Vector = std::vector<T, STLAllocator<T>>;

} // namespace zorvcore::allocator
