#include "RangeRender.h"

#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

namespace
{

void CheckMedia(Programme const& inProgramme)
{
	if (auto const failure = inProgramme.mFindFailure())
	{
		throw *failure;
	}
	if (!inProgramme.mRefusesDamage)
	{
		return;
	}
	if (auto const damaged = inProgramme.mListDamaged(); !damaged.empty())
	{
		throw HostError(HostError::Kind::kInput,
			{damaged.front().mPath, {}, DescribeDamage(damaged.front()), "get a complete copy"});
	}
}

} // namespace

std::optional<RangeReport> RenderRange(Programme const& inProgramme, RangeRender const& inRender)
{
	OfflineRange range{inRender.mRange.mFrames, inProgramme.GetFrameRate(),
		static_cast<unsigned>(inProgramme.GetLayout().size()),
		ChooseBlock(inProgramme, inRender.mBlockFrames)};
	range.mFirstFrame = inProgramme.mFirstFrame + inRender.mRange.mFirstFrame;
	SN::TickTime const start(range.mFirstFrame, range.mFrameRate);
	SN::TickTime const end(range.mFirstFrame + range.mFrames, range.mFrameRate);
	SN::Prefetcher prefetcher{.mStart = start, .mEnd = end};
	SN::Prefetcher* const playback = inRender.mReadsAhead ? &prefetcher : nullptr;
	RenderContextScope const context(range.mBlockFrames, end, SN::ImmutableString("render"), playback);
	Sequence::SequenceGraph graph = MakeGraph(inProgramme, context.Get(), inRender.mView, playback);
	CheckMedia(inProgramme);

	std::optional<ReadAhead> readAhead;
	if (playback)
	{
		readAhead.emplace(graph.GetGenerator(), range).Advance(0);
	}
	std::int64_t done = 0;
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const&)
	{
		CheckMedia(inProgramme);
		done += ioBlock.GetUseSize();
		inRender.mSink(ioBlock);
		if (readAhead && !inRender.mStop.stop_requested())
		{
			readAhead->Advance(done);
		}
	};
	if (!RenderOffline(graph.GetGenerator(), range, sink, inRender.mStop) || inRender.mStop.stop_requested())
	{
		return std::nullopt;
	}
	return RangeReport{graph.TakeReport(), readAhead ? std::optional(readAhead->GetReport()) : std::nullopt};
}

} // namespace SonaroHost
