#pragma once

#include "Sonaro/Types.h"
#include "zorvmediatypes/ChannelConversionMatrix.h"

// The conversions that AudioChannelMix hands out. The channels of 5.1 stand in the order left L, right R,
// centre C, low frequency F, left surround Ls, right surround Rs.
//
// Refusal   A silent input, an input longer than the output, and a buffer that lacks a channel which the
//           conversion needs make the output silent.
// Input     Flagged channels that the conversion reads are overwritten with zeros, though the input is
//           const, so that the sums need not look at the flags.
// Groups    Where both buffers may be processed in groups of four frames, the thirds and sixths among the
//           coefficients have full precision; elsewhere they are cut short, so the two differ in the last
//           digits. Each is part of the sound.
// Gain      The total gain of a fold is the reciprocal of the sum of gains that feed an output, cut to five
//           or six digits: full scale on all inputs stays full scale.
// Threads   Any.
namespace SN::AudioChannelMix
{

// a(L + R + C)
SONARO_API void ACM51FrontToMono(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// g(0.75 L + 0.5 C), and the same for the right side.
SONARO_API void ACM51FrontToStereo(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// 0.75 (a(L + R + C) + b(Ls + Rs))
SONARO_API void ACM51FrontRearToMono(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// g(0.75 L + 0.5 C + c Ls)
SONARO_API void ACM51FrontRearToStereo(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// g(a(L + R + C) + b F)
SONARO_API void ACM51FrontLFEToMono(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// g(0.75 L + 0.5 C + c F)
SONARO_API void ACM51FrontLFEToStereo(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// g(b(Ls + Rs + F) + a(L + R + C))
SONARO_API void ACM51FrontRearLFEToMono(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// g(0.75 L + 0.5 C + c(Ls + F))
SONARO_API void ACM51FrontRearLFEToStereo(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;

// 0.5 (L + R)
SONARO_API void ACMStereoToMonoDefault(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
// Both channels the input, at full level.
SONARO_API void ACMMonoToStereoDefault(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;

// A copy, which takes over length and flags.
SONARO_API void ACMSame(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;

// One operation under the four names that the selection tells apart: the first channels by position,
// unmixed.
SONARO_API void ACMMultichannelToMono(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
SONARO_API void ACMMultichannelToStereo(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
SONARO_API void ACMMultichannelTo51(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
SONARO_API void ACMMultichannelToArbitrary(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;

// Each output is the sum of the inputs by its row of gains, in the order of the columns.
SONARO_API void ACMArbitraryToArbitrary(zorvmediatypes::ChannelConversionMatrix const& inMatrix,
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;

} // namespace SN::AudioChannelMix
