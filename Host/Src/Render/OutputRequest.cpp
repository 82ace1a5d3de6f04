#include "SonaroHost/Render/OutputRequest.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"

#include <string>

namespace SonaroHost
{

namespace
{

void CheckLevels(OutputLevels const& inLevels, float inGain)
{
	// Written so that what is not a number fails them.
	if (inLevels.mNormalizeLoudness &&
		!(*inLevels.mNormalizeLoudness >= -70.0 && *inLevels.mNormalizeLoudness <= 0.0))
	{
		Refuse("a loudness of " + FormatNumber(*inLevels.mNormalizeLoudness) +
			   " LUFS is out of range; use -70 to 0");
	}
	if (inLevels.mLimitDecibels && !(*inLevels.mLimitDecibels >= -60.0 && *inLevels.mLimitDecibels <= 20.0))
	{
		Refuse(
			"a limit of " + FormatNumber(*inLevels.mLimitDecibels) + " dBTP is out of range; use -60 to 20");
	}
	if (inLevels.mNormalizeLoudness && inGain != 1.0f)
	{
		Refuse("a gain cannot be combined with normalizing, which sets the level by the target loudness; "
			   "use only one of them");
	}
}

} // namespace

void CheckNumbers(OutputRequest const& inRequest)
{
	if (inRequest.mBlockFrames < 1 || inRequest.mBlockFrames > kMaxBlockFrames)
	{
		Refuse("a block has 1 to " + std::to_string(kMaxBlockFrames) + " samples, not " +
			   std::to_string(inRequest.mBlockFrames));
	}
	if (inRequest.mJobs < 1 || inRequest.mJobs > kMostJobs)
	{
		Refuse("a render uses 1 to " + std::to_string(kMostJobs) + " threads, not " +
			   std::to_string(inRequest.mJobs));
	}
	CheckLevels(inRequest.mLevels, inRequest.mGain);
}

OutputSamples ChooseSamples(OutputRequest const& inRequest)
{
	return inRequest.mSamples.value_or(GetDefaultSamples(inRequest.mContainer));
}

OutputFormat ChooseFormat(OutputRequest const& inRequest, Dither inNeeded)
{
	OutputFormat format;
	format.mContainer = inRequest.mContainer;
	format.mSamples = ChooseSamples(inRequest);
	if (inRequest.mDither == Dither::kTriangular && format.mSamples == OutputSamples::kFloat32)
	{
		Refuse("dither is for 16 and 24 bits; floats are not rounded");
	}
	format.mDither = inRequest.mDither.value_or(inNeeded);
	return format;
}

} // namespace SonaroHost
