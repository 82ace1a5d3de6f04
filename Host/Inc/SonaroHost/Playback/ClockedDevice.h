#pragma once

#include "SonaroHost/Playback/OutputDevice.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace SonaroHost::Playback
{

// A device without hardware: a clock asks for the blocks, on a thread of its own.
//
// Clock    inSpeed times as fast as real time. At 0 there is none: Advance asks for blocks, on the thread that calls it.
// Late     A clock that was held up asks for what it missed at once; one that was held up for a second goes on from there.
class ClockedDevice : public OutputDevice
{
public:
	// inSpeed: 0 or more.
	explicit ClockedDevice(double inSpeed);
	// Whoever derives from it calls Stop in the destructor, as long as Take is there.
	~ClockedDevice() override;
	ClockedDevice(ClockedDevice const&) = delete;
	ClockedDevice& operator=(ClockedDevice const&) = delete;

	void Open(DeviceFormat const& inFormat) override;
	void Start(DeviceClient& ioClient) override;
	void Stop() override;
	std::int64_t GetLatencyFrames() const override { return mFormat.mBlockFrames; }
	std::optional<std::string> FindLoss() const override;

	// Without a clock and while started: so many frames are asked for and taken, in blocks.
	void Advance(std::int64_t inFrames);
	// As if the device was unplugged: it asks for nothing more until it is opened again.
	void Lose() { mIsLost.store(true, std::memory_order_release); }

protected:
	// Gets what would be heard, on the thread of the clock or of Advance.
	virtual void Take(float const* inSamples, unsigned inFrames) = 0;
	DeviceFormat const& GetFormat() const { return mFormat; }

private:
	void Run();
	void Pull(unsigned inFrames);
	// False when the device is to stop.
	bool WaitUntil(std::chrono::steady_clock::time_point inTime);

	double mSpeed;
	DeviceFormat mFormat;
	std::vector<float> mBlock;
	DeviceClient* mClient = nullptr;
	std::atomic<bool> mIsLost{false};
	std::mutex mMutex;
	std::condition_variable mStopping;
	bool mIsStopping = false;
	std::thread mThread;
};

} // namespace SonaroHost::Playback
