#pragma once

#include "Sonaro/IAudioBinauralizer.h"

namespace SN::AudioBinauralizerFactory
{

// A binauralizer in bypass, which has still to be given its Init. Any thread.
SONARO_API InterfaceRef<IAudioBinauralizer> CreateAudioBinauralizer();

} // namespace SN::AudioBinauralizerFactory
