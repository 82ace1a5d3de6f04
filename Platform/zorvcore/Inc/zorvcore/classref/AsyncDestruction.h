#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/allocator/SmallBlockAllocator.h"
#include "zorvcore/classref/InterfaceRef.h"

#include <functional>
#include <memory>
#include <utility>

namespace zorvcore::classref
{

namespace detail
{

// Runs inDestroy on a background thread, so that a release on the calling thread does not pay for the
// destruction. Once that thread is gone, late at process exit, and when memory or threads run out,
// inDestroy runs at once on the calling thread. A function that throws is reported.
//
// The calling thread pays for a short lock and now and then for an allocation.
ZORV_API void CallAsyncDestructionHelper(std::function<void()> inDestroy) noexcept;

// The deleter of objects that are destroyed there. Its own function fits into std::function without an
// allocation.
template <class T>
struct AsyncDeleter
{
	void operator()(T* inObject) const noexcept
	{
		CallAsyncDestructionHelper(
			[inObject]
			{
				allocator::SmallBlockSTLAllocator<T> allocator;
				std::destroy_at(inObject);
				allocator.deallocate(inObject, 1);
			});
	}
};

} // namespace detail

// Waits until everything is destroyed that was handed over so far, and what that handed over in turn.
// Returns at once on the background thread itself.
ZORV_API void WaitForAsyncDestruction();

// Works as MakeObject, with the destruction off the thread that releases the last reference.
template <class T, class... Args>
InterfaceRef<T> MakeAsyncDestroyedObject(Args&&... inArgs)
{
	allocator::SmallBlockSTLAllocator<T> allocator;
	T* const memory = allocator.allocate(1);
	try
	{
		std::construct_at(memory, std::forward<Args>(inArgs)...);
	}
	catch (...)
	{
		allocator.deallocate(memory, 1);
		throw;
	}
	return InterfaceRef<T>::FromObject(std::shared_ptr<T>(memory, detail::AsyncDeleter<T>(), allocator));
}

} // namespace zorvcore::classref
