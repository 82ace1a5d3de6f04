#include "zorvcore/allocator/MemoryRecycler.h"

#include <algorithm>
#include <limits>

namespace zorvcore::allocator
{

namespace
{

// Rounding up twice is rounding up once, so that a block may be recycled under either of its sizes.
// Sizes near the end of the address space stay as they are and fail in the allocation.
std::size_t ActualSize(std::size_t inSize)
{
	constexpr std::size_t kMask = SmallBlockAllocator::kAlignment - 1;
	std::size_t const size = std::max<std::size_t>(inSize, 1);
	return size > std::numeric_limits<std::size_t>::max() - kMask ? size : (size + kMask) & ~kMask;
}

} // namespace

void* MemoryRecycler::Allocate(std::size_t inSize, std::size_t& outActualSize)
{
	std::size_t const actualSize = ActualSize(inSize);
	void* const block = SmallBlockAllocator::Allocate(actualSize);
	outActualSize = actualSize;
	return block;
}

void MemoryRecycler::Recycle(void* inBlock, std::size_t inSize) noexcept
{
	SmallBlockAllocator::Dispose(inBlock, ActualSize(inSize));
}

} // namespace zorvcore::allocator
