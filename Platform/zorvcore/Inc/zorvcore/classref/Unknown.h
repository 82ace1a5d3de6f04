#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/utility/Guid.h"

#include <memory>
#include <type_traits>

namespace zorvcore::classref
{

using utility::Guid;

// The identifier of one interface or class, tied to its type. Every interface, and every class that
// somebody queries for, has a public constant
//
//	static constexpr Identifier<IThing> kIdentifier{0x..., 0x...};
//
// The type parameter keeps a class from answering under the identifier that it inherited.
template <class T>
struct Identifier : Guid
{
	using Type = T;
	using Guid::Guid;
};

namespace detail
{
struct QueryAccess;
}

// The identity of an object: one per object, however many interfaces it has.
class ZORV_API UnknownBase : public std::enable_shared_from_this<UnknownBase>
{
public:
	static constexpr Identifier<UnknownBase> kIdentifier{0x5a2f0f1c0c6d4b39ull, 0x9d0b6c2f6b1e7f10ull};

	UnknownBase() = default;
	UnknownBase(UnknownBase const&) = delete;
	UnknownBase& operator=(UnknownBase const&) = delete;
	virtual ~UnknownBase();

	// The shared ownership of this object. Works only after construction, on objects made with
	// MakeObject (or another shared_ptr); throws std::bad_weak_ptr otherwise.
	std::shared_ptr<UnknownBase> GetSharedFromThis() { return shared_from_this(); }

protected:
	// The object as the interface or class that inIdentifier names, or null if it is none of its own.
	// See Implements, which fills it in.
	virtual void* QueryMap(GUID const& inIdentifier);

private:
	friend struct detail::QueryAccess;
};

// The root that every interface derives from, virtually.
class ZORV_API Unknown : public virtual UnknownBase
{
public:
	static constexpr Identifier<Unknown> kIdentifier{0x3c1d8f7e2b604a55ull, 0x8e47d1a9c05b3f62ull};

	~Unknown() override;

protected:
	void* QueryMap(GUID const& inIdentifier) override;
};

namespace detail
{

struct QueryAccess
{
	static void* Query(UnknownBase& inObject, Guid const& inIdentifier)
	{
		return inObject.QueryMap(inIdentifier);
	}
};

} // namespace detail

// inSelf as the first of Ts that inIdentifier names, or null. Serves objects that answer otherwise than by their
// bases.
template <class... Ts, class Self>
void* QueryInterfaces(Self* inSelf, Guid const& inIdentifier)
{
	static_assert((std::is_same_v<typename decltype(Ts::kIdentifier)::Type, Ts> && ...),
		"each queried type needs an identifier of its own");
	void* found = nullptr;
	static_cast<void>(
		((inIdentifier == Ts::kIdentifier && (found = static_cast<Ts*>(inSelf)) != nullptr) || ...));
	return found;
}

} // namespace zorvcore::classref
