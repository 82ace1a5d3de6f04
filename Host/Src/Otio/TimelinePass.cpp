#include "TimelinePass.h"

#include "SonaroHost/HostError.h"
#include "SonaroHost/OfflineRender.h"
#include "SonaroHost/Otio/TimelineGraph.h"
#include "SonaroHost/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost::Otio
{

std::optional<Sequence::GraphReport> RunPass(TimelineSequence const& inSequence, FileMedia const& inMedia,
	TimelinePass const& inPass, std::stop_token const& inStop)
{
	auto const rate = SN::FrameRate::FromSamplesPerSecond(inSequence.mSampleRate);
	std::int64_t const first = inSequence.mFirstFrame + inPass.mRange.mFirstFrame;
	RenderContextScope const context(inPass.mBlockFrames, SN::TickTime(first + inPass.mRange.mFrames, rate),
		SN::ImmutableString("timeline"));
	Sequence::SequenceGraph const graph = MakeTimelineGraph(inSequence, context.Get());
	if (auto const failure = inMedia.GetFailure())
	{
		throw *failure;
	}

	OfflineRange range{
		inPass.mRange.mFrames, rate, static_cast<unsigned>(graph.GetLayout().size()), inPass.mBlockFrames};
	range.mFirstFrame = first;
	range.mWarmUpFrames = graph.GetWarmUpFrames() + inPass.mRange.mFirstFrame % kControlInterval;
	bool isWarm = false;
	auto const begin = [&]
	{
		isWarm = true;
		if (inPass.mBegin)
		{
			inPass.mBegin();
		}
	};
	if (range.mWarmUpFrames == 0)
	{
		begin();
	}
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const& inTime)
	{
		if (auto const failure = inMedia.GetFailure())
		{
			throw *failure;
		}
		if (isWarm)
		{
			inPass.mSink(ioBlock);
		}
		else if (inTime.ToFrame64(rate) + ioBlock.GetUseSize() == first)
		{
			begin();
		}
	};
	bool const isDone = RenderOffline(graph.GetGenerator(), range, sink, inStop);
	return isDone && !inStop.stop_requested() ? std::optional(graph.GetReport()) : std::nullopt;
}

} // namespace SonaroHost::Otio
