#pragma once

#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "SonaroHost/Sequence/Media.h"

#include <memory>
#include <vector>

namespace SonaroHost::Sequence::Testing
{

// What of all recordings has been read ahead, in batches. When it is strict, a playback gets silence for what was not
// part of the last batch: everything else has been evicted.
struct PrefetchLedger
{
	bool mIsStrict = false;
	unsigned mBatch = 0;
};

// A recording in memory. Its source can be read ahead, too, and is silent outside of the recording.
struct MemoryMedia : Media
{
	// By channel and frame.
	using Samples = std::vector<std::vector<float>>;

	MemoryMedia(double inSampleRate, Samples inSamples, std::shared_ptr<PrefetchLedger> const& inLedger = {});

	std::shared_ptr<Samples const> mSamples;
};

// For an Effect's mMake: a gain that comes so many frames late, and says so. What is processed before the
// effect was initialised, or in larger blocks than agreed, is not a number.
struct LatentEffect
{
	SN::InterfaceRef<SN::IAudioProcessor> operator()(
		SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
		SN::AudioChannelLayout const& inLayout) const;

	std::int64_t mDelayFrames = 0;
	float mGain = 1.0f;
};

} // namespace SonaroHost::Sequence::Testing
