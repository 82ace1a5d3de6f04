#pragma once

#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/PrefetchRequestAccumulator.h"
#include "Sonaro/Types.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace SN::Testing
{

inline constexpr FrameRate k44100Hz{5760000};
inline constexpr FrameRate k48000Hz{5292000};

// The time of a frame at 48000 Hz.
inline TickTime At(long long inFrame)
{
	return {inFrame, k48000Hz};
}

// Audible samples by channel and frame: a flagged channel reads as zeros.
using Samples = std::vector<std::vector<float>>;

struct PullRange
{
	long long mStartFrame = 0;
	unsigned mFrames = 0;
	unsigned mChannels = 1;
	FrameRate mFrameRate = k48000Hz;
};

enum class Direction
{
	kForward,
	kReverse,
};

// The length of each next block, asked again and again; at least 1.
using BlockSizes = std::function<unsigned()>;

// Blocks of one length.
BlockSizes BlocksOf(unsigned inFrames);
// Blocks of random lengths from 1 to inLargest.
BlockSizes RandomBlocks(unsigned inSeed, unsigned inLargest);

// Pulls the range block by block, in reverse from its end on. The blocks arrive in a buffer that is
// wider in time than asked for and full of stale samples; a write beyond the block is a test failure.
Samples Pull(IAudioGenerator& ioGenerator, PullRange const& inRange, BlockSizes const& inBlockSizes,
	Direction inDirection = Direction::kForward);

Samples PullWhole(
	IAudioGenerator& ioGenerator, PullRange const& inRange, Direction inDirection = Direction::kForward);

// What is in the cache of a track or a send, which is empty from then on.
Samples TakeCached(InterfaceRef<UnknownBase> const& inNode, unsigned inChannels, unsigned inFrames);

// What a generator asks for when it prefetches a range.
struct PrefetchRequests
{
	std::vector<SynchronousPrefetchRequest> mSynchronous;
	std::vector<AudioPrefetch::PrefetchRequest> mAsynchronous;
};
PrefetchRequests RequestPrefetch(
	IAudioGenerator& ioGenerator, PrefetchRange const& inRange, PrefetchType inType = SynchronousPrefetch);

// The same samples from the last to the first.
Samples Reversed(Samples inSamples);

// The first place at which two renders differ in bits (any not-a-number equals any other), in words;
// empty when there is none.
std::string DescribeDifference(Samples const& inActual, Samples const& inExpected);
// Whether there is none.
testing::AssertionResult Same(Samples const& inActual, Samples const& inExpected);

// Pulls the range from a fresh generator as a whole, in random blocks, sample by sample and in reverse,
// and expects the same bits each time. inMaxBlockSize is the largest block the generator may be asked
// for; a range within it is pulled in one request.
void ExpectAnySplitEqualsWhole(std::function<InterfaceRef<IAudioGenerator>()> const& inMake,
	PullRange const& inRange, unsigned inMaxBlockSize);

} // namespace SN::Testing
