#include "SonaroHost/Render/OutputLevels.h"

#include "SonaroHost/Base/HostError.h"

#include <string>

namespace SonaroHost
{

void CheckLevels(OutputLevels const& inLevels, float inGain)
{
	// Written so that what is not a number fails them.
	if (inLevels.mNormalizeLoudness &&
		!(*inLevels.mNormalizeLoudness >= -70.0 && *inLevels.mNormalizeLoudness <= 0.0))
	{
		Refuse("a loudness to normalize to lies between -70 and 0 LUFS");
	}
	if (inLevels.mLimitDecibels && !(*inLevels.mLimitDecibels >= -60.0 && *inLevels.mLimitDecibels <= 20.0))
	{
		Refuse("a limit lies between -60 and 20 dBTP");
	}
	if (inLevels.mNormalizeLoudness && inGain != 1.0f)
	{
		Refuse("a gain has no effect on what is normalized: the loudness that is asked for decides how loud "
			   "it gets; "
			   "give either the gain or the loudness");
	}
}

} // namespace SonaroHost
