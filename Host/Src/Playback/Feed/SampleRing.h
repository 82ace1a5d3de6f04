#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace SonaroHost::Playback
{

// Frames on their way from one thread, the producer, to another, the consumer, channels interleaved. Frames are
// counted from the first one on, for ever.
//
// Step  Who       What                                     Order
// P1    producer  loads mRead: these frames are free       acquire
// P2    producer  writes samples into free frames
// P3    producer  adds to mWritten: they can be read       release
// C1    consumer  loads mWritten                           acquire
// C2    consumer  reads samples
// C3    consumer  adds to mRead                            release
//
// P3 with C1 shows the consumer what P2 wrote; C3 with P1 keeps P2 from writing what C2 still reads. Each count has one
// writer, which reads its own relaxed.
//
// Threads  CountRead and CountWritten: any. Nothing waits, locks or allocates after the constructor.
class SampleRing
{
public:
	SampleRing(unsigned inChannels, std::int64_t inFrames)
		: mChannels(inChannels),
		  mCapacity(inFrames),
		  mSamples(static_cast<std::size_t>(inChannels) * static_cast<std::size_t>(inFrames))
	{
	}

	unsigned GetChannels() const { return mChannels; }
	std::int64_t CountRead() const { return mRead.load(std::memory_order_acquire); }
	std::int64_t CountWritten() const { return mWritten.load(std::memory_order_acquire); }

	// The producer's: how many frames fit.
	std::int64_t CountFree() const
	{
		return mCapacity - (mWritten.load(std::memory_order_relaxed) - CountRead());
	}
	// The producer's: appends all of a block, which fits and has the ring's channels.
	void Write(dsp::AudioBuffer const& inBlock);
	// The producer's: forgets frames that it wrote last, which the consumer is kept from by other means.
	void TakeBack(std::int64_t inWritten) { mWritten.store(inWritten, std::memory_order_release); }
	// The consumer's: takes so many frames, which are there. outSamples: null to drop them.
	void Read(float* outSamples, std::int64_t inFrames);

private:
	unsigned mChannels;
	std::int64_t mCapacity;
	std::vector<float> mSamples;
	std::atomic<std::int64_t> mWritten{0};
	std::atomic<std::int64_t> mRead{0};
};

} // namespace SonaroHost::Playback
