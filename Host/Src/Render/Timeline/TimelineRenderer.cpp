#include "TimelineRenderer.h"

#include "Render/SignsOfZeros.h"
#include "TimelinePass.h"

#include <optional>
#include <utility>

namespace SonaroHost::Otio
{

TimelineRenderer::TimelineRenderer(TimelineInput& ioInput, TimelineSequence const& inMix,
	TimelineOptions inOptions, unsigned inBlockFrames, std::stop_token inStop)
	: mInput(ioInput),
	  mMix(inMix),
	  mOptions(std::move(inOptions)),
	  mBlockFrames(inBlockFrames),
	  mStop(std::move(inStop))
{
}

TimelineOptions TimelineRenderer::MakeOptions(RenderPass const& inPass, TrackMeters& ioMeters) const
{
	RenderedFile const& file = inPass.mFile;
	TimelineOptions options = mOptions;
	options.mOnlyChild = file.mOnlyChild;
	if (!file.mFades.IsNone())
	{
		options.mMasterGain =
			MakeFadeGain(file.mFades, {mMix.mFirstFrame + file.mRange.mFirstFrame, file.mRange.mFrames},
				SN::FrameRate::FromSamplesPerSecond(mMix.mSampleRate));
	}
	if (inPass.mMeasuresTracks)
	{
		options.mMakeMeter = [&ioMeters](TrackRow const& inRow) { return ioMeters.Make(inRow); };
	}
	return options;
}

bool TimelineRenderer::IsMix(RenderedFile const& inFile, bool inMeasuresTracks)
{
	return !inFile.mOnlyChild && inFile.mFades.IsNone() && !inMeasuresTracks;
}

bool TimelineRenderer::Render(RenderPass const& inPass, RenderPasses::Sink const& inSink)
{
	RenderedFile const& file = inPass.mFile;
	TrackMeters meters;
	bool const isMix = IsMix(file, inPass.mMeasuresTracks);
	auto const anew = isMix ? std::nullopt : std::optional(mInput.MakeSequence(MakeOptions(inPass, meters)));
	TimelineSequence const& sequence = anew ? *anew : mMix;
	TimelinePass pass;
	pass.mRange = file.mRange;
	pass.mBlockFrames = mBlockFrames;
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
	if (!file.mOnlyChild)
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
