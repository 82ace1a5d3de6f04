#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/allocator/StandardAllocator.h"

#include <cstddef>

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

template <class T>
using SmallBlockSTLAllocator = StandardAllocator<T, SmallBlockAllocator>;

} // namespace zorvcore::allocator
