#pragma once

#include "Piece.h"
#include "PiecePlan.h"
#include "Render/RangeRequest.h"
#include "SonaroHost/Engine/OfflineRender.h"

#include <atomic>
#include <cstddef>
#include <functional>

namespace SonaroHost
{

// Renders the piece of an index, or reads it from a file. Once it is to end, what it leaves does not matter.
// Threads: one at a time.
using PieceMaker =
	std::function<void(std::size_t inPiece, std::atomic<bool> const& inIsEnding, Piece& outPiece)>;

// Has the pieces of a plan made by several threads, the calling one among them, and handed on in order: to what takes
// pieces, or to sink and taps, which get what they would get from one thread. What is thrown meanwhile is thrown on.
// inFirst: the maker of the calling thread. inMakeMore: gives each other thread a maker of its own, one at a time; an
// empty one, or an exception, for a thread that only sees to the sink and the taps.
void RunPieces(Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange,
	PiecePlan const& inPlan, PieceMaker const& inFirst, std::function<PieceMaker()> const& inMakeMore);

} // namespace SonaroHost
