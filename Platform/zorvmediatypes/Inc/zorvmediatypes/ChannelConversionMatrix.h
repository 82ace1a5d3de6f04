#pragma once

#include "zorvcore/Export.h"
#include "zorvmediatypes/AudioChannelDescription.h"

#include <vector>

namespace zorvmediatypes
{

// The linear gains of a conversion: a row for each output channel, with a column for each input channel.
using ChannelConversionMatrix = std::vector<std::vector<double>>;

// Fills outMatrix with the gains that turn sound of the one layout into sound of the other.
//
// Equal layouts   Each channel goes to itself.
// By place        Between layouts of known places a channel goes to its own place with gain 1; mono counts
//                 as the centre. Where the output lacks the place, the channel is heard from others with
//                 the coefficients of ITU-R BS.775: the centre from left and right with the square root of
//                 one half; left and right from the centre with the same; a surround channel from the
//                 front of its side with the same, else from the centre with one half; a back channel from the
//                 surround of its side with gain 1, else as that one. The low frequency channel goes to its
//                 own place or nowhere.
// To ambisonic 1  Each channel becomes a plane wave from its loudspeaker: left and right at 30 degrees, the
//                 centre and mono at 0, surrounds at 110 degrees (ITU-R BS.775), with back channels at 135
//                 degrees besides at 90 (ITU-R BS.2051). The low frequency channel has no direction: it goes
//                 to W alone.
// From it         Mono is W. Left and right of stereo are what cardioid microphones hear that point to the left
//                 and to the right. Of n loudspeakers of other layouts, the low frequency channel not among
//                 them, each has 2/n of what a cardioid microphone hears that points at it.
// By position     Where either layout has a channel without a known place, channel i goes to channel i,
//                 and what has no partner goes nowhere.
ZORV_API void ComputeChannelConversionMatrix(AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, ChannelConversionMatrix& outMatrix);

} // namespace zorvmediatypes
