#pragma once

#include "SonaroHost/OtioSequence/TimelineRange.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Sequence/FileMedia.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

#include <functional>
#include <optional>
#include <stop_token>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost::Otio
{

struct TimelinePass
{
	// The range within the programme.
	ProgrammeRange mRange;
	unsigned mBlockFrames = 0;
	// Called before the range's first block leaves the graph.
	std::function<void()> mBegin;
	// Gets each block of the range and may work in it.
	std::function<void(dsp::AudioBuffer& ioBlock)> mSink;
};

// Renders a range of a programme once, with the samples that the whole programme has there.
// Nothing when asked to stop. Throws a HostError, also when one of the media cannot be decoded.
std::optional<Sequence::GraphReport> RunPass(TimelineSequence const& inSequence, FileMedia const& inMedia,
	TimelinePass const& inPass, std::stop_token const& inStop);

} // namespace SonaroHost::Otio
