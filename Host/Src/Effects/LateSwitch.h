#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost::Effects
{

// A switch for what comes out of an effect: each frame of the sound carries the position that the switch had when the
// frame went in, and so the effect's latency does not move it.
//
// Threads  One at a time. Nothing allocates after the constructor.
class LateSwitch
{
public:
	// In frames: the largest latency, and the most of one call.
	LateSwitch(unsigned inMostLatency, unsigned inMostFrames);

	// Forgets all frames. Those before the first ones then have the position of these.
	void Reset();
	// The position for the next frames that go in; Advance passes them.
	void Mark(bool inIsOn, unsigned inCount);
	void Advance(unsigned inCount) { mTime += inCount; }

	// The position for what comes out, so late, at the next frame and inOffset frames on. A latency beyond the largest one
	// counts as that.
	bool IsOn(unsigned inOffset, unsigned inLatency) const;
	// For how many frames, of inMost, it stays at what it is at the next one.
	unsigned CountSame(unsigned inLatency, unsigned inMost) const;

private:
	std::uint64_t FindTime(unsigned inLatency) const;

	unsigned mMostLatency;
	std::vector<char> mPositions;
	// Frames since the last Reset, with the largest latency before them, so that none is negative.
	std::uint64_t mTime;
	// From when on it has the position that was set last.
	std::uint64_t mLastChange = 0;
	bool mIsOn = false;
	bool mHasBegun = false;
};

} // namespace SonaroHost::Effects
