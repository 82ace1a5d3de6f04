#include "Media.h"

#include "Vexilon/MediaManager.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>

namespace SonaroHost::Testing
{

namespace
{

struct Closer
{
	void operator()(SNDFILE* inFile) const { sf_close(inFile); }
};

using File = std::unique_ptr<SNDFILE, Closer>;

} // namespace

TemporaryFolder::TemporaryFolder()
{
	std::random_device random;
	std::array<char, 48> name{};
	std::snprintf(name.data(), name.size(), "sonaro-test-%08x%08x", random(), random());
	mPath = std::filesystem::temp_directory_path() / name.data();
	std::filesystem::create_directory(mPath);
}

TemporaryFolder::~TemporaryFolder()
{
	std::error_code error;
	std::filesystem::remove_all(mPath, error);
}

std::vector<std::string> TemporaryFolder::List() const
{
	std::vector<std::string> names;
	for (auto const& entry : std::filesystem::directory_iterator(mPath))
	{
		names.push_back(entry.path().filename().string());
	}
	std::sort(names.begin(), names.end());
	return names;
}

std::filesystem::path operator/(TemporaryFolder const& inFolder, std::string const& inName)
{
	return inFolder.Get() / inName;
}

ByteBudget::ByteBudget(unsigned long long inBytes)
	: mBefore(VX::GetMediaManager()->GetByteBudget())
{
	VX::GetMediaManager()->SetByteBudget(inBytes);
}

ByteBudget::~ByteBudget()
{
	VX::GetMediaManager()->SetByteBudget(mBefore);
}

std::vector<FileKind> const& GetFileKinds()
{
	static std::vector<FileKind> const sKinds = {
		// name                 format                                          channels, rate, compression
		{"WAV 8", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1, 22050},
		{"WAV 16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, 44100},
		{"WAV 24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 1, 48000},
		{"WAV 32", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 2, 96000},
		{"WAV float", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 2, 48000},
		{"WAV double", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 1, 48000},
		{"WAV u-law", SF_FORMAT_WAV | SF_FORMAT_ULAW, 1, 8000},
		{"WAV A-law", SF_FORMAT_WAV | SF_FORMAT_ALAW, 2, 8000},
		{"WAV IMA ADPCM", SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, 2, 44100},
		{"WAV MS ADPCM", SF_FORMAT_WAV | SF_FORMAT_MS_ADPCM, 2, 44100},
		{"WAV GSM", SF_FORMAT_WAV | SF_FORMAT_GSM610, 1, 8000},
		{"WAV G.721", SF_FORMAT_WAV | SF_FORMAT_G721_32, 1, 8000},
		{"WAV NMS ADPCM", SF_FORMAT_WAV | SF_FORMAT_NMS_ADPCM_24, 1, 8000},
		{"WAV extensible 5.1", SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, 6, 48000},
		{"WAV 64 channels", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 64, 48000},
		{"RF64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 2, 48000},
		{"W64", SF_FORMAT_W64 | SF_FORMAT_PCM_24, 2, 48000},
		{"AIFF 24", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 2, 44100},
		{"AIFF float", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, 1, 44100},
		{"AIFF IMA ADPCM", SF_FORMAT_AIFF | SF_FORMAT_IMA_ADPCM, 1, 44100},
		{"AU float", SF_FORMAT_AU | SF_FORMAT_FLOAT, 2, 44100},
		{"AU G.723", SF_FORMAT_AU | SF_FORMAT_G723_24, 1, 8000},
		{"XI DPCM", SF_FORMAT_XI | SF_FORMAT_DPCM_16, 1, 44100},
		{"CAF 16", SF_FORMAT_CAF | SF_FORMAT_PCM_16, 2, 44100},
		{"CAF ALAC 16", SF_FORMAT_CAF | SF_FORMAT_ALAC_16, 2, 44100},
		{"CAF ALAC 20", SF_FORMAT_CAF | SF_FORMAT_ALAC_20, 2, 44100},
		{"CAF ALAC 24", SF_FORMAT_CAF | SF_FORMAT_ALAC_24, 1, 48000},
		{"FLAC 16", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 2, 44100},
		{"FLAC 24", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 6, 48000},
		{"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 2, 44100},
		{"Vorbis, low rate", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1, 44100, 0.95},
		{"Opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 2, 48000},
		{"Opus, low rate", SF_FORMAT_OGG | SF_FORMAT_OPUS, 1, 48000, 0.95},
		{"Opus at 16 kHz", SF_FORMAT_OGG | SF_FORMAT_OPUS, 1, 16000},
		{"MP3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 2, 44100},
		{"MP3, mono", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 1, 48000},
		{"MP3, low rate", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 2, 22050, 0.99},
	};
	return sKinds;
}

void WriteSound(std::filesystem::path const& inPath, int inFormat, Sound const& inSound,
	std::optional<double> inCompression, std::vector<int> const& inChannelMap)
{
	SF_INFO info{};
	info.format = inFormat;
	info.channels = inSound.mChannels;
	info.samplerate = inSound.mSampleRate;
	File const file(sf_open(inPath.c_str(), SFM_WRITE, &info));
	ASSERT_TRUE(file) << inPath << ": " << sf_strerror(nullptr);
	if (inCompression)
	{
		sf_command(file.get(), SFC_SET_COMPRESSION_LEVEL, &*inCompression, sizeof *inCompression);
	}
	if (!inChannelMap.empty())
	{
		std::vector<int> map = inChannelMap;
		int const size = static_cast<int>(map.size() * sizeof(int));
		ASSERT_TRUE(sf_command(file.get(), SFC_SET_CHANNEL_MAP_INFO, map.data(), size));
	}
	// In pieces: the Vorbis encoder of libsndfile keeps a whole call on the stack.
	constexpr std::int64_t kPiece = 1000;
	for (std::int64_t frame = 0; frame < inSound.GetFrames(); frame += kPiece)
	{
		std::int64_t const count = std::min(kPiece, inSound.GetFrames() - frame);
		ASSERT_EQ(
			sf_writef_float(file.get(), inSound.mSamples.data() + frame * inSound.mChannels, count), count)
			<< inPath;
	}
}

Sound ReadSound(std::filesystem::path const& inPath)
{
	SF_INFO info{};
	File const file(sf_open(inPath.c_str(), SFM_READ, &info));
	if (!file)
	{
		ADD_FAILURE() << inPath << ": " << sf_strerror(nullptr);
		return {1, 0, {}};
	}
	Sound sound{info.channels, info.samplerate, {}};
	constexpr sf_count_t kPiece = 4096;
	std::vector<float> piece(static_cast<std::size_t>(kPiece * info.channels));
	while (sf_count_t const count = sf_readf_float(file.get(), piece.data(), kPiece))
	{
		sound.mSamples.insert(sound.mSamples.end(), piece.begin(), piece.begin() + count * info.channels);
	}
	return sound;
}

std::vector<int> ReadIntegers(std::filesystem::path const& inPath)
{
	SF_INFO info{};
	File const file(sf_open(inPath.c_str(), SFM_READ, &info));
	if (!file)
	{
		ADD_FAILURE() << inPath << ": " << sf_strerror(nullptr);
		return {};
	}
	std::vector<int> integers(static_cast<std::size_t>(info.frames * info.channels));
	EXPECT_EQ(sf_readf_int(file.get(), integers.data(), info.frames), info.frames);
	return integers;
}

std::string ReadBytes(std::filesystem::path const& inPath)
{
	std::ifstream file(inPath, std::ios::binary);
	return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteBytes(std::filesystem::path const& inPath, std::string const& inBytes)
{
	std::ofstream file(inPath, std::ios::binary);
	file.write(inBytes.data(), static_cast<std::streamsize>(inBytes.size()));
}

} // namespace SonaroHost::Testing
