#include "SonaroHost/Sequence/SequenceGraph.h"

#include "GraphTools.h"
#include "NestBuilder.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

SequenceGraph::SequenceGraph(Description const& inDescription,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
	SN::Prefetcher const* inPrefetcher)
	: mLayout(inDescription.mLayout)
{
	GraphTools tools(inContext, inFrameRate);
	mGenerator = NestBuilder(tools, mReport).BuildOutermost(inDescription, inPrefetcher);
}

SN::TickTime GetLength(Description const& inDescription)
{
	SN::TickTime length;
	for (Track const& track : inDescription.mTracks)
	{
		for (Item const& item : track.mItems)
		{
			length = std::max(length, item.mEnd);
		}
	}
	return length;
}

} // namespace SonaroHost::Sequence
