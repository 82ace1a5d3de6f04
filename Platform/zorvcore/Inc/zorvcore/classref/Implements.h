#pragma once

#include "zorvcore/classref/Unknown.h"

#include <type_traits>

namespace zorvcore::classref
{

// The base of a class of objects: derives it from Bases and answers for them when the object is queried.
//
//	class Clip final : public Implements<Clip, IGenerator, INodeInfo, ItemMixin>, public ContextClient
//
// Bases    Interfaces; classes that fill one in and have no identifier of their own, which answer as that
//          interface; and classes that answer for themselves, which are asked after all others.
// Self     Answers where it has an identifier of its own; a class without one cannot be queried for.
// Pointer  Each answer is the one that a cast of the object would give.
template <class Self, class... Bases>
class ZORV_API Implements : public Bases..., public virtual Unknown
{
	static_assert((std::is_base_of_v<Unknown, Bases> && ...), "what is no object stands beside this base");

public:
	Implements() = default;
	using Bases::Bases...;

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		void* found = nullptr;
		static_cast<void>(((found = AnswerFor<Bases>(inIdentifier)) || ...) ||
						  (found = AnswerFor<Self>(inIdentifier)) ||
						  ((found = Bases::QueryMap(inIdentifier)) || ...));
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	// The object as the type whose identifier Type has or inherits. None where it inherits several, as that of a
	// class that answers for itself.
	template <class Type>
	void* AnswerFor(Guid const& inIdentifier)
	{
		if constexpr (requires { Type::kIdentifier; })
		{
			using Answer = typename decltype(Type::kIdentifier)::Type;
			if (inIdentifier == Type::kIdentifier)
			{
				return static_cast<Answer*>(static_cast<Type*>(this));
			}
		}
		return nullptr;
	}
};

} // namespace zorvcore::classref
