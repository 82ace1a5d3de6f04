#pragma once

#include "zorvcore/allocator/SmallBlockAllocator.h"
#include "zorvcore/classref/Unknown.h"
#include "zorvcore/config/Exceptions.h"
#include "zorvcore/debug/TypeName.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace zorvcore::classref
{

// The strong reference of the object model: the object as T*, its Unknown and the shared count.
//
// Conversion   From any other InterfaceRef, by asking the object for T's identifier; empty when it does
//              not answer. Never a cast.
// Identity     Compares, orders and hashes by the Unknown, so that two references to one object are
//              equal whatever interfaces they hold.
// Errors       Dereferencing an empty reference raises the null-pointer exception with T's name.
// Threads      The count is atomic; a reference itself is not shared between threads.
template <class T>
class InterfaceRef
{
public:
	using Type = T;

	InterfaceRef() = default;
	InterfaceRef(std::nullptr_t) {}
	InterfaceRef(InterfaceRef const&) = default;
	InterfaceRef(InterfaceRef&& ioOther) noexcept
		: mObject(std::exchange(ioOther.mObject, nullptr)),
		  mUnknown(std::move(ioOther.mUnknown))
	{
	}
	InterfaceRef& operator=(InterfaceRef const&) = default;
	InterfaceRef& operator=(InterfaceRef&& ioOther) noexcept
	{
		mObject = std::exchange(ioOther.mObject, nullptr);
		mUnknown = std::move(ioOther.mUnknown);
		return *this;
	}

	// The object behind inOther as T.
	template <class U>
	requires(!std::is_same_v<U, T>) InterfaceRef(InterfaceRef<U> const& inOther)
		: InterfaceRef(FromUnknown(inOther.GetUnknown()))
	{
	}

	// Takes the object as it is, without a query: for makers that know the class.
	static InterfaceRef FromObject(std::shared_ptr<T> const& inObject)
	{
		InterfaceRef result;
		result.mObject = inObject.get();
		result.mUnknown = inObject;
		return result;
	}

	// The object behind inUnknown as T, by query; empty when it does not answer.
	static InterfaceRef FromUnknown(std::shared_ptr<Unknown> const& inUnknown)
	{
		InterfaceRef result;
		if (inUnknown)
		{
			static_assert(std::is_same_v<typename decltype(T::kIdentifier)::Type, T>,
				"a queried type needs an identifier of its own");
			result.mObject = static_cast<T*>(detail::QueryAccess::Query(*inUnknown, T::kIdentifier));
			if (result.mObject)
			{
				result.mUnknown = inUnknown;
			}
		}
		return result;
	}

	// The object that inObject points at, which must be alive and shared already; empty for null.
	static InterfaceRef FromThis(UnknownBase* inObject)
	{
		if (!inObject)
		{
			return {};
		}
		auto* const unknown =
			static_cast<Unknown*>(detail::QueryAccess::Query(*inObject, Unknown::kIdentifier));
		return unknown ? FromUnknown(std::shared_ptr<Unknown>(inObject->GetSharedFromThis(), unknown))
					   : InterfaceRef();
	}

	explicit operator bool() const { return IsValid(); }
	bool IsValid() const { return mObject != nullptr && mUnknown != nullptr; }
	T* operator->() const { return &Checked(); }
	T& operator*() const { return Checked(); }

	// The object, null when empty.
	T* Get() const { return mObject; }
	std::shared_ptr<Unknown> const& GetUnknown() const { return mUnknown; }
	void Reset() { *this = InterfaceRef(); }

private:
	T& Checked() const
	{
		if (!mObject) [[unlikely]]
		{
			config::DoThrowNullPtrException(debug::GetTypeName(typeid(T)));
		}
		return *mObject;
	}

	T* mObject = nullptr;
	std::shared_ptr<Unknown> mUnknown;
};

template <class T, class U>
bool operator==(InterfaceRef<T> const& inA, InterfaceRef<U> const& inB)
{
	return inA.GetUnknown().get() == inB.GetUnknown().get();
}

template <class T>
bool operator==(InterfaceRef<T> const& inRef, std::nullptr_t)
{
	return !inRef.IsValid();
}

template <class T, class U>
bool operator<(InterfaceRef<T> const& inA, InterfaceRef<U> const& inB)
{
	return std::less<Unknown const*>()(inA.GetUnknown().get(), inB.GetUnknown().get());
}

// Makes an object on the small-block allocator and lets it know itself for GetSharedFromThis. Objects
// that need their own identity while they set up do so in an Init of their own, after this.
template <class T, class... Args>
InterfaceRef<T> MakeObject(Args&&... inArgs)
{
	return InterfaceRef<T>::FromObject(
		std::allocate_shared<T>(allocator::SmallBlockSTLAllocator<T>(), std::forward<Args>(inArgs)...));
}

} // namespace zorvcore::classref

template <class T>
struct std::hash<zorvcore::classref::InterfaceRef<T>>
{
	std::size_t operator()(zorvcore::classref::InterfaceRef<T> const& inRef) const noexcept
	{
		return std::hash<void const*>()(inRef.GetUnknown().get());
	}
};
