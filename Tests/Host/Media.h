#pragma once

#include "Sound.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace SonaroHost::Testing
{

// A folder of its own for each test, gone with it.
class TemporaryFolder
{
public:
	TemporaryFolder();
	~TemporaryFolder();
	TemporaryFolder(TemporaryFolder const&) = delete;
	TemporaryFolder& operator=(TemporaryFolder const&) = delete;

	std::filesystem::path const& Get() const { return mPath; }
	// The names in it, hidden ones too, in alphabetical order.
	std::vector<std::string> List() const;

private:
	std::filesystem::path mPath;
};

std::filesystem::path operator/(TemporaryFolder const& inFolder, std::string const& inName);

// As long as it lives, the media manager of the process keeps no more than so many bytes.
class ByteBudget
{
public:
	explicit ByteBudget(unsigned long long inBytes);
	~ByteBudget();
	ByteBudget(ByteBudget const&) = delete;
	ByteBudget& operator=(ByteBudget const&) = delete;

private:
	unsigned long long mBefore;
};

// One way to write a file.
struct FileKind
{
	char const* mName;
	int mFormat;
	int mChannels;
	int mSampleRate;
	// How hard a codec that loses bits compresses, from 0 to 1.
	std::optional<double> mCompression = std::nullopt;
};

inline void PrintTo(FileKind const& inKind, std::ostream* ioStream)
{
	*ioStream << inKind.mName;
}

// Formats of every kind of codec that libsndfile can write.
std::vector<FileKind> const& GetFileKinds();

// inChannelMap: libsndfile's places of the channels, where the container has any.
void WriteSound(std::filesystem::path const& inPath, int inFormat, Sound const& inSound,
	std::optional<double> inCompression = std::nullopt, std::vector<int> const& inChannelMap = {});

// One plain decode from start to end, by libsndfile alone.
Sound ReadSound(std::filesystem::path const& inPath);

// The raw integers of a file, upper bits first.
std::vector<int> ReadIntegers(std::filesystem::path const& inPath);

std::string ReadBytes(std::filesystem::path const& inPath);
void WriteBytes(std::filesystem::path const& inPath, std::string const& inBytes);

} // namespace SonaroHost::Testing
