#pragma once

namespace SonaroHost
{

// How the integrated loudness of a programme is kept.
enum class LoudnessMemory
{
	// The integrated loudness is exact. A block of 100 ms of audio costs 8 bytes, allocated on the way.
	kGrowing,
	// Blocks near the relative gate pass it or not in classes of 0.01 LU, and nothing allocates after the
	// constructor.
	kFixed,
};

// Which windows slide over a programme.
enum class LoudnessWindows
{
	// Momentary and short-term loudness stay at minus infinity.
	kNone,
	// They are measured, in 12 bytes for each frame of a second.
	kSliding,
	// And what they measure is kept for a LoudnessSeries: 4 bytes for every 100 ms, allocated on the way.
	kSeries,
};

} // namespace SonaroHost
