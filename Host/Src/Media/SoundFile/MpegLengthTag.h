#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace SonaroHost
{

// What the start of an MPEG audio stream (MP3 and its elder layers) says about its length.
//
// The stream itself has no length field. Encoders put one into a first frame without sound: a tag named
// Xing, Info or VBRI. Without one that it knows, a decoder guesses the length from the first frame's bit
// rate, which is wrong for a variable rate.
struct MpegLengthTag
{
	// Whether the decoder that libsndfile uses takes the length from it; it knows no VBRI.
	bool mIsUsable = false;
	// Where the first frame starts: after an ID3v2 tag.
	std::int64_t mFirstFrame = 0;
	// The bytes of the stream from mFirstFrame on, where a tag gives them.
	std::optional<std::int64_t> mBytes;
};

// Nothing when the file is no MPEG audio stream.
std::optional<MpegLengthTag> ReadMpegLengthTag(std::filesystem::path const& inPath);

} // namespace SonaroHost
