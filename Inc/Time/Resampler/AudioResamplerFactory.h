#pragma once

#include "Time/Resampler/IAudioResampler.h"

namespace SN::AudioResamplerFactory
{

// Linear for the lowest quality, cubic for the next two, windowed sinc for the two above; empty for
// anything else. The resampler has still to be given its Init.
InterfaceRef<IAudioResampler> CreateAudioResampler(RenderQuality inQuality);

} // namespace SN::AudioResamplerFactory
