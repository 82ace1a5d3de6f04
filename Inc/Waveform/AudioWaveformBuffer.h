#pragma once

#include "Sonaro/IAudioWaveformBuffer.h"

namespace SN
{

// A new empty buffer with the next number.
InterfaceRef<IAudioWaveformBuffer> MakeAudioWaveformBuffer();

} // namespace SN
