#pragma once

#include "Sonaro/Types.h"
#include "zorvcore/utility/Flags.h"

#include <string>

namespace SN
{

using ChannelMask = zorvcore::utility::Flags<unsigned long long>;

// The input channels that a routing names, channel modulo 64 by bit.
SONARO_API ChannelMask EnumerateInputChannels(AudioChannelMatrix const& inMatrix);

// The output channels that any of them feeds, channel modulo 64 by bit.
SONARO_API ChannelMask EnumerateOutputChannels(AudioChannelMatrix const& inMatrix);

// Always empty: a place for diagnostics that produces nothing.
SONARO_API std::wstring AudioMatrixToString(AudioChannelMatrix const& inMatrix);

} // namespace SN
