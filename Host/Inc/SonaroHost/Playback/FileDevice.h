#pragma once

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Playback/ClockedDevice.h"
#include "SonaroHost/Render/AudioFileWriter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace SonaroHost::Playback
{

// Writes what reaches it into a WAV of 32-bit floats, silence included, from the first Start on. The file appears
// under its name when Finish is called, or else with the end of the device.
//
// Errors  A full disk counts as the loss of the device, and what was written until then is dropped.
// Threads As OutputDevice; Finish: when it is stopped.
class FileDevice final : public ClockedDevice
{
public:
	explicit FileDevice(std::filesystem::path inPath, double inSpeed = 1.0);
	~FileDevice() override;

	// Throws a HostError when the file cannot be made there, or when the format is another one than at first.
	void Open(DeviceFormat const& inFormat) override;
	std::optional<std::string> FindLoss() const override;

	// Completes the file. Throws a HostError when that fails, or when writing did before.
	void Finish() override;

private:
	void Take(float const* inSamples, unsigned inFrames) override;

	std::filesystem::path mPath;
	std::optional<DeviceFormat> mFirstFormat;
	dsp::AudioBuffer mBuffer;
	std::unique_ptr<AudioFileWriter> mWriter;
	mutable std::mutex mMutex;
	// Why nothing more is written.
	std::optional<HostError> mFailure;
};

} // namespace SonaroHost::Playback
