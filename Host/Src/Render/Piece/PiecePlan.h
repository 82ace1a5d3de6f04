#pragma once

#include "Render/RangeRequest.h"
#include "SonaroHost/Sequence/GraphReport.h"

#include <cstddef>
#include <cstdint>

namespace SonaroHost
{

// How a range is cut into pieces for several threads.
//
// Length   Whole blocks of the range, at least eight and 16 times what a graph settles at a start, so that starts cost
//          little. Beyond that about 16 pieces for each thread, of at most 2^20 frames and 4096 blocks; where there are taps, so short
//          that all that is kept of pieces is about 64 MiB, which stays nearer to the processor.
// Memory   What is kept of pieces (channels of the output and, where there are taps, of all tracks, 4 bytes a sample) stays
//          below 512 MiB, what readers of files hold (8 blocks of 2048 frames each) below 1 GiB, and what graphs hold
//          (about 8 MiB and 16 KiB for each item) below 2 GiB. Under a limit of addresses, each thread but the first wants
//          256 MiB of them, for its stack, what the allocator sets aside for it, and its graph: C libraries that run out
//          of memory crash.
// Files    Each thread opens all media: together they take at most half of the files that the process may open.
// Where one of these does not allow as many threads as are wanted, there are fewer.
struct PiecePlan
{
	static constexpr std::size_t kMostBytes = std::size_t{1} << 29;

	std::size_t GetWindow() const { return 2 * std::size_t{mJobs}; }

	// 1 where pieces would be too few or too short.
	unsigned mJobs = 1;
	std::int64_t mPieceFrames = 0;
	std::size_t mPieces = 1;
};

// Whether a range of so many frames is long enough for more than one piece.
bool IsWorthPieces(RangeRender const& inRender, unsigned inBlockFrames);

// inReport: of a graph of the programme. inBlockFrames: those of a block, as they are rendered.
PiecePlan PlanPieces(Programme const& inProgramme, RangeRender const& inRender, unsigned inBlockFrames,
	Sequence::GraphReport const& inReport);

} // namespace SonaroHost
