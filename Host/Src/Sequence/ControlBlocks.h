#pragma once

#include "SonaroHost/RenderContextScope.h"

#include <cstdint>

namespace SonaroHost::Sequence
{

// At least so many frames, in whole control blocks: what is rendered before a start moves no block behind it,
// and curves sound the same after any warm-up.
inline std::int64_t ToControlBlocks(std::int64_t inFrames)
{
	constexpr std::int64_t kBlock = kControlInterval;
	return (inFrames + kBlock - 1) / kBlock * kBlock;
}

} // namespace SonaroHost::Sequence
