#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/classref/Unknown.h"
#include "zorvmediatypes/TickTime.h"

namespace VX
{

// A mapping of one time line onto another, implemented by the host: where in the source the sound of a
// moment comes from. Pure: the same time gives the same answer, on any thread.
class ZORV_API ITimeTransform : public virtual zorvcore::classref::Unknown
{
public:
	static constexpr zorvcore::classref::Identifier<ITimeTransform> kIdentifier{
		0x2b6d0c5e914f4f7aull, 0xb3f8a15d67c2e094ull};

	virtual zorvmediatypes::TickTime GetTime(zorvmediatypes::TickTime const& inTime) = 0;

	~ITimeTransform() override = default;
};

} // namespace VX
