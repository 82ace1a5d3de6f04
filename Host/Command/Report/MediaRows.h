#pragma once

#include "Json.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/Media/MediaStart.h"
#include "SonaroHost/Offline/Denoise.h"
#include "SonaroHost/Offline/LearnedNoise.h"

#include <vector>

namespace SonaroCommand
{

// Facts about media as reports have them.
Json DescribeStart(SonaroHost::MediaStart const& inStart);
// "learn" is null where the quietest stretches are learned.
Json DescribeDenoise(SonaroHost::Denoise const& inDenoise);
// "levelDbfs" is null where nothing could be learned.
Json ListLearnedNoise(std::vector<SonaroHost::LearnedNoise> const& inNoises);
Json ListDamage(std::vector<SonaroHost::MediaDamage::Stretch> const& inStretches);
Json ListDamaged(std::vector<SonaroHost::DamagedMedia> const& inMedia);

} // namespace SonaroCommand
