#include "TimelineRenderer.h"

#include "TimelinePass.h"
#include "TrackMeters.h"

#include <utility>

namespace SonaroHost::Otio
{

TimelineRenderer::TimelineRenderer(
	TimelineInput& ioInput, TimelineOptions inOptions, unsigned inBlockFrames, std::stop_token inStop)
	: mInput(ioInput),
	  mOptions(std::move(inOptions)),
	  mBlockFrames(inBlockFrames),
	  mStop(std::move(inStop))
{
}

bool TimelineRenderer::Render(RenderPass const& inPass, RenderPasses::Sink const& inSink)
{
	TimelineOptions options = mOptions;
	options.mOnlyChild = inPass.mFile.mOnlyChild;
	TrackMeters meters;
	if (inPass.mMeasuresTracks)
	{
		options.mMakeMeter = [&meters](TrackRow const& inRow) { return meters.Make(inRow); };
	}
	TimelineSequence const sequence = mInput.MakeSequence(options);
	TimelinePass pass;
	pass.mRange = inPass.mFile.mRange;
	pass.mBlockFrames = mBlockFrames;
	pass.mBegin = [&] { meters.Begin(SN::FrameRate::FromSamplesPerSecond(sequence.mSampleRate)); };
	pass.mSink = inSink;
	auto report = RunPass(sequence, mInput.GetMedia(), pass, mStop);
	if (!report)
	{
		return false;
	}
	if (inPass.mMeasuresTracks)
	{
		mTracks = meters.GetReadings(sequence.mTracks);
	}
	if (!options.mOnlyChild)
	{
		mGraph = std::move(*report);
	}
	return true;
}

void TimelineRenderer::Describe(TimelineRenderSummary& ioSummary) const
{
	ioSummary.mTracks = mTracks;
	ioSummary.mGraph = mGraph;
}

} // namespace SonaroHost::Otio
