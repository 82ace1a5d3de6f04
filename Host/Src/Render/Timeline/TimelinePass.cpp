#include "TimelinePass.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/OfflineRender.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Render/TimelineGraph.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost::Otio
{

std::optional<Sequence::GraphReport> RunPass(TimelineSequence const& inSequence, FileMedia const& inMedia,
	TimelinePass const& inPass, std::stop_token const& inStop)
{
	auto const rate = SN::FrameRate::FromSamplesPerSecond(inSequence.mSampleRate);
	std::int64_t const first = inSequence.mFirstFrame + inPass.mRange.mFirstFrame;
	unsigned const blockFrames = ChooseBlock(inSequence, inPass.mBlockFrames);
	RenderContextScope const context(
		blockFrames, SN::TickTime(first + inPass.mRange.mFrames, rate), SN::ImmutableString("timeline"));
	Sequence::SequenceGraph graph = MakeTimelineGraph(inSequence, context.Get());
	if (auto const failure = inMedia.GetFailure())
	{
		throw *failure;
	}

	OfflineRange range{
		inPass.mRange.mFrames, rate, static_cast<unsigned>(graph.GetLayout().size()), blockFrames};
	range.mFirstFrame = first;
	if (inPass.mBegin)
	{
		inPass.mBegin();
	}
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const&)
	{
		if (auto const failure = inMedia.GetFailure())
		{
			throw *failure;
		}
		inPass.mSink(ioBlock);
	};
	bool const isDone = RenderOffline(graph.GetGenerator(), range, sink, inStop);
	return isDone && !inStop.stop_requested() ? std::optional(graph.TakeReport()) : std::nullopt;
}

} // namespace SonaroHost::Otio
