#include "SonaroHost/Media/DamagedMedia.h"

#include "SonaroHost/Base/TimePosition.h"

#include <algorithm>

namespace SonaroHost
{

std::string DescribeDamage(DamagedMedia const& inMedia)
{
	constexpr std::size_t kMostStretches = 5;
	std::string text = "is damaged: silence";
	std::size_t const shown = std::min(inMedia.mStretches.size(), kMostStretches);
	for (std::size_t i = 0; i < shown; ++i)
	{
		MediaDamage::Stretch const& stretch = inMedia.mStretches[i];
		text += (i == 0 ? " from " : ", from ") + FormatTime(stretch.mFirst, inMedia.mSampleRate) + " to " +
				FormatTime(stretch.mEnd, inMedia.mSampleRate);
	}
	std::size_t const more = inMedia.mStretches.size() - shown;
	return text + (more > 0 ? " and in " + std::to_string(more) + " more places" : "");
}

} // namespace SonaroHost
