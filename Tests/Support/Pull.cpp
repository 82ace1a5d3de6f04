#include "Support/Pull.h"

#include "Sonaro/ICachedAudioGenerator.h"
#include "Support/Buffers.h"
#include "Support/SameBits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

namespace SN::Testing
{

namespace
{

constexpr unsigned kMargin = 8;
constexpr float kStale = 12345678.0f;

// Pulls one block and returns it, having looked after its end.
Samples PullBlock(IAudioGenerator& ioGenerator, TickTime const& inTime, unsigned inChannels,
	unsigned inFrames, bool inReverse)
{
	dsp::AudioBuffer buffer = MakeBuffer(inChannels, inFrames + kMargin, kStale);
	buffer.SetUseSize(inFrames);
	ioGenerator.GetAudioData(inTime, buffer, inReverse);
	EXPECT_EQ(buffer.GetUseSize(), inFrames);
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		float const* const samples = buffer.GetChannel(channel);
		EXPECT_TRUE(
			buffer.IsChannelSilent(channel) || std::all_of(samples + inFrames, samples + inFrames + kMargin,
												   [](float inSample) { return inSample == kStale; }))
			<< "written beyond the block, channel " << channel;
	}
	return HeardChannels(buffer);
}

} // namespace

BlockSizes BlocksOf(unsigned inFrames)
{
	return [inFrames] { return inFrames; };
}

BlockSizes RandomBlocks(unsigned inSeed, unsigned inLargest)
{
	auto const random = std::make_shared<std::mt19937>(inSeed);
	return [random, inLargest] { return 1 + static_cast<unsigned>((*random)() % inLargest); };
}

Samples Pull(IAudioGenerator& ioGenerator, PullRange const& inRange, BlockSizes const& inBlockSizes,
	Direction inDirection)
{
	Samples result(inRange.mChannels);
	bool const reverse = inDirection == Direction::kReverse;
	for (unsigned done = 0; done < inRange.mFrames;)
	{
		unsigned const count = std::min(inBlockSizes(), inRange.mFrames - done);
		unsigned const offset = reverse ? inRange.mFrames - done - count : done;
		TickTime const time(inRange.mStartFrame + offset, inRange.mFrameRate);
		Samples const block = PullBlock(ioGenerator, time, inRange.mChannels, count, reverse);
		for (unsigned channel = 0; channel < inRange.mChannels; ++channel)
		{
			result[channel].insert(result[channel].end(), block[channel].begin(), block[channel].end());
		}
		done += count;
	}
	return result;
}

Samples PullWhole(IAudioGenerator& ioGenerator, PullRange const& inRange, Direction inDirection)
{
	return Pull(ioGenerator, inRange, BlocksOf(inRange.mFrames), inDirection);
}

Samples TakeCached(InterfaceRef<UnknownBase> const& inNode, unsigned inChannels, unsigned inFrames)
{
	dsp::AudioBuffer mix(inChannels, inFrames);
	mix.Zero();
	InterfaceRef<ICachedAudioGenerator>(inNode)->MixCachedAudio(mix);
	return HeardChannels(mix);
}

PrefetchRequests RequestPrefetch(
	IAudioGenerator& ioGenerator, PrefetchRange const& inRange, PrefetchType inType)
{
	PrefetchRequests requests;
	PrefetchRequestAccumulator accumulator(
		PrefetchRequestAccumulator::ExtendCapacity, &requests.mSynchronous, &requests.mAsynchronous);
	ioGenerator.AccumulatePrefetchRequests(inRange, inType, accumulator);
	return requests;
}

Samples Reversed(Samples inSamples)
{
	for (std::vector<float>& channel : inSamples)
	{
		std::reverse(channel.begin(), channel.end());
	}
	return inSamples;
}

std::string DescribeDifference(Samples const& inActual, Samples const& inExpected)
{
	std::ostringstream text;
	text.precision(std::numeric_limits<float>::max_digits10);
	if (inActual.size() != inExpected.size())
	{
		text << inActual.size() << " channels instead of " << inExpected.size();
		return text.str();
	}
	for (std::size_t channel = 0; channel < inExpected.size(); ++channel)
	{
		if (inActual[channel].size() != inExpected[channel].size())
		{
			text << inActual[channel].size() << " frames instead of " << inExpected[channel].size();
			return text.str();
		}
		for (std::size_t frame = 0; frame < inExpected[channel].size(); ++frame)
		{
			if (!SameBits(inActual[channel][frame], inExpected[channel][frame]))
			{
				text << "channel " << channel << ", frame " << frame << ": " << inActual[channel][frame]
					 << " instead of " << inExpected[channel][frame];
				return text.str();
			}
		}
	}
	return {};
}

testing::AssertionResult Same(Samples const& inActual, Samples const& inExpected)
{
	std::string const difference = DescribeDifference(inActual, inExpected);
	return difference.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << difference;
}

void ExpectAnySplitEqualsWhole(std::function<InterfaceRef<IAudioGenerator>()> const& inMake,
	PullRange const& inRange, unsigned inMaxBlockSize)
{
	Samples const whole = Pull(*inMake(), inRange, BlocksOf(inMaxBlockSize));
	Samples const reversed = Reversed(whole);
	auto const reverse = Direction::kReverse;
	for (unsigned seed = 1; seed <= 5; ++seed)
	{
		SCOPED_TRACE(testing::Message() << "in random blocks, seed " << seed);
		EXPECT_TRUE(Same(Pull(*inMake(), inRange, RandomBlocks(seed, inMaxBlockSize)), whole));
		EXPECT_TRUE(Same(Pull(*inMake(), inRange, RandomBlocks(seed, inMaxBlockSize), reverse), reversed));
	}
	EXPECT_TRUE(Same(Pull(*inMake(), inRange, BlocksOf(1)), whole)) << "sample by sample";
	EXPECT_TRUE(Same(Pull(*inMake(), inRange, BlocksOf(inMaxBlockSize), reverse), reversed)) << "in reverse";
}

} // namespace SN::Testing
