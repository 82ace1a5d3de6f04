#include "PieceReplay.h"

#include "PieceSet.h"
#include "Render/Piece/PieceRun.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/RenderContextScope.h"

#include <algorithm>
#include <exception>
#include <map>
#include <utility>

namespace SonaroHost::Farm
{

namespace
{

// Which of the render's taps each of the pieces' taps is; empty where the render has none.
std::vector<std::size_t> MatchTaps(PieceSet const& inPieces, RangeRender const& inRender)
{
	std::map<std::string, std::size_t> numbers;
	for (auto const& [origin, meter] : inRender.mView.mTaps)
	{
		numbers.emplace(origin, numbers.size());
	}
	std::vector<std::size_t> taps;
	for (std::string const& origin : inPieces.GetTaps())
	{
		if (auto const found = numbers.find(origin); found != numbers.end())
		{
			taps.push_back(found->second);
		}
	}
	if (!numbers.empty() && (taps.size() != numbers.size() || taps.size() != inPieces.GetTaps().size()))
	{
		Refuse(
			"the pieces do not carry the levels of tracks, which a report has; plan with --track-levels, or "
			"leave the report out");
	}
	return numbers.empty() ? std::vector<std::size_t>() : taps;
}

// What the graph of the programme reports, which is not rendered.
Sequence::GraphReport MakeReport(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange)
{
	RenderContextScope const context(inRange.mBlockFrames,
		SN::TickTime(inRange.mFirstFrame + inRange.mFrames, inRange.mFrameRate), SN::ImmutableString("join"));
	return MakeGraph(inProgramme, context.Get(), inRender.mView).TakeReport();
}

} // namespace

std::optional<RangeReport> ReplayPieces(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange)
{
	PieceSet const& pieces = *inProgramme.mPieces;
	if (inRender.mRange.mFirstFrame != pieces.GetRange().mFirstFrame ||
		inRender.mRange.mFrames != pieces.GetRange().mFrames)
	{
		throw HostError(HostError::Kind::kEngine, "pieces were asked for another range than they hold");
	}
	std::vector<std::size_t> const taps = MatchTaps(pieces, inRender);
	RangeReport report{MakeReport(inProgramme, inRender, inRange), std::nullopt};
	PiecePlan plan;
	plan.mJobs = static_cast<unsigned>(std::min<std::size_t>(inRender.mJobs, pieces.CountSegments()));
	plan.mPieces = pieces.CountSegments();
	plan.mPieceFrames = pieces.GetMostFrames();
	PieceMaker const read = [&](std::size_t inPiece, std::atomic<bool> const&, Piece& outPiece)
	{
		try
		{
			pieces.Read(inPiece, taps, outPiece);
		}
		catch (...)
		{
			outPiece.mFailure = std::current_exception();
		}
	};
	RunPieces(inProgramme, inRender, inRange, plan, read, [&] { return read; });
	return inRender.mStop.stop_requested() ? std::nullopt : std::optional(std::move(report));
}

} // namespace SonaroHost::Farm
