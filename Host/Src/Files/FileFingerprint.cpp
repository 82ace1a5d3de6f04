#include "SonaroHost/Files/FileFingerprint.h"

#include "SonaroHost/Files/Digest.h"
#include "SonaroHost/Files/FileState.h"
#include "SonaroHost/Files/WholeFile.h"

#include <algorithm>
#include <fstream>
#include <vector>

namespace SonaroHost
{

FileFingerprint TakeFingerprint(std::filesystem::path const& inPath)
{
	constexpr std::int64_t kEndBytes = std::int64_t{1} << 16;
	FileFingerprint print{inPath, -1, 0, {}};
	std::ifstream file(inPath, std::ios::binary);
	auto const state = ReadFileState(inPath);
	if (!state || !file)
	{
		return print;
	}
	print.mBytes = state->mSize;
	print.mTime = state->mTime;
	Digest digest;
	std::vector<char> bytes(kEndBytes);
	for (std::int64_t const first : {std::int64_t{0}, std::max<std::int64_t>(state->mSize - kEndBytes, 0)})
	{
		file.seekg(first);
		file.read(bytes.data(), kEndBytes);
		CheckRead(file, inPath);
		digest.Add(bytes.data(), static_cast<std::size_t>(file.gcount()));
		file.clear();
	}
	print.mDigest = digest.GetText();
	return print;
}

FileFingerprint TakeWholeFingerprint(std::filesystem::path const& inPath)
{
	constexpr std::int64_t kStepBytes = std::int64_t{1} << 20;
	FileFingerprint print{inPath, -1, 0, {}};
	std::ifstream file(inPath, std::ios::binary);
	if (!file)
	{
		return print;
	}
	Digest digest;
	std::vector<char> bytes(kStepBytes);
	print.mBytes = 0;
	while (file.read(bytes.data(), kStepBytes) || file.gcount() > 0)
	{
		digest.Add(bytes.data(), static_cast<std::size_t>(file.gcount()));
		print.mBytes += file.gcount();
	}
	CheckRead(file, inPath);
	print.mDigest = digest.GetText();
	return print;
}

} // namespace SonaroHost
