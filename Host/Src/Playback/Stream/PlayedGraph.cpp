#include "PlayedGraph.h"

#include "Sonaro/PrefetchRange.h"
#include "Sonaro/PrefetchRequestAccumulator.h"

#include <algorithm>

namespace SonaroHost::Playback
{

PlayedGraph::PlayedGraph(Programme const& inProgramme, unsigned inBlockFrames)
	: mProgramme(inProgramme),
	  mBlockFrames(inBlockFrames),
	  mMedia(mProgramme.mOpenForGraph ? mProgramme.mOpenForGraph() : nullptr),
	  mContext(inBlockFrames, SN::kTimeMax, SN::ImmutableString("playback"), &mPrefetcher),
	  mGraph(MakeGraph(mProgramme, mContext.Get(), {}, &mPrefetcher))
{
	for (Sequence::TrackReport const& track : mGraph.GetReport().mTracks)
	{
		mAheadFrames = std::max(mAheadFrames, track.mAheadFrames);
	}
	mGraph.GetGenerator()->InitializeAudioFilters();
	mGraph.GetGenerator()->Preroll(ToTime(0), false);
}

PlayedGraph::~PlayedGraph()
{
	mGraph.GetGenerator()->ShutdownAudioFilters();
}

void PlayedGraph::SetOrder(PlayOrder const& inOrder)
{
	mPrefetcher.mLoopEnabled = inOrder.IsLoop() ? 1 : 0;
	mPrefetcher.mReverse = inOrder.mIsReverse ? 1 : 0;
	mPrefetcher.mStart = ToTime(inOrder.mLoopFirst);
	mPrefetcher.mEnd = ToTime(inOrder.mLoopEnd);
}

void PlayedGraph::Render(PlayOrder const& inOrder, std::int64_t inPlace, dsp::AudioBuffer& ioBuffer)
{
	if (!IsWithin(inOrder, inPlace))
	{
		ioBuffer.Zero();
		return;
	}
	std::int64_t const lowest = inOrder.mIsReverse ? inPlace - ioBuffer.GetUseSize() : inPlace;
	mGraph.GetGenerator()->GetAudioData(ToTime(lowest), ioBuffer, inOrder.mIsReverse);
}

void PlayedGraph::AddRequests(PlayOrder const& inOrder, std::int64_t inPlace, std::int64_t inFrames,
	std::vector<SN::AudioPrefetch::PrefetchRequest>& ioRequests)
{
	if (!IsWithin(inOrder, inPlace))
	{
		return;
	}
	std::int64_t const lowest = inOrder.mIsReverse ? inPlace - inFrames : inPlace;
	SN::PrefetchRequestAccumulator accumulator(
		SN::PrefetchRequestAccumulator::ExtendCapacity, nullptr, &ioRequests);
	mGraph.GetGenerator()->AccumulatePrefetchRequests(
		{ToTime(lowest), ToTime(lowest + inFrames)}, SN::AsynchronousPrefetch, accumulator);
}

std::int64_t PlayedGraph::CountRun(
	PlayOrder const& inOrder, std::int64_t inPlace, std::int64_t inFrames) const
{
	std::int64_t run = inOrder.CountRun(inPlace, inFrames);
	for (std::int64_t const end : {std::int64_t{0}, mProgramme.mFrames})
	{
		std::int64_t const left = inOrder.mIsReverse ? inPlace - end : end - inPlace;
		run = left > 0 ? std::min(run, left) : run;
	}
	return run;
}

bool PlayedGraph::IsWithin(PlayOrder const& inOrder, std::int64_t inPlace) const
{
	std::int64_t const frame = inOrder.mIsReverse ? inPlace - 1 : inPlace;
	return frame >= 0 && frame < mProgramme.mFrames;
}

} // namespace SonaroHost::Playback
