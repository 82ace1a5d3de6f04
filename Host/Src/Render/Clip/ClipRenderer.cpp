#include "ClipRenderer.h"

#include "ClipTrack.h"
#include "Render/SignsOfZeros.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <utility>

namespace SonaroHost
{

ClipRenderer::ClipRenderer(
	ClipRenderRequest const& inRequest, ProgrammePlan const& inPlan, std::stop_token inStop)
	: mRequest(inRequest),
	  mPlan(inPlan),
	  mStop(std::move(inStop))
{
}

bool ClipRenderer::Render(RenderPass const& inPass, RenderPasses::Sink const& inSink)
{
	OfflineRange const range = MakeRange();
	SN::TickTime const rangeEnd(range.mFrames, range.mFrameRate);
	bool const isPlayback = mRequest.mAsPlayback && inPass.mWrites;
	// The prefetcher is set up for a forward run even of a reversed programme: what lies on the track is reversed,
	// and the track runs forward.
	SN::Prefetcher prefetcher{.mStart = SN::kTimeZero, .mEnd = rangeEnd};
	RenderContextScope const context(range.mBlockFrames, rangeEnd,
		SN::ImmutableString(mRequest.mOutput.filename().string().c_str()),
		isPlayback ? &prefetcher : nullptr);
	auto const graph = MakeClipTrack(context.Get(), mPlan);
	std::optional<ReadAhead> readAhead;
	if (isPlayback)
	{
		readAhead.emplace(graph, range).Advance(0);
	}
	bool const dropsSigns = mPlan.IsResampled() || !mPlan.GetFades().IsNone();
	std::int64_t framesDone = 0;
	auto const sink = [&](dsp::AudioBuffer& ioBlock, SN::TickTime const&)
	{
		CheckSources();
		if (dropsSigns)
		{
			DropSignsOfZeros(ioBlock);
		}
		framesDone += ioBlock.GetUseSize();
		inSink(ioBlock);
		if (readAhead && !mStop.stop_requested())
		{
			readAhead->Advance(framesDone);
		}
	};
	if (!RenderOffline(graph, range, sink, mStop) || mStop.stop_requested())
	{
		return false;
	}
	if (readAhead)
	{
		mPlayback = DescribePlayback(*readAhead);
	}
	return true;
}

OfflineRange ClipRenderer::MakeRange() const
{
	return {mPlan.GetFrames(), mPlan.GetFrameRate(), static_cast<unsigned>(mPlan.GetLayout().size()),
		ChooseTrackBlock(mRequest.mBlockFrames, mPlan)};
}

void ClipRenderer::CheckSources() const
{
	for (PlannedClip const& clip : mPlan.GetClips())
	{
		if (auto const failure = clip.mSource->GetFailure())
		{
			throw *failure;
		}
	}
}

PlaybackSummary ClipRenderer::DescribePlayback(ReadAhead& ioReadAhead) const
{
	PlaybackSummary summary;
	summary.mReadAhead = ioReadAhead.GetReport();
	for (PlannedClip const& clip : mPlan.GetClips())
	{
		summary.mMisses += clip.mSource->GetMissCount();
		summary.mMissedFrames += clip.mSource->GetMissedFrames();
		summary.mMissedFramesOfInputs.push_back(clip.mSource->GetMissedFrames());
	}
	return summary;
}

} // namespace SonaroHost
