#pragma once

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// The larger of inPeak and the largest magnitude in the block; what is not a number is passed over.
float FindPeak(dsp::AudioBuffer const& inBlock, float inPeak);

} // namespace SonaroHost
