#pragma once

#include "ClipMedia.h"
#include "Ranges.h"

#include "Sonaro/Types.h"

#include <unordered_map>

namespace SonaroHost::Otio
{

// How wide things are: clips as their media or their routing, compositions as the widest of what is heard in them,
// stacks as they say. What is panned is at least stereo.
class Layouts
{
public:
	// Outlives this object.
	explicit Layouts(ClipMediaTable& ioMedia)
		: mMedia(ioMedia)
	{
	}

	// The clip's layout before any pan of its own.
	SN::AudioChannelLayout const& GetLayout(Clip const& inClip);
	// The layout that an item's sound wants: before any pan of its own, and after it. Both are empty where nothing is heard.
	SN::AudioChannelLayout const& GetInnerWidth(ItemView const& inItem);
	SN::AudioChannelLayout const& GetWidth(ItemView const& inItem);

	// inLayout as far as it is no wider than inLimit, and inLimit for none.
	static SN::AudioChannelLayout const& Limit(
		SN::AudioChannelLayout const& inLayout, SN::AudioChannelLayout const& inLimit);
	// Whether a pan leads from one layout to the other; see LayoutPlan.
	static bool CanPan(SN::AudioChannelLayout const& inFrom, SN::AudioChannelLayout const& inTo);

private:
	SN::AudioChannelLayout FindWidth(ItemView const& inItem);

	ClipMediaTable& mMedia;
	// Of compositions.
	std::unordered_map<Item const*, SN::AudioChannelLayout> mWidths;
};

} // namespace SonaroHost::Otio
