#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

namespace SonaroHost::Playback
{

// Notices that a device has stopped to ask for frames: since it hangs, or since the machine has slept, after which a
// device plays what was meant for before, if anything.
//
// Time     Seconds of a clock that goes on while the machine sleeps.
// Threads  Note: the device's; it neither waits, locks nor allocates. FindGap: any. Start: while nobody asks.
class DeviceWatch
{
public:
	static double GetTime();

	// The device is about to ask for inBlockSeconds at a time.
	void Start(double inTime, double inBlockSeconds);
	// It asks.
	void Note(double inTime) noexcept;
	// For how many seconds it has asked for nothing, now or before; nothing for a pause that a busy machine
	// explains.
	std::optional<double> FindGap(double inTime) const;

private:
	double mLongest = 0.0;
	std::atomic<double> mLast{0.0};
	// The gap that was noticed first.
	std::atomic<double> mGap{0.0};
};

} // namespace SonaroHost::Playback
