#include "SonaroHost/Render/ClipRenderJob.h"

#include "ClipRenderer.h"
#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace SonaroHost
{

namespace
{

// Throws a HostError when a number is out of range.
ClipRenderRequest CheckNumbers(ClipRenderRequest inRequest)
{
	if (inRequest.mBlockFrames < 1 || inRequest.mBlockFrames > kMaxBlockFrames)
	{
		Refuse("a block has 1 to " + std::to_string(kMaxBlockFrames) + " samples, not " +
			   std::to_string(inRequest.mBlockFrames));
	}
	CheckLevels(inRequest.mLevels, inRequest.mGain);
	return inRequest;
}

} // namespace

ClipRenderJob::ClipRenderJob(ClipRenderRequest inRequest)
	: mRequest(CheckNumbers(std::move(inRequest))),
	  mPlan(mRequest),
	  mFormat(ChooseFormat())
{
}

std::optional<RenderSummary> ClipRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	ClipRenderer renderer(mRequest, mPlan, inStop);
	auto const render = [&renderer](RenderPass const& inPass, RenderPasses::Sink const& inSink)
	{ return renderer.Render(inPass, inSink); };
	auto files = RenderPasses(MakePlan(), render, inProgress).Run();
	if (!files)
	{
		return std::nullopt;
	}
	RenderSummary summary;
	static_cast<RenderedFiles&>(summary) = std::move(*files);
	summary.mChannels = static_cast<unsigned>(GetOutputLayout().size());
	summary.mSampleRate = GetSampleRate();
	summary.mPlayback = renderer.GetPlayback();
	summary.mElapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
	return summary;
}

RenderPlan ClipRenderJob::MakePlan() const
{
	RenderPlan plan;
	plan.mSampleRate = GetSampleRate();
	plan.mLayout = GetOutputLayout();
	plan.mFormat = mFormat;
	plan.mLevels = mRequest.mLevels;
	plan.mMeasuring = mRequest.mMeasuring;
	plan.mMix.mPath = mRequest.mOutput;
	plan.mMix.mRange = {0, GetFrames()};
	plan.mFiles = {plan.mMix};
	return plan;
}

OutputFormat ClipRenderJob::ChooseFormat() const
{
	OutputFormat format;
	format.mContainer = mRequest.mContainer;
	format.mSamples = mRequest.mSamples.value_or(GetDefaultSamples(mRequest.mContainer));
	if (mRequest.mDither == Dither::eTriangular && format.mSamples == OutputSamples::eFloat32)
	{
		Refuse("dither is for 16 and 24 bits; floats are not rounded");
	}
	bool const keepsSamples = mPlan.KeepsSamples() && mRequest.mLevels.IsNone();
	bool const needsDither = std::any_of(mPlan.GetClips().begin(), mPlan.GetClips().end(),
		[&](PlannedClip const& inClip)
		{
			return ChooseDither(format.mSamples, inClip.GetInfo().mIntegerBits, keepsSamples) ==
				   Dither::eTriangular;
		});
	format.mDither = mRequest.mDither.value_or(needsDither ? Dither::eTriangular : Dither::eNone);
	return format;
}

} // namespace SonaroHost
