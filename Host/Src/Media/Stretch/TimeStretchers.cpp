#include "OmegaStretcher.h"
#include "ScalerStretcher.h"
#include "SonaroHost/Base/HostError.h"

namespace SonaroHost
{

using dsp::stretch::omega::OmegaEngineKind;

void CheckIsBuiltIn(StretchEngine inEngine)
{
	if (inEngine == StretchEngine::kRubberBand &&
		!dsp::stretch::omega::IsOmegaEngineKindBuiltIn(OmegaEngineKind::kRubberBand))
	{
		Refuse("the Rubber Band Library is not built in; use another engine, or a build with "
			   "SONARO_WITH_RUBBERBAND");
	}
}

std::unique_ptr<TimeStretcher> MakeTimeStretcher(
	StretchEngine inEngine, Ratio const& inRatio, unsigned inChannels, int inSampleRate)
{
	CheckIsBuiltIn(inEngine);
	if (inEngine == StretchEngine::kScaler)
	{
		return std::make_unique<ScalerStretcher>(inRatio, inChannels, inSampleRate);
	}
	return std::make_unique<OmegaStretcher>(
		inEngine == StretchEngine::kRubberBand ? OmegaEngineKind::kRubberBand : OmegaEngineKind::kSplice,
		inRatio, inChannels, inSampleRate);
}

} // namespace SonaroHost
