#pragma once

#include "Sonaro/IAudioResampler.h"
#include "Sonaro/IAudioResamplerSpecialized.h"

namespace SN::AudioResamplerFactory
{

// Linear for the lowest quality, cubic for the next two, windowed sinc for the two above; empty for
// anything else. The resampler has still to be given its Init.
SONARO_API InterfaceRef<IAudioResampler> CreateAudioResampler(RenderQuality inQuality);

// Whether there is a resampler for just this ratio: the input rate over the output rate, as doubles, is exactly one
// half or two thirds.
SONARO_API bool IsSpecializedResamplerAvailable(FrameRate const& inInputRate, FrameRate const& inOutputRate);

// That resampler, at position 0; empty where there is none.
SONARO_API InterfaceRef<IAudioResamplerSpecialized> CreateSpecializedResampler(
	FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels);

} // namespace SN::AudioResamplerFactory
