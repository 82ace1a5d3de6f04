#include "PiecewiseRender.h"

#include "PieceRenderer.h"
#include "PieceRun.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace SonaroHost
{

namespace
{

// Has a graph render the pieces of a plan.
PieceMaker MakeMaker(
	std::shared_ptr<PieceRenderer> inRenderer, PiecePlan const& inPlan, OfflineRange const& inRange)
{
	return [renderer = std::move(inRenderer), length = inPlan.mPieceFrames, frames = inRange.mFrames](
			   std::size_t inPiece, std::atomic<bool> const& inIsEnding, Piece& outPiece)
	{
		std::int64_t const first = static_cast<std::int64_t>(inPiece) * length;
		renderer->Render(first, std::min(length, frames - first), inIsEnding, outPiece);
	};
}

} // namespace

PiecewiseReport RenderPieces(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange)
{
	auto const first = std::make_shared<PieceRenderer>(inProgramme, inRender, inRange);
	CheckMedia(inProgramme, *inProgramme.mMedia);
	PiecewiseReport report;
	PiecePlan const plan = PlanPieces(inProgramme, inRender, inRange.mBlockFrames, first->GetReport());
	if (plan.mJobs == 1 && !inRender.mTakePiece)
	{
		return report;
	}
	report.mIsRendered = true;
	report.mGraph = first->GetReport();
	// Where a graph has to be rendered in one run, the first one does it all.
	auto const makeMore = [&]
	{
		return report.mGraph.mWhyInOneRun.empty()
				   ? MakeMaker(std::make_shared<PieceRenderer>(inProgramme, inRender, inRange), plan, inRange)
				   : PieceMaker();
	};
	RunPieces(inProgramme, inRender, inRange, plan, MakeMaker(first, plan, inRange), makeMore);
	report.mIsComplete = !inRender.mStop.stop_requested();
	return report;
}

} // namespace SonaroHost
