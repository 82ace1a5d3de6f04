#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A node whose audio can be moved later in time for a preview.
class SONARO_API IOffsetablePreview : public virtual Unknown
{
public:
	static constexpr Identifier<IOffsetablePreview> kIdentifier{0x9b508ad1dfe00241ull, 0xaf36aa8347995669ull};

	// Adds to the node's preview offset: what stood at time t then stands at t + inOffset.
	virtual void AddPreviewOffset(TickTime const& inOffset) = 0;
};

} // namespace SN
