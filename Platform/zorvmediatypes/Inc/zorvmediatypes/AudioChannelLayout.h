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

// Left, right, centre, low frequency, left and right back, left and right surround: the order of WAVE files.
ZORV_API AudioChannelLayout Create71ChannelLayout();

// The sound field at a point in ambisonic components of the first order: W, Y, Z and X in the order ACN and the scale
// SN3D. Sound of amplitude 1 has 1 in W, and in Y, Z and X the cosines of its direction against left, up and front.
ZORV_API AudioChannelLayout CreateAmbisonic1ChannelLayout();

// So many discrete channels, distinguished by position; none for a count of 0 or less.
ZORV_API AudioChannelLayout CreateMultichannelLayout(int inChannels);

} // namespace zorvmediatypes
