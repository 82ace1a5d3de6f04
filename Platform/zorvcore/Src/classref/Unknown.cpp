#include "zorvcore/classref/Unknown.h"

namespace zorvcore::classref
{

UnknownBase::~UnknownBase() = default;

void* UnknownBase::QueryMap(GUID const& inIdentifier)
{
	return QueryInterfaces<UnknownBase>(this, inIdentifier);
}

Unknown::~Unknown() = default;

void* Unknown::QueryMap(GUID const& inIdentifier)
{
	void* const found = QueryInterfaces<Unknown>(this, inIdentifier);
	return found ? found : UnknownBase::QueryMap(inIdentifier);
}

} // namespace zorvcore::classref
