#pragma once

#include "zorvcore/Export.h"
#include "zorvmediatypes/AudioChannelDescription.h"

namespace zorvmediatypes
{

ZORV_API AudioChannelLayout CreateMonoChannelLayout();

// Left, right.
ZORV_API AudioChannelLayout CreateStereoChannelLayout();

// Left, right, centre, low frequency, left surround, right surround.
ZORV_API AudioChannelLayout Create51ChannelLayout();

// So many discrete channels, distinguished by position; none for a count of 0 or less.
ZORV_API AudioChannelLayout CreateMultichannelLayout(int inChannels);

} // namespace zorvmediatypes
