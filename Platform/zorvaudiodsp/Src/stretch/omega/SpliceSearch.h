#pragma once

#include <array>
#include <cstdint>

namespace dsp::stretch::omega
{

class SampleHistory;

// Where sound may be continued so that the splice is heard least.
struct SpliceMatch
{
	// From the place that is left to the one that is gone to, in samples and parts of one.
	double mDistance = 0.0;
	// The normalised correlation of what follows both, from -1 to 1.
	double mSimilarity = 0.0;
};

// What a search may look at, in positions of the stream.
struct SpliceRange
{
	std::int64_t mFrom = 0;
	std::int64_t mLowest = 0;
	std::int64_t mHighest = 0;
	// The best place as far as timing goes: of equal ones, the nearest to it is taken.
	std::int64_t mWanted = 0;
	// Places as far from that as this are looked at first, and the others only where none of these is alike.
	std::int64_t mNear = 0;
	// How much of the sound after the places is compared, in samples.
	unsigned mWindow = 0;
	// By how much the rate of the coarse copy is lower.
	unsigned mDecimation = 1;
	// What the places are compared with, and that at the lower rate, in place of the sound at mFrom, which then is a
	// multiple of the decimation.
	float const* mSound = nullptr;
	float const* mCoarse = nullptr;
};

// Finds the place whose sound resembles most that of another one, in three steps: on a copy of the
// sound at a lower rate, sample by sample around the best of these, and between the samples around the best
// one. No allocation.
class SpliceSearch
{
public:
	// By how much the rate of the coarse copy is lower, 1, 2 or 4: it stays at 8 kHz or more as far as the sound's does.
	static unsigned GetDecimation(double inSampleRate);
	// How far beyond the range and its window samples are looked at.
	static constexpr unsigned kMargin = 48;

	// ioCoarse takes the samples of inSound at the lower rate, as far as they can be known. A sample n of it is that at
	// n * inDecimation.
	static void Decimate(SampleHistory const& inSound, unsigned inDecimation, SampleHistory& ioCoarse);

	// inNumPlaces: how many of the best places of the first step the second one looks at, up to 4.
	static SpliceMatch Find(SampleHistory const& inSound, SampleHistory const& inCoarse,
		SpliceRange const& inRange, unsigned inNumPlaces);

	// The normalised correlation of inWindow samples from two positions on.
	static double Compare(
		SampleHistory const& inSound, std::int64_t inFirst, std::int64_t inSecond, unsigned inWindow);
};

} // namespace dsp::stretch::omega
