#pragma once

#include "SonaroHost/Playback/OutputDevice.h"

#include <atomic>
#include <memory>
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

// A device of the system, by PortAudio.
class PortAudioDevice final : public OutputDevice
{
public:
	// inIndex: PortAudio's.
	PortAudioDevice(int inIndex, std::string inName);
	~PortAudioDevice() override;
	PortAudioDevice(PortAudioDevice const&) = delete;
	PortAudioDevice& operator=(PortAudioDevice const&) = delete;

	void Open(DeviceFormat const& inFormat) override;
	void Start(DeviceClient& ioClient) override;
	void Stop() override;
	std::int64_t GetLatencyFrames() const override { return mLatency.load(std::memory_order_relaxed); }
	std::optional<std::string> FindLoss() const override;
	std::uint64_t CountUnderflows() const override { return mUnderflows.load(std::memory_order_relaxed); }

private:
	struct Stream;

	void Close();

	PortAudioLibrary mLibrary;
	int mIndex;
	std::string mName;
	DeviceFormat mFormat;
	std::unique_ptr<Stream> mStream;
	std::atomic<std::int64_t> mLatency{0};
	std::atomic<std::uint64_t> mUnderflows{0};
	// Written by PortAudio when a stream ends by itself.
	std::atomic<bool> mHasEnded{false};
	std::atomic<bool> mIsStopping{false};
};

} // namespace SonaroHost::Playback
