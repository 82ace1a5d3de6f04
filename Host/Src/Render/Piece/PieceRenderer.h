#pragma once

#include "Piece.h"
#include "Render/RangeRequest.h"
#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Media/GraphMedia.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

namespace SonaroHost
{

// A graph, a context and media of one thread, which renders pieces of a range. Pieces that follow each other are one run;
// anywhere else the graph begins anew and settles.
//
// Threads  The constructor: one at a time of all that read the same media. The rest: one at a time.
class PieceRenderer
{
public:
	// inRange: the whole. Throws a HostError when the graph cannot be made. The other two outlive this.
	PieceRenderer(Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange);
	~PieceRenderer();
	PieceRenderer(PieceRenderer const&) = delete;
	PieceRenderer& operator=(PieceRenderer const&) = delete;

	Sequence::GraphReport const& GetReport() const { return mGraph->GetReport(); }

	// Renders frames of the range into a piece that was cleared, until it is asked to end. What is thrown meanwhile becomes
	// the failure of the piece, after the blocks before it.
	void Render(std::int64_t inFirstFrame, std::int64_t inFrames, std::atomic<bool> const& inIsEnding,
		Piece& outPiece) noexcept;

private:
	// The graph's taps, which write what they hear into the piece.
	class TapRecorder;

	Sequence::GraphView MakeView();
	void Begin(SN::TickTime const& inTime);
	void RenderBlocks(std::int64_t inFirstFrame, std::int64_t inFrames, std::atomic<bool> const& inIsEnding,
		Piece& outPiece);

	Programme const& mProgramme;
	RangeRender const& mRender;
	OfflineRange mRange;
	// What is recorded at present; null between pieces.
	std::shared_ptr<Piece*> mPiece;
	std::unique_ptr<GraphMedia> mMedia;
	RenderContextScope mContext;
	std::optional<Sequence::SequenceGraph> mGraph;
	dsp::AudioBuffer mBlock;
	bool mIsRunning = false;
	// The frame of the range that follows what was rendered last.
	std::optional<std::int64_t> mNext;
};

} // namespace SonaroHost
