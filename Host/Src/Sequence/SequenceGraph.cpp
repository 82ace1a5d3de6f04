#include "SonaroHost/Sequence/SequenceGraph.h"

#include "ControlBlocks.h"
#include "GraphTools.h"
#include "NestBuilder.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Sequence
{

SequenceGraph::SequenceGraph(Description const& inDescription,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate)
	: mLayout(inDescription.mLayout)
{
	GraphTools tools(inContext, inFrameRate);
	BuiltSequence built = NestBuilder(tools, mReport).BuildOutermost(inDescription);
	mGenerator = built.mGenerator;
	mAheadFrames = std::move(built.mAhead);
	// A playback fills an item that it begins within while it plays, and only then the item settles.
	std::int64_t const settlings = inContext->IsPrefetchEnabled() ? 2 : 1;
	mWarmUpFrames = ToControlBlocks(mAheadFrames.back() + settlings * built.mSettlingFrames);
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
