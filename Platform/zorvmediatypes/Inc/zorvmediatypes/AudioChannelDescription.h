#pragma once

#include "zorvcore/allocator/MemoryRecycler.h"

#include <cstdint>

namespace zorvmediatypes
{

// One channel's place. From kDiscrete0 on, channels are distinguished by position alone; kDiscrete0 + i is the one at
// position i.
enum class AudioChannelDescription : std::uint32_t
{
	kUnknown = 0,
	kMono = 1,
	kLeft = 2,
	kRight = 3,
	kCenter = 4,
	kLowFrequency = 5,
	kLeftSurround = 6,
	kRightSurround = 7,
	kLeftBack = 8,
	kRightBack = 9,
	// Not places but the components of a sound field of the first order; see CreateAmbisonic1ChannelLayout.
	kAmbisonicW = 0x100,
	kAmbisonicY = 0x101,
	kAmbisonicZ = 0x102,
	kAmbisonicX = 0x103,
	kDiscrete0 = 0x10000,
};

// A layout: the places of a buffer's channels, in their order.
using AudioChannelLayout = zorvcore::allocator::Vector<AudioChannelDescription>;

} // namespace zorvmediatypes
