#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "zorvmediatypes/AudioChannelDescription.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Writes rendered blocks into a sound file. The same samples give the same bytes, however they are cut
// into blocks and whenever it is done: nothing of the time or the machine goes into the file.
//
// Integers  Rounded by SampleQuantizer. Floats go in bit for bit.
// Size      A WAV beyond 4 GB becomes an RF64, its 64-bit form; an AIFF beyond is refused at the start.
// Layout    5.1 is marked as such. A sound field in a WAV is marked as B-format, which has FuMa's order W, X, Y and Z and W
//           3 dB softer; elsewhere it is written as it is. Other layouts of more than two channels have no marks.
class AudioFileWriter
{
public:
	// inFrames: how many will be written. Throws a HostError when the format cannot hold that, or the
	// file cannot be made. inTimeReference: the first sample's place in samples since midnight, which a WAV
	// carries in its broadcast extension; other containers have no room for it.
	AudioFileWriter(std::filesystem::path const& inPath, OutputFormat const& inFormat, int inSampleRate,
		zorvmediatypes::AudioChannelLayout const& inLayout, std::int64_t inFrames,
		std::optional<std::int64_t> inTimeReference = std::nullopt);
	// Without Finish, nothing is left of the file.
	~AudioFileWriter();

	// Appends the UseSize frames of the buffer, which has the layout's channels. Throws a HostError when
	// the disk is full.
	void Write(dsp::AudioBuffer const& inBuffer);

	// Completes the file under its temporary name; Finish gives it its own.
	void Complete();
	// Completes the file and gives it its name, as OutputFile::Commit does.
	void Finish(bool inReplaces = true);

	std::int64_t GetFrames() const;
	// How many samples of all channels were clipped; 0 for floats.
	std::int64_t GetClippedSamples() const;

private:
	struct Encoding;

	std::unique_ptr<Encoding> mEncoding;
};

} // namespace SonaroHost
