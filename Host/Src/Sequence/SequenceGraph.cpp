#include "SonaroHost/Sequence/SequenceGraph.h"

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
	mWarmUpFrames = mAheadFrames.back() + built.mSettlingFrames;
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
