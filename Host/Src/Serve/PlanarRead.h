#pragma once

#include "GraphPool.h"
#include "Sonaro/Types.h"

#include <cstdint>
#include <functional>
#include <span>

namespace SonaroHost::Serve
{

// A read of samples, each channel in its own place.
struct PlanarRead
{
	// Of the programme.
	SN::AudioChannelLayout mLayout;
	std::int64_t mProgrammeFrames = 0;
	// Zeros lose their signs, as in renders for a listener.
	bool mDropsSignsOfZeros = false;
	ProgrammeRange mRange;
	GraphPool::Clock::time_point mDeadline;
	// In the order of a WAV.
	std::span<float* const> mChannels;
	// Called now and then; may be empty.
	std::function<void()> mAfterBlock;
};

// Fills the channels, with silence where the range lies outside of the programme. Throws a HostError, a TooBusyError past
// the deadline, and whatever mAfterBlock throws.
void ReadPlanes(GraphPool& ioPool, LeftOut const& inLeftOut, PlanarRead const& inRead);

} // namespace SonaroHost::Serve
