#pragma once

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Makes every zero a positive one. A fader that is closed gives silence for a whole block of it, and the samples'
// signs with it for a part: so blocks of any size are alike.
void DropSignsOfZeros(dsp::AudioBuffer& ioBlock);

} // namespace SonaroHost
