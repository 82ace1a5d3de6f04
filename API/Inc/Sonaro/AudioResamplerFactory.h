#pragma once

#include "Sonaro/IAudioResampler.h"

namespace SN::AudioResamplerFactory
{

// Linear for the lowest quality, cubic for the next two, windowed sinc for the two above; empty for
// anything else. The resampler has still to be given its Init.
SONARO_API InterfaceRef<IAudioResampler> CreateAudioResampler(RenderQuality inQuality);

} // namespace SN::AudioResamplerFactory
