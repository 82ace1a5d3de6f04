#pragma once

namespace SonaroHost
{

enum class RateQuality
{
	// Noise, images and aliases below -140 dB; flat up to 0.9 of half the lower rate, 0.01 dB less at 20 kHz of 44100 Hz.
	kFull,
	// Below -100 dB and flat up to 0.79, with a third of the taps.
	kDraft,
};

} // namespace SonaroHost
