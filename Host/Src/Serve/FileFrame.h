#pragma once

#include "Render/Encoder/AudioEncoder.h"

#include <cstdint>
#include <string>

namespace SonaroHost::Serve
{

// What a file of uncompressed samples has around them: the bytes that AudioFileWriter would write.
struct FileFrame
{
	std::int64_t GetLength() const
	{
		return static_cast<std::int64_t>(mHeader.size() + mTrailer.size()) + mSampleBytes;
	}

	std::string mHeader;
	std::int64_t mSampleBytes = 0;
	std::string mTrailer;
};

// The frame of a WAV of any length, which takes no time for its samples. Throws a HostError for a format that no file can
// have.
FileFrame MakeFileFrame(EncoderFormat const& inFormat);

} // namespace SonaroHost::Serve
