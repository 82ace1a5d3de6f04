#pragma once

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Multiplies so many frames from one on by a gain each. What is silenced is zero and never minus zero, and silent
// channels stay as they are: so a sign does not show how a range was cut.
void ApplyGains(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float const* inGains);
// The same bits for gains that are all the same.
void ApplyGain(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float inGain);
// Scales one channel. Both may be the same place.
void ScaleBy(unsigned inCount, float const* inSamples, float inGain, float* outSamples);
// The same bits as by one gain after the other. The first one is not 0.
void ScaleByBoth(unsigned inCount, float const* inSamples, float inFirst, float inSecond, float* outSamples);

} // namespace SonaroHost
