#pragma once

#include "Sonaro/Types.h"

namespace SN
{
class IAudioTransition;
}

namespace SonaroHost::Sequence
{

// How a gain rises from 0 to 1 over the progress p of a fade; it falls by the same course at 1 - p.
enum class FadeShape
{
	// p. Two of them keep the sum of the amplitudes.
	eLinear,
	// sin(p * pi / 2). Two of them keep the sum of the powers.
	eEqualPower,
	// p * p * (3 - 2 * p). Level at both ends; two of them keep the sum of the amplitudes.
	eSCurve,
};

// Exactly 0 at 0 and below, exactly 1 at 1 and above.
float GetFadeGain(FadeShape inShape, float inProgress);

// The engine's transition that gives these gains, whatever its parameters.
SN::InterfaceRef<SN::IAudioTransition> CreateCrossfade(FadeShape inOutgoing, FadeShape inIncoming);

} // namespace SonaroHost::Sequence
