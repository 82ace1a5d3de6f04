#pragma once

#include "Sonaro/Types.h"

#include <cstdint>
#include <optional>
#include <string>

namespace SonaroHost::Playback
{

// What a device is opened with.
struct DeviceFormat
{
	// In Hz.
	int mSampleRate = 48000;
	// How many, interleaved.
	unsigned mChannels = 2;
	// The frames that the device asks for at a time, as far as it lets itself be asked.
	unsigned mBlockFrames = 512;
};

// Gives a device what is heard.
class DeviceClient
{
public:
	virtual ~DeviceClient() = default;

	// Writes the next frames, channels interleaved, full scale at 1. Called on the device's thread, one call at a time:
	// it neither waits, locks nor allocates.
	virtual void Fill(float* outSamples, unsigned inFrames) SONARO_NONBLOCKING = 0;
};

// Where sound goes: a sound card, a server of sounds, a file or nowhere.
//
// Order    Open, then Start and Stop as often as wanted, and Open again for another format or after a loss.
// Threads  FindLoss, GetLatencyFrames, GetBurstFrames and CountUnderflows: any. The rest: one at a time, not the device's own.
class OutputDevice
{
public:
	virtual ~OutputDevice() = default;

	// Stops what runs. Throws a HostError of kind kOutput when the device is not there or cannot have that format.
	virtual void Open(DeviceFormat const& inFormat) = 0;
	// From now on the client is asked for frames, until Stop returns. Throws a HostError as Open does.
	virtual void Start(DeviceClient& ioClient) = 0;
	// Nobody asks the client any more when it returns. May be called when nothing runs.
	virtual void Stop() = 0;

	// How many frames it may ask for at once, in one call or several: a block, if it does not say more. Known once it is open.
	virtual std::int64_t GetBurstFrames() const { return 0; }
	// How many frames lie between the client and the ear.
	virtual std::int64_t GetLatencyFrames() const = 0;
	// How often the device ran dry although its client was never late.
	virtual std::uint64_t CountUnderflows() const { return 0; }
	// Why the device stopped by itself since the last Open, as a sentence for people; nothing while it runs.
	virtual std::optional<std::string> FindLoss() const = 0;
	// When it is stopped for good: what it keeps of the sound is complete. Throws a HostError when that fails.
	virtual void Finish() {}
};

} // namespace SonaroHost::Playback
