#pragma once

#include "zorvcore/classref/Unknown.h"

namespace SN::Testing
{

// The base of a fake that answers for these interfaces and for nothing else.
template <class... Interfaces>
class Answers : public Interfaces...
{
protected:
	void* QueryMap(zorvcore::utility::Guid const& inIdentifier) override
	{
		void* const found = zorvcore::classref::QueryInterfaces<Interfaces...>(this, inIdentifier);
		return found ? found : zorvcore::classref::Unknown::QueryMap(inIdentifier);
	}
};

} // namespace SN::Testing
