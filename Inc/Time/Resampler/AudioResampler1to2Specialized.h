#pragma once

#include "Time/Resampler/SpecializedResampler.h"

namespace SN
{

// Turns each sample into two.
class AudioResampler1to2Specialized final : public SpecializedResampler
{
public:
	AudioResampler1to2Specialized();
};

} // namespace SN
