#pragma once

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace SonaroHost
{

// A file that claims to be many times as long as it is, as libsndfile reads it.
//
// libsndfile stops at the length that it guesses for an MPEG stream without a length tag, and the guess
// goes by the size of the file. With this the guess always lies beyond the end, and the true length is
// what can be decoded. The last bytes, where an ID3v1 tag stands, are also found at the claimed end; what
// lies between reads as nothing.
class StretchedFile
{
public:
	explicit StretchedFile(std::filesystem::path const& inPath);

	// The callbacks; their user data is this object.
	static SF_VIRTUAL_IO GetCallbacks();

private:
	std::int64_t Seek(std::int64_t inOffset, int inOrigin);
	std::int64_t Read(char* outBytes, std::int64_t inCount);

	std::ifstream mFile;
	std::int64_t mTrueLength;
	std::int64_t mClaimedLength;
	std::int64_t mPosition = 0;
};

} // namespace SonaroHost
