#include "SonaroHost/Render/OutputRequest.h"

#include "SonaroHost/Base/HostError.h"

#include <string>

namespace SonaroHost
{

void CheckNumbers(OutputRequest const& inRequest)
{
	if (inRequest.mBlockFrames < 1 || inRequest.mBlockFrames > kMaxBlockFrames)
	{
		Refuse("a block has 1 to " + std::to_string(kMaxBlockFrames) + " samples, not " +
			   std::to_string(inRequest.mBlockFrames));
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
