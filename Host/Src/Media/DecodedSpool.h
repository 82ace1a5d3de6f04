#pragma once

#include "Files/SystemFiles.h"
#include "SoundDecoder.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace SonaroHost
{

// The decoded samples of a file from its start on, kept in a nameless temporary file that goes with
// this object. It serves codecs that cannot be entered in the middle without changing their samples:
// what was decoded once is read back.
class DecodedSpool
{
public:
	// The decoder stands at the start of the file inPath. Throws a HostError when there is no room for temporary
	// files.
	DecodedSpool(std::filesystem::path inPath, std::unique_ptr<SoundDecoder> inDecoder);

	// Reads frames that may lie anywhere in the file, decoding up to their end first. Returns how many
	// there were.
	std::int64_t Read(std::int64_t inPosition, float* outSamples, std::int64_t inFrames);

private:
	// Decodes until inEnd, as far as the stream goes.
	void ExtendTo(std::int64_t inEnd);
	[[noreturn]] void ThrowFailure() const;

	std::filesystem::path mPath;
	std::unique_ptr<SoundDecoder> mDecoder;
	FileHandle mFile;
};

} // namespace SonaroHost
