#include "SonaroHost/Render/OutputLevels.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include <string>

namespace SonaroHost
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

} // namespace SonaroHost
