#pragma once

#include "Sonaro/IAudioMeterSetter.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Sequence/NodeLabels.h"

#include <map>
#include <memory>
#include <set>
#include <string>

namespace SonaroHost::Sequence
{

// What a graph leaves out of its description, and who listens to it. Tracks and items are named by their mOrigin, which
// no others have then; only an item may have that of its track.
struct GraphView
{
	// The meter of a track or an item; null for none.
	SN::InterfaceRef<SN::IAudioMeterSetter> FindTap(std::string const& inOrigin) const
	{
		auto const found = mTaps.find(inOrigin);
		return found != mTaps.end() ? found->second : SN::InterfaceRef<SN::IAudioMeterSetter>();
	}

	// Tracks that are not there for this graph, neither they nor their sends.
	std::set<std::string> mLeftOut;
	// Meters that hear a track or an item after all its stages and before its pan; one that names both hears the track.
	// Instances of a nested sequence share them.
	std::map<std::string, SN::InterfaceRef<SN::IAudioMeterSetter>> mTaps;
	// Filled while the graph is made; null where nobody draws it.
	std::shared_ptr<NodeLabels> mLabels;
};

} // namespace SonaroHost::Sequence
