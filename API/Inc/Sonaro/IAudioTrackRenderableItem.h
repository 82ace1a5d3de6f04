#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A time span on a track: a clip, a nested mix, a transition or silence. It covers the half-open range
// from the start up to the end, in sequence time. An object that has this interface also has
// IAudioGenerator, which the track pulls.
class SONARO_API IAudioTrackRenderableItem : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioTrackRenderableItem> kIdentifier{
		0x37d23e2a68fcdd4eull, 0x4b02b493fae6e575ull};

	// Stores the three times, each aligned down to a frame of inFrameRate. Not while the item renders.
	virtual void Init(TickTime const& inStartTime, TickTime const& inEndTime,
		TickTime const& inTrackItemStartTime, FrameRate const& inFrameRate) = 0;

	// The first moment of the item, as Init has aligned it.
	virtual TickTime GetStartTime() SONARO_NONBLOCKING = 0;
	// The first moment beyond it.
	virtual TickTime GetEndTime() SONARO_NONBLOCKING = 0;
	// Where the whole clip began. It stays when an item is cut, so that a piece still knows how far into
	// its clip it begins.
	virtual TickTime GetTrackItemStartTime() SONARO_NONBLOCKING = 0;
};

// Items in the order of time, each beginning where the one before ends: silence is an item, too. A track
// is silent where the list has ended. Shared, not owned alone.
using AudioTrackRenderableItemList = zorvcore::allocator::Vector<InterfaceRef<IAudioTrackRenderableItem>>;

} // namespace SN
