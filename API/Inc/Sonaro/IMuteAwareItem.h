#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// Marks an item on a track that has to keep running while the track is muted: it is rendered, and what it
// gives is dropped. For the host's own items.
class SONARO_API IMuteAwareItem : public virtual Unknown
{
public:
	static constexpr Identifier<IMuteAwareItem> kIdentifier{0x55eb3b0781e34570ull, 0xba1341a69ceb9aa8ull};

	~IMuteAwareItem() override = default;
};

} // namespace SN
