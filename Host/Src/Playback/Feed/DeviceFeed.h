#pragma once

#include "SampleRing.h"
#include "SonaroHost/Playback/OutputDevice.h"
#include "WakeUp.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <vector>

namespace SonaroHost::Playback
{

// What a device hears: the frames that a render thread has put into a ring, as far as the ring's gate is open.
//
// Gate     Frames from the gate's place on are not heard, however many there are: so the ring is filled before it is
//          opened, and what is missing there is no miss.
// Misses   Where frames should be heard that are not there yet, the last one fades to silence over 2 ms. They are heard
//          late, once a whole block of them is there, fading in over 2 ms; after a miss of less than 2 ms, the fades cross.
//          A device block with silence is one miss.
//
// Step  Who       What                                                   Order
// G1    device    loads the gate                                         acquire
// G2    device    loads how many frames are written, as C1 of the ring   acquire
// G3    device    loads the gate again; where it has moved, back to G1   acquire
// G4    producer  closes the gate at a frame                             release
// G5    producer  takes back what is written after a closed gate         release
// G6    producer  opens the gate, with another value each time           release
//
// G4 comes before the last frames that are heard, and G6 after the first ones. What G2 has found between two equal looks
// at the gate belongs to it, since no value of an open gate comes twice.
//
// Threads  Fill: the device's. Write and the gate: the render thread's. The counts: any.
class DeviceFeed final : public DeviceClient
{
public:
	// inWakes: the render thread's, for whenever frames were taken; it outlives this.
	DeviceFeed(DeviceFormat const& inFormat, std::int64_t inFrames, WakeUp& inWakes);

	void Fill(float* outSamples, unsigned inFrames) SONARO_NONBLOCKING override;

	SampleRing& GetRing() { return mRing; }
	SampleRing const& GetRing() const { return mRing; }

	void Open() { mGate.store(kOpen + mOpenings++, std::memory_order_release); }
	// From a frame on, which is not written yet. Those before it are heard.
	void CloseAt(std::int64_t inFrame) { mGate.store(inFrame, std::memory_order_release); }
	// What is after the closed gate was for nothing.
	void TakeBackUnheard();
	bool IsOpen() const { return mGate.load(std::memory_order_acquire) >= kOpen; }
	// How many frames are written from the closed gate on; at most 0 while it is open. From any thread.
	std::int64_t CountBeyondGate() const;

	// While no device runs: what is before the gate will not be heard.
	void DropUnheard();

	std::uint64_t CountMisses() const { return mMisses.load(std::memory_order_relaxed); }
	std::uint64_t CountMissedFrames() const { return mMissedFrames.load(std::memory_order_relaxed); }

	// How many frames of silence the device got since the last one that was heard.
	std::int64_t CountIdle() const { return mIdle.load(std::memory_order_relaxed); }

private:
	// From here on, which no frame reaches.
	static constexpr std::int64_t kOpen = std::numeric_limits<std::int64_t>::max() / 2;

	// How many frames may be heard, and whether the gate is after them.
	struct Supply
	{
		std::int64_t mFrames = 0;
		bool mIsClosed = false;
	};

	Supply FindSupply() const;
	// So many frames of the ring, fading in while fresh from a miss, whose own fade goes on meanwhile.
	void FillHeard(float* outSamples, unsigned inFrames);
	void FillMissed(float* outSamples, unsigned inFrames);
	// Adds so many frames of what fades out for a miss.
	void AddFading(float* ioSamples, unsigned inFrames);
	void KeepLast(float const* inSamples, unsigned inFrames);

	SampleRing mRing;
	WakeUp& mWakes;
	unsigned mFadeFrames;
	std::atomic<std::int64_t> mGate{0};
	// The render thread's: each opening has a value of its own, so that the device sees that the gate was closed meanwhile.
	std::int64_t mOpenings = 0;
	std::atomic<std::uint64_t> mMisses{0};
	std::atomic<std::uint64_t> mMissedFrames{0};
	std::atomic<std::int64_t> mIdle{0};
	// The device thread's: the last frame that was heard, the one that fades out for a miss, how far it has done so, and how
	// far what comes after the miss has faded in.
	std::vector<float> mLast;
	std::vector<float> mFading;
	unsigned mFadedOut = 0;
	unsigned mFadedIn = 0;
	bool mIsMissing = false;
};

} // namespace SonaroHost::Playback
