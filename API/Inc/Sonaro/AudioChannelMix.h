#pragma once

#include "Sonaro/Types.h"

#include <functional>

// The fixed conversions between channel layouts: without parameters, ramps or history.
namespace SN::AudioChannelMix
{

// Mixes inInput, a buffer of the one layout, into outOutput, a buffer of the other one that is at least
// as long; a shorter one is flagged silent. Samples of inInput that a flag covers may be overwritten with
// zeros. Any thread.
using MixFunction = std::function<void(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)>;

// What of a 5.1 signal is heard in its mono and stereo mixes. Any other number counts as kMixdownFrontLFE.
enum MixdownType51 : unsigned
{
	kMixdownFront = 1,
	kMixdownFrontRear = 2,
	kMixdownFrontLFE = 3,
	kMixdownFrontRearLFE = 4,
};

// The conversion for a pair of layouts, never empty. What has no conversion of its own goes by the matrix
// of zorvmediatypes::ComputeChannelConversionMatrix. May allocate; the result does not.
SONARO_API MixFunction GetMixFunction(
	AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout);

// The same by channel counts: 1 is mono, 2 stereo, 6 is 5.1, and any other count so many channels without
// a place.
SONARO_API MixFunction GetMixFunctionByChannels(unsigned inInputChannels, int inOutputChannels);

// The process-wide choice of a mixdown, front channels alone at the start. It holds for conversions that
// are asked for afterwards. Unguarded: to be set while no other thread builds a graph. Any number is
// taken.
SONARO_API unsigned Get51MixdownType();
SONARO_API void Set51MixdownType(unsigned inType);

} // namespace SN::AudioChannelMix
