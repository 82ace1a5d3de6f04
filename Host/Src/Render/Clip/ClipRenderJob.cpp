#include "SonaroHost/Render/ClipRenderJob.h"

#include "Render/RenderJob.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Render/ClipProgramme.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

// What is read for a block at the highest speed fits the engine's largest read. Its resampler goes by blocks, which are
// thus always the same.
constexpr unsigned kResampledBlock = 1024;

ClipRenderRequest Check(ClipRenderRequest inRequest)
{
	CheckNumbers(inRequest);
	return inRequest;
}

OutputFormat ChooseFormat(ClipRenderRequest const& inRequest, ProgrammePlan const& inPlan)
{
	bool const keepsSamples = inPlan.KeepsSamples() && inRequest.mLevels.IsNone() &&
							  inRequest.mEffects.empty() && !inRequest.mNoiseReduction &&
							  inPlan.GetLayout() != zorvmediatypes::CreateAmbisonic1ChannelLayout();
	bool const needsDither = std::ranges::any_of(inPlan.GetClips(),
		[&](PlannedClip const& inClip)
		{
			return ChooseDither(ChooseSamples(inRequest), inClip.GetInfo().mIntegerBits, keepsSamples) ==
				   Dither::kTriangular;
		});
	return ChooseFormat(inRequest, needsDither ? Dither::kTriangular : Dither::kNone);
}

PlaybackSummary CountMisses(ProgrammePlan const& inPlan, ReadAheadReport const& inReadAhead)
{
	PlaybackSummary summary;
	summary.mReadAhead = inReadAhead;
	for (PlannedClip const& clip : inPlan.GetClips())
	{
		summary.mMisses += clip.mSource->GetMissCount();
		summary.mMissedFrames += clip.mSource->GetMissedFrames();
		summary.mMissedFramesOfInputs.push_back(clip.mSource->GetMissedFrames());
	}
	return summary;
}

// What a file of effects asks for in vain is the file's fault, and otherwise the request's.
Effects::PreparedEffect PrepareEffect(Effects::EffectSetup const& inSetup, ProgrammePlan const& inPlan)
{
	try
	{
		Effects::PreparedEffect effect(inSetup, inPlan.GetSampleRate());
		effect.CheckChannels(inPlan.GetLayout().size());
		return effect;
	}
	catch (HostError const& error)
	{
		if (error.GetKind() != HostError::Kind::kRequest)
		{
			throw;
		}
		HostError::Parts parts = error.GetParts();
		parts.mFile = inSetup.mFile;
		parts.mPlace = inSetup.mFile.empty() ? std::string() : inSetup.mPlace + parts.mPlace;
		throw HostError(inSetup.mFile.empty() ? error.GetKind() : HostError::Kind::kInput, std::move(parts));
	}
}

} // namespace

ClipRenderJob::ClipRenderJob(ClipRenderRequest inRequest)
	: mRequest(Check(std::move(inRequest))),
	  mPlan(mRequest),
	  mFormat(ChooseFormat(mRequest, mPlan))
{
	for (Effects::EffectSetup const& setup : mRequest.mEffects)
	{
		Effects::PreparedEffect const& effect = mEffects.emplace_back(PrepareEffect(setup, mPlan));
		for (std::string const& remark : effect.GetRemarks())
		{
			mRemarks.push_back("the effect " + QuoteName(effect.GetName()) + ": " + remark);
		}
	}
}

SN::AudioChannelLayout ClipRenderJob::GetOutputLayout() const
{
	return mPlan.GetListener() ? zorvmediatypes::CreateStereoChannelLayout() : mPlan.GetLayout();
}

std::optional<Sequence::BinauralOutput> ClipRenderJob::GetBinaural() const
{
	auto const& listener = mPlan.GetListener();
	return listener ? std::optional(Sequence::BinauralOutput{*listener, mPlan.GetLayout()}) : std::nullopt;
}

std::optional<RenderSummary> ClipRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	RenderPlan plan;
	plan.mRequest = mRequest;
	plan.mFormat = mFormat;
	bool const goesByBlocks = mPlan.IsResampled() && mRequest.mResampling == Sequence::Resampling::kEngine;
	plan.mRequest.mBlockFrames = goesByBlocks ? kResampledBlock : mRequest.mBlockFrames;
	plan.mReadsAhead = mRequest.mAsPlayback;
	plan.mDropsSignsOfZeros = mPlan.IsResampled() || mPlan.GetListener();
	plan.mMix.mPath = mRequest.mOutput;
	plan.mMix.mRange = {0, GetFrames()};
	plan.mMix.mFades = mPlan.GetFades();
	if (!mRequest.mOutput.empty())
	{
		plan.mFiles = {{plan.mMix, {}}};
	}
	Programme programme = MakeProgramme(mPlan, mEffects);
	programme.mRefusesDamage = mRequest.mRefusesDamage;
	auto summary = RenderFiles(programme, plan, inProgress, inStop);
	if (summary && summary->mPlayback)
	{
		summary->mPlayback = CountMisses(mPlan, summary->mPlayback->mReadAhead);
	}
	return summary;
}

} // namespace SonaroHost
