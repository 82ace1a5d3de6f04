#pragma once

#include "DeviceWatch.h"
#include "SonaroHost/Playback/OutputDevice.h"
#include "SystemDevices.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace SonaroHost::Playback
{

// PortAudio, as long as somebody has one of these. Threads: one at a time.
class PortAudioLibrary
{
public:
	PortAudioLibrary();
	~PortAudioLibrary();
	PortAudioLibrary(PortAudioLibrary const&) = delete;
	PortAudioLibrary& operator=(PortAudioLibrary const&) = delete;
};

// A device of the system, by PortAudio. After a loss it is looked for anew by its names, since what drives it may have been
// started again. That cannot be done with JACK: PortAudio waits for its server or ends the process.
class PortAudioDevice final : public OutputDevice
{
public:
	explicit PortAudioDevice(SystemDevice inDevice);
	~PortAudioDevice() override;
	PortAudioDevice(PortAudioDevice const&) = delete;
	PortAudioDevice& operator=(PortAudioDevice const&) = delete;

	void Open(DeviceFormat const& inFormat) override;
	void Start(DeviceClient& ioClient) override;
	void Stop() override;
	std::int64_t GetBurstFrames() const override { return mBurst.load(std::memory_order_relaxed); }
	std::int64_t GetLatencyFrames() const override { return mLatency.load(std::memory_order_relaxed); }
	std::optional<std::string> FindLoss() const override;
	std::uint64_t CountUnderflows() const override { return mUnderflows.load(std::memory_order_relaxed); }

private:
	struct Stream;

	void Close();
	// Throws a HostError when it is not there.
	void FindAgain();
	std::string Say(std::string const& inWhat) const;
	bool HasServerEnded() const;

	std::unique_ptr<PortAudioLibrary> mLibrary;
	SystemDevice mDevice;
	DeviceFormat mFormat;
	std::unique_ptr<Stream> mStream;
	std::atomic<std::int64_t> mBurst{0};
	std::atomic<std::int64_t> mLatency{0};
	std::atomic<std::uint64_t> mUnderflows{0};
	// Written by PortAudio when a stream ends by itself.
	std::atomic<bool> mHasEnded{false};
	std::atomic<bool> mIsStopping{false};
	std::atomic<bool> mIsStarted{false};
	// It went with a server that PortAudio can neither leave nor find again.
	bool mIsGone = false;
	// From the stop after a loss until it runs again.
	std::atomic<bool> mIsLost{false};
	DeviceWatch mWatch;
};

} // namespace SonaroHost::Playback
