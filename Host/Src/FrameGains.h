#pragma once

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Multiplies so many frames from one on by a gain each. What is silenced is zero and never minus zero, and silent
// channels stay as they are: so a sign does not tell how a range was cut.
void ApplyGains(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float const* inGains);

} // namespace SonaroHost
