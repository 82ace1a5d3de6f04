#include "ScalerStretcher.h"

namespace SonaroHost
{

std::unique_ptr<TimeStretcher> MakeTimeStretcher(
	StretchEngine inEngine, Ratio const& inRatio, unsigned inChannels, int inSampleRate)
{
	CheckIsBuiltIn(inEngine);
	return std::make_unique<ScalerStretcher>(inRatio, inChannels, inSampleRate);
}

} // namespace SonaroHost
