#include "RangeRender.h"

#include "Effect/LatencyGrowth.h"
#include "Farm/PieceReplay.h"
#include "Piece/PiecePlan.h"
#include "Piece/PiecewiseRender.h"
#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

namespace
{

// On the calling thread.
std::optional<RangeReport> RenderInOneRun(
	Programme const& inProgramme, RangeRender const& inRender, OfflineRange const& inRange)
{
	SN::TickTime const start(inRange.mFirstFrame, inRange.mFrameRate);
	SN::TickTime const end(inRange.mFirstFrame + inRange.mFrames, inRange.mFrameRate);
	SN::Prefetcher prefetcher{.mStart = start, .mEnd = end};
	SN::Prefetcher* const playback = inRender.mReadsAhead ? &prefetcher : nullptr;
	RenderContextScope const context(inRange.mBlockFrames, end, SN::ImmutableString("render"), playback);
	Sequence::SequenceGraph graph = MakeGraph(inProgramme, context.Get(), inRender.mView, playback);
	CheckMedia(inProgramme, *inProgramme.mMedia);

	std::optional<ReadAhead> readAhead;
	if (playback)
	{
		readAhead.emplace(graph.GetGenerator(), inRange).Advance(0);
	}
	std::int64_t done = 0;
	bool isLate = false;
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const&)
	{
		CheckMedia(inProgramme, *inProgramme.mMedia);
		CheckEffects(inProgramme, graph.GetReport(), inRender.mRange.mFirstFrame + done);
		done += ioBlock.GetUseSize();
		isLate = isLate || HasLateEffect(graph.GetReport());
		if (isLate && !inProgramme.mSearchesLatency)
		{
			throw LatencyGrowth();
		}
		if (!isLate)
		{
			inRender.mSink(ioBlock);
		}
		if (readAhead && !inRender.mStop.stop_requested())
		{
			readAhead->Advance(done);
		}
	};
	if (!RenderOffline(graph.GetGenerator(), inRange, sink, inRender.mStop) ||
		inRender.mStop.stop_requested())
	{
		return std::nullopt;
	}
	if (isLate)
	{
		throw LatencyGrowth();
	}
	return RangeReport{graph.TakeReport(), readAhead ? std::optional(readAhead->GetReport()) : std::nullopt};
}

} // namespace

std::optional<RangeReport> RenderRange(Programme const& inProgramme, RangeRender const& inRender)
{
	OfflineRange range{inRender.mRange.mFrames, inProgramme.GetFrameRate(),
		static_cast<unsigned>(inProgramme.GetLayout().size()),
		ChooseBlock(inProgramme, inRender.mBlockFrames)};
	range.mFirstFrame = inProgramme.mFirstFrame + inRender.mRange.mFirstFrame;
	if (inProgramme.mPieces)
	{
		return Farm::ReplayPieces(inProgramme, inRender, range);
	}
	if (!inProgramme.mMedia->LearnNoise([](std::int64_t) {}, inRender.mStop))
	{
		return std::nullopt;
	}
	bool const canShare = inRender.mJobs > 1 && !inRender.mReadsAhead && inProgramme.mOpenForGraph &&
						  !inProgramme.mSearchesLatency;
	if (inRender.mTakePiece || (canShare && IsWorthPieces(inRender, range.mBlockFrames)))
	{
		PiecewiseReport report = RenderPieces(inProgramme, inRender, range);
		if (report.mIsRendered)
		{
			return report.mIsComplete ? std::optional(RangeReport{std::move(report.mGraph), std::nullopt})
									  : std::nullopt;
		}
	}
	return RenderInOneRun(inProgramme, inRender, range);
}

} // namespace SonaroHost
