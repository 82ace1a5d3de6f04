#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Engine/ReadAhead.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <functional>
#include <optional>
#include <stop_token>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// One run over a range of a programme.
struct RangeRender
{
	ProgrammeRange mRange;
	// The largest block that is wanted.
	unsigned mBlockFrames = 4096;
	Sequence::GraphView mView;
	// Media are read ahead on another thread, as a player does; the samples are the same.
	bool mReadsAhead = false;
	// Gets each block of the range and may work in it.
	std::function<void(dsp::AudioBuffer& ioBlock)> mSink;
	std::stop_token mStop;
};

struct RangeReport
{
	Sequence::GraphReport mGraph;
	// Present when media were read ahead.
	std::optional<ReadAheadReport> mReadAhead;
};

// Renders the range with the samples that the whole programme has there. Nothing when asked to stop. Throws a
// HostError, also when one of the media cannot be decoded.
std::optional<RangeReport> RenderRange(Programme const& inProgramme, RangeRender const& inRender);

} // namespace SonaroHost
