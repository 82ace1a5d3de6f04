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
//                 front of its side with the same, else from the centre with one half. The low frequency
//                 channel goes to its own place or nowhere.
// By position     Where either layout has a channel without a known place, channel i goes to channel i,
//                 and what has no partner goes nowhere.
ZORV_API void ComputeChannelConversionMatrix(AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, ChannelConversionMatrix& outMatrix);

} // namespace zorvmediatypes
