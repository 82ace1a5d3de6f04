#pragma once

#include "Sonaro/Types.h"
#include "Vexilon/ITimeTransform.h"

namespace SN
{

// Times as they are: the transform of an item that plays its source from the start.
class IdentityTimeTransform final : public Implements<IdentityTimeTransform, VX::ITimeTransform>
{
public:
	static constexpr Identifier<IdentityTimeTransform> kIdentifier{
		0x8d3a5be70c91f264ull, 0xb7204e69d85fa13cull};

	TickTime GetTime(TickTime const& inTime) override { return inTime; }
};

} // namespace SN
