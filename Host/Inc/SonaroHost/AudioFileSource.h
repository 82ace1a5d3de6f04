#pragma once

#include "Sonaro/IAudioSource.h"
#include "Sonaro/IAudioSourceFile.h"
#include "SonaroHost/AudioFileReader.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace SonaroHost
{

// A sound file as a source for the engine.
//
// Channels  In the order of the layout: a 5.1 file whose channels stand otherwise is put in order.
// Errors    A read cannot report one: where the file cannot be decoded it gives silence from then on, and
//           GetFailure tells why. Whoever renders asks after each block.
// Threads   One at a time.
class AudioFileSource final : public SN::IAudioSource, public SN::IAudioSourceFile
{
public:
	static constexpr SN::Identifier<AudioFileSource> kIdentifier{
		0xd16a24bb9fd1a84cull, 0x2f0c94a3c3d70a95ull};

	// Throws a HostError when the file cannot be opened.
	static SN::InterfaceRef<AudioFileSource> Open(std::filesystem::path const& inPath);

	explicit AudioFileSource(std::unique_ptr<AudioFileReader> inReader);

	AudioFileInfo const& GetInfo() const { return mReader->GetInfo(); }
	// The error that stopped reading.
	std::optional<std::string> const& GetFailure() const { return mFailure; }

	SN::FrameRate GetFrameRate() override { return mFrameRate; }
	SN::TickTime GetLength() override { return SN::TickTime(GetInfo().mFrames, mFrameRate); }
	unsigned GetNumChannels() override { return GetInfo().GetNumChannels(); }
	SN::AudioChannelLayout GetAudioChannelLayout() override { return GetInfo().mLayout; }
	SN::ImmutableString GetName() override { return mName; }
	void ReadAudio(VX::BinaryData const& inOptions, dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime,
		bool inFlag) override;

	bool IsGrowing() override { return false; }
	SN::ImmutableString GetPath() override { return mPath; }
	unsigned GetRevision() override { return 0; }
	SN::TickTime GetDuration() override { return GetLength(); }

protected:
	void* QueryMap(SN::Guid const& inIdentifier) override;

private:
	// Copies frames of the file that lie within it to inOffset in the buffer.
	void CopyFrames(
		std::int64_t inPosition, dsp::AudioBuffer& ioBuffer, unsigned inOffset, unsigned inFrames);

	std::unique_ptr<AudioFileReader> mReader;
	SN::FrameRate mFrameRate;
	SN::ImmutableString mName;
	SN::ImmutableString mPath;
	std::optional<std::string> mFailure;
};

} // namespace SonaroHost
