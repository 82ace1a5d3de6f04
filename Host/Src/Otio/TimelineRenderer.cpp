#include "TimelineRenderer.h"

#include "../SignsOfZeros.h"
#include "TimelinePass.h"
#include "TrackMeters.h"

#include <utility>

namespace SonaroHost::Otio
{

TimelineRenderer::TimelineRenderer(
	TimelineInput& ioInput, TimelineOptions inOptions, Frames inFrames, std::stop_token inStop)
	: mInput(ioInput),
	  mOptions(std::move(inOptions)),
	  mFrames(inFrames),
	  mStop(std::move(inStop))
{
}

bool TimelineRenderer::Render(RenderPass const& inPass, RenderPasses::Sink const& inSink)
{
	RenderedFile const& file = inPass.mFile;
	TimelineOptions options = mOptions;
	options.mOnlyChild = file.mOnlyChild;
	if (!file.mFades.IsNone())
	{
		options.mMasterGain =
			MakeFadeGain(file.mFades, {mFrames.mFirst + file.mRange.mFirstFrame, file.mRange.mFrames},
				SN::FrameRate::FromSamplesPerSecond(*options.mSampleRate));
	}
	TrackMeters meters;
	if (inPass.mMeasuresTracks)
	{
		options.mMakeMeter = [&meters](TrackRow const& inRow) { return meters.Make(inRow); };
	}
	TimelineSequence sequence = mInput.MakeSequence(options);
	if (!inPass.mMeasuresTracks)
	{
		DropRows(sequence);
	}
	TimelinePass pass;
	pass.mRange = file.mRange;
	pass.mBlockFrames = mFrames.mOfBlock;
	pass.mBegin = [&] { meters.Begin(SN::FrameRate::FromSamplesPerSecond(sequence.mSampleRate)); };
	pass.mSink = [&](dsp::AudioBuffer& ioBlock)
	{
		if (!file.mFades.IsNone())
		{
			DropSignsOfZeros(ioBlock);
		}
		inSink(ioBlock);
	};
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
