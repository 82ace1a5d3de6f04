#pragma once

#include "Sonaro/IAudioRenderContext.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

namespace SonaroHost::Otio
{

// The engine's graph of a timeline, at the timeline's rate; inContext as SequenceGraph wants it. Throws a HostError of
// kind eInput that names the timeline's file and the place in it for a timeline that cannot be rendered, such as one
// that is nested too deep or has a clip that ends beyond 50 hours.
Sequence::SequenceGraph MakeTimelineGraph(
	TimelineSequence const& inSequence, SN::InterfaceRef<SN::IAudioRenderContext> const& inContext);

// How many frames to render at a time: as many as wanted, unless the channels of very many tracks would keep more
// than 8 MiB of such blocks. Besides the memory, smaller ones then save time, since they fit into the caches of
// processors.
unsigned ChooseBlock(TimelineSequence const& inSequence, unsigned inWanted);

// Throws the HostError that a render of the timeline would end with before its first block, for those who render
// nothing of it: for no length, for silence, or for a graph that cannot be made.
void CheckCanRender(TimelineSequence const& inSequence);

// Throws a HostError for a programme without a sample, and one of kind eNothingHeard where nothing of it is heard.
void CheckHasSound(TimelineSequence const& inSequence);

} // namespace SonaroHost::Otio
