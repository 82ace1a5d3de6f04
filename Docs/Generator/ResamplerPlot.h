#pragma once

#include <string>

namespace SonaroDocuments
{

// An SVG picture of what each resampler adds to tones from 20 Hz to 20 kHz, from 44100 to 48000 Hz.
std::string DrawResamplers();

} // namespace SonaroDocuments
