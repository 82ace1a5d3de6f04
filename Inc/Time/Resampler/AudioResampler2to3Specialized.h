#pragma once

#include "Time/Resampler/SpecializedResampler.h"

namespace SN
{

// Turns two samples into three.
class AudioResampler2to3Specialized final : public SpecializedResampler
{
public:
	AudioResampler2to3Specialized();
};

} // namespace SN
