#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace zorvcore::allocator
{

// The standard library's allocator over Memory, which offers
//
//	static void* Allocate(std::size_t);               // aligned to kAlignment
//	static void Dispose(void*, std::size_t) noexcept; // the size asked for
//	static constexpr std::size_t kAlignment;
//
// Types of a larger alignment come from the heap. An allocator has no state: any two are equal.
template <class T, class Memory>
class StandardAllocator
{
public:
	using value_type = T;

	StandardAllocator() = default;
	template <class U>
	StandardAllocator(StandardAllocator<U, Memory> const&) noexcept
	{
	}

	T* allocate(std::size_t inCount)
	{
		if (inCount > std::numeric_limits<std::size_t>::max() / sizeof(T))
		{
			throw std::bad_array_new_length();
		}
		if constexpr (alignof(T) > Memory::kAlignment)
		{
			return static_cast<T*>(::operator new(inCount * sizeof(T), std::align_val_t(alignof(T))));
		}
		else
		{
			return static_cast<T*>(Memory::Allocate(inCount * sizeof(T)));
		}
	}

	void deallocate(T* inBlock, [[maybe_unused]] std::size_t inCount) noexcept
	{
		if constexpr (alignof(T) > Memory::kAlignment)
		{
			::operator delete(inBlock, std::align_val_t(alignof(T)));
		}
		else
		{
			Memory::Dispose(inBlock, inCount * sizeof(T));
		}
	}

	template <class U>
	friend bool operator==(StandardAllocator const&, StandardAllocator<U, Memory> const&) noexcept
	{
		return true;
	}
};

} // namespace zorvcore::allocator
