#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Engine/ReadAhead.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

class Piece;

// One run over a range of a programme.
struct RangeRender
{
	ProgrammeRange mRange;
	// The largest block that is wanted.
	unsigned mBlockFrames = 4096;
	Sequence::GraphView mView;
	// Media are read ahead on another thread, as a player does; the samples are the same.
	bool mReadsAhead = false;
	// Gets each block of the range in order and may work in it. One call at a time, each on any of the threads that render.
	std::function<void(dsp::AudioBuffer& ioBlock)> mSink;
	// Gets what sink and taps would get in pieces, in order, instead of them; empty for none. What is recorded of taps is
	// numbered in the order of their origins, and their meters may be null.
	std::function<void(Piece& ioPiece)> mTakePiece;
	std::stop_token mStop;
	// How many threads render, at most; what is heard, and what the sink and the taps get, is the same.
	unsigned mJobs = 1;
	// Origins of taps that hear one at a time, each on any of the threads; other groups hear beside them. Taps that stand in
	// no group are one together. With one job all hear on the calling thread.
	std::vector<std::vector<std::string>> mTapGroups;
	// The frames of the pieces that threads render, rounded up to blocks, for tests; 0 for those that suit.
	std::int64_t mPieceFrames = 0;
};

struct RangeReport
{
	Sequence::GraphReport mGraph;
	// Present when media were read ahead.
	std::optional<ReadAheadReport> mReadAhead;
};

} // namespace SonaroHost
