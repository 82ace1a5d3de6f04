#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace SonaroHost::Testing
{

// Interleaved samples.
struct Sound
{
	int mChannels = 0;
	int mSampleRate = 0;
	std::vector<float> mSamples;

	std::int64_t GetFrames() const { return static_cast<std::int64_t>(mSamples.size()) / mChannels; }
	// The frames from inFirst on.
	Sound Cut(std::int64_t inFirst, std::int64_t inFrames) const;
	Sound Reversed() const;
	// The channels of the list, in its order.
	Sound Pick(std::vector<unsigned> const& inChannels) const;
};

// Whether both have the same shape and the same bits; otherwise where they part.
testing::AssertionResult SameBits(Sound const& inA, Sound const& inB);

// Beats, noise, tones and pauses, different in every channel and never repeating: what shakes the state
// of codecs. Within full scale.
Sound MakeSound(int inChannels, int inSampleRate, std::int64_t inFrames);

} // namespace SonaroHost::Testing
