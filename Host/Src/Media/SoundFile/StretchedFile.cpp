#include "StretchedFile.h"

#include "SonaroHost/Files/WholeFile.h"

#include <algorithm>
#include <cstdio>

namespace SonaroHost
{

namespace
{

// More than the ratio of the highest bit rate of a frame to the lowest, 320 to 8.
constexpr std::int64_t kStretch = 64;

// An ID3v1 tag.
constexpr std::int64_t kTagLength = 128;

} // namespace

StretchedFile::StretchedFile(std::filesystem::path const& inPath)
	: mFile(inPath, std::ios::binary),
	  mTrueLength(GetFileLength(inPath)),
	  mClaimedLength(mTrueLength * kStretch)
{
}

SF_VIRTUAL_IO StretchedFile::GetCallbacks()
{
	SF_VIRTUAL_IO callbacks{};
	callbacks.get_filelen = [](void* inSelf) -> sf_count_t
	{ return static_cast<StretchedFile*>(inSelf)->mClaimedLength; };
	callbacks.seek = [](sf_count_t inOffset, int inOrigin, void* inSelf) -> sf_count_t
	{ return static_cast<StretchedFile*>(inSelf)->Seek(inOffset, inOrigin); };
	callbacks.read = [](void* outBytes, sf_count_t inCount, void* inSelf) -> sf_count_t
	{ return static_cast<StretchedFile*>(inSelf)->Read(static_cast<char*>(outBytes), inCount); };
	callbacks.write = [](void const*, sf_count_t, void*) -> sf_count_t { return 0; };
	callbacks.tell = [](void* inSelf) -> sf_count_t
	{ return static_cast<StretchedFile*>(inSelf)->mPosition; };
	return callbacks;
}

std::int64_t StretchedFile::Seek(std::int64_t inOffset, int inOrigin)
{
	std::int64_t const base = inOrigin == SEEK_CUR ? mPosition : inOrigin == SEEK_END ? mClaimedLength : 0;
	mPosition = std::clamp<std::int64_t>(base + inOffset, 0, mClaimedLength);
	return mPosition;
}

std::int64_t StretchedFile::Read(char* outBytes, std::int64_t inCount)
{
	bool const isAtTag = mPosition >= mClaimedLength - kTagLength;
	std::int64_t const shift = isAtTag ? mClaimedLength - mTrueLength : 0;
	std::int64_t const position = mPosition - shift;
	std::int64_t const count = std::min(inCount, mTrueLength - position);
	if (count <= 0 || position < 0)
	{
		return 0;
	}
	mFile.clear();
	mFile.seekg(position);
	mFile.read(outBytes, count);
	mPosition += mFile.gcount();
	return mFile.gcount();
}

} // namespace SonaroHost
