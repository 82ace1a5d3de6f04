#include "SonaroHost/Render/ProgrammeRenderJob.h"

#include "Render/RenderJob.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Render/JobChecks.h"

#include <utility>

namespace SonaroHost
{

ProgrammeRenderJob::ProgrammeRenderJob(
	Programme inProgramme, OutputRequest inRequest, std::vector<std::filesystem::path> const& inMedia)
	: mProgramme(std::move(inProgramme)),
	  mRequest(std::move(inRequest))
{
	CheckNumbers(mRequest);
	if (mProgramme.mFrames == 0)
	{
		Refuse("the sequence has no length; there is nothing to render");
	}
	mFormat = ChooseFormat(mRequest, ChooseDither(ChooseSamples(mRequest), 0, false));
	mFades = ChooseFades(mRequest.mFadeIn, mRequest.mFadeOut, mProgramme.mFrames, mProgramme.mSampleRate);
	OutputPlan plan;
	plan.mFiles = mRequest.mOtherOutputs;
	plan.mFiles.push_back(mRequest.mOutput);
	plan.mMedia = inMedia;
	plan.mReplaces = mRequest.mReplace;
	plan.Check();
}

std::optional<RenderSummary> ProgrammeRenderJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	RenderPlan plan;
	plan.mRequest = mRequest;
	plan.mFormat = mFormat;
	plan.mMix.mPath = mRequest.mOutput;
	plan.mMix.mRange = {0, mProgramme.mFrames};
	plan.mMix.mFades = mFades;
	plan.mFiles = {{plan.mMix, {}}};
	mProgramme.mRefusesDamage = mRequest.mRefusesDamage;
	return RenderFiles(mProgramme, plan, inProgress, inStop);
}

} // namespace SonaroHost
