#pragma once

#include <cstdint>

namespace SonaroHost
{

// How a gain rises from 0 to 1 over the progress p of a fade; it falls by the same course at 1 - p.
enum class FadeShape
{
	// p. Two of them keep the sum of the amplitudes.
	kLinear,
	// sin(p * pi / 2). Two of them keep the sum of the powers.
	kEqualPower,
	// p * p * (3 - 2 * p). Level at both ends; two of them keep the sum of the amplitudes.
	kSCurve,
};

// Exactly 0 at 0 and below, exactly 1 at 1 and above.
double GetFadeGain(FadeShape inShape, double inProgress);

// That many frames into a fade that has so many.
float GetFadeGain(FadeShape inShape, std::int64_t inFrame, std::int64_t inFrames);

} // namespace SonaroHost
