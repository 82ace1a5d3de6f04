#pragma once

#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/Pull.h"

namespace SonaroHost::Otio
{

// All of a timeline, in blocks of that size.
SN::Testing::Samples RenderSequence(
	TimelineSequence const& inSequence, unsigned inBlockFrames, Sequence::GraphView const& inView = {});

} // namespace SonaroHost::Otio
