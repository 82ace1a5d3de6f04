#include "SonaroHost/Media/AudioFileInspection.h"

#include "Host/Refusal.h"
#include "Media.h"
#include "Movies.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileReader.h"

#include <gmock/gmock.h>

#include <functional>

namespace SonaroHost::Testing::AudioFileInspectionTest
{

using testing::AllOf;
using testing::HasSubstr;

// The message with which a file is refused; empty when it is not.
std::string GetRefusal(std::filesystem::path const& inPath)
{
	return GetRefusalOf([&] { InspectAudioFile(inPath); });
}

// Where in a file the 32 bits of the length behind a chunk's name stand.
std::size_t FindLength(std::string const& inBytes, std::string const& inChunk)
{
	return inBytes.find(inChunk) + inChunk.size();
}

TEST(AudioFileInspection, AFileThatWasCutShortIsRefused)
{
	constexpr FileKind kKinds[] = {
		{"WAV", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, 44100},
		{"WAV float", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1, 44100},
		{"WAV, big endian", SF_FORMAT_WAV | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG, 2, 44100},
		{"WAV extensible", SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, 6, 48000},
		{"WAV IMA ADPCM", SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, 2, 44100},
		{"WAV GSM", SF_FORMAT_WAV | SF_FORMAT_GSM610, 1, 8000},
		{"RF64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 2, 44100},
		{"W64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 2, 44100},
		{"AIFF", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 2, 44100},
		{"AIFF float", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, 2, 44100},
		{"AU", SF_FORMAT_AU | SF_FORMAT_PCM_16, 2, 44100},
		{"AU, little endian", SF_FORMAT_AU | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE, 2, 44100},
		{"FLAC", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 2, 44100},
		{"CAF", SF_FORMAT_CAF | SF_FORMAT_PCM_16, 2, 44100},
		{"CAF ALAC", SF_FORMAT_CAF | SF_FORMAT_ALAC_16, 2, 44100},
		{"MP3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 2, 44100},
	};
	TemporaryFolder const folder;
	for (FileKind const& kind : kKinds)
	{
		SCOPED_TRACE(kind.mName);
		WriteSound(folder / "sound", kind.mFormat, MakeSound(kind.mChannels, kind.mSampleRate, 40000));
		std::string const bytes = ReadBytes(folder / "sound");
		EXPECT_EQ(GetRefusal(folder / "sound"), "");
		for (double const part : {0.3, 0.9})
		{
			WriteBytes(folder / "cut",
				bytes.substr(0, static_cast<std::size_t>(static_cast<double>(bytes.size()) * part)));
			std::string const refusal = GetRefusal(folder / "cut");
			EXPECT_THAT(refusal, HasSubstr("cut'"));
			EXPECT_THAT(refusal,
				testing::AnyOf(HasSubstr("truncated"), HasSubstr("malformed"), HasSubstr("No 'data' chunk")));
		}
	}
}

TEST(AudioFileInspection, LengthsThatWritersLeaveOpenCountAsNotStated)
{
	TemporaryFolder const folder;
	struct Case
	{
		char const* mName;
		int mFormat;
		std::function<void(std::string&)> mEdit;
	};
	auto const setLength = [](char const* inChunk, char const* inLength)
	{
		return [=](std::string& ioBytes)
		{ ioBytes.replace(FindLength(ioBytes, inChunk), 4, std::string(inLength, 4)); };
	};
	std::vector<Case> const cases = {
		{"WAV, all ones", SF_FORMAT_WAV | SF_FORMAT_PCM_16, setLength("data", "\xff\xff\xff\xff")},
		{"WAV, nearly 2 GB", SF_FORMAT_WAV | SF_FORMAT_PCM_16, setLength("data", "\x00\xf0\xff\x7f")},
		{"AU", SF_FORMAT_AU | SF_FORMAT_PCM_16,
			[](std::string& ioBytes) { ioBytes.replace(8, 4, "\xff\xff\xff\xff"); }},
		// 36 bits of the stream's information hold the number of samples.
		{"FLAC", SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
			[](std::string& ioBytes)
			{
				ioBytes[21] = static_cast<char>(ioBytes[21] & 0xf0);
				ioBytes.replace(22, 4, std::string(4, '\0'));
			}},
		// Without its last pages a stream has no end.
		{"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS,
			[](std::string& ioBytes) { ioBytes.resize(ioBytes.size() * 2 / 3); }},
	};
	Sound const sound = MakeSound(2, 44100, 60000);
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		WriteSound(folder / "sound", test.mFormat, sound);
		EXPECT_TRUE(InspectAudioFile(folder / "sound").mStatesLength);
		std::string bytes = ReadBytes(folder / "sound");
		test.mEdit(bytes);
		WriteBytes(folder / "sound", bytes);
		AudioFileInfo const info = InspectAudioFile(folder / "sound");
		EXPECT_FALSE(info.mStatesLength);
		EXPECT_EQ(info.mFrames, ReadSound(folder / "sound").GetFrames());
		EXPECT_GT(info.mFrames, 30000);
	}
}

TEST(AudioFileInspection, AFileThatChangesWhileItIsReadIsRefused)
{
	TemporaryFolder const folder;
	std::filesystem::path const path = folder / "sound";
	auto const replace = [&]
	{
		std::filesystem::copy_file(path, folder / "copy");
		std::filesystem::rename(folder / "copy", path);
	};
	auto const truncate = [&] { std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2); };
	for (int const format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_OGG | SF_FORMAT_VORBIS})
	{
		for (std::function<void()> const& change : std::vector<std::function<void()>>{replace, truncate})
		{
			WriteSound(path, format, MakeSound(1, 44100, 100000));
			AudioFileInfo const info = InspectAudioFile(path);
			AudioFileReader reader(info);
			reader.GetBlock(0);
			change();
			EXPECT_THAT(GetRefusalOf([&] { reader.GetBlock(info.mFrames / reader.GetBlockFrames()); }),
				AllOf(HasSubstr("sound'"), HasSubstr("has changed while it was being read")));
			EXPECT_THAT(GetRefusalOf([&] { AudioFileReader again(info); }), HasSubstr("has changed"));
		}
	}
}

TEST(AudioFileInspection, ARecordingThatWasNeverFinishedIsRefused)
{
	TemporaryFolder const folder;
	WriteSound(folder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeSound(2, 44100, 2000));
	std::string bytes = ReadBytes(folder / "a.wav");
	bytes.replace(FindLength(bytes, "data"), 4, std::string(4, '\0'));
	WriteBytes(folder / "a.wav", bytes);
	EXPECT_THAT(GetRefusal(folder / "a.wav"), HasSubstr("is unfinished"));

	// Nothing behind a length of zero: that file is merely empty of sound.
	WriteBytes(folder / "a.wav", bytes.substr(0, FindLength(bytes, "data") + 4));
	EXPECT_EQ(GetRefusal(folder / "a.wav"), "");
	EXPECT_EQ(InspectAudioFile(folder / "a.wav").mFrames, 0);
}

TEST(AudioFileInspection, LayoutsFollowTheChannelsAndTheirMap)
{
	struct Case
	{
		int mFormat;
		int mChannels;
		std::vector<int> mMap;
		char const* mLayout;
		std::vector<unsigned> mOrder;
	};
	constexpr int kAiff = SF_FORMAT_AIFF | SF_FORMAT_PCM_16;
	constexpr int kWav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
	constexpr int kVorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
	std::vector<Case> const cases = {
		{kWav, 1, {}, "mono", {0}},
		{kWav, 2, {}, "stereo", {0, 1}},
		{kWav, 3, {}, "3 channels", {0, 1, 2}},
		{kWav, 6, {}, "5.1", {0, 1, 2, 3, 4, 5}},
		{SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 6, {}, "5.1", {0, 1, 2, 3, 4, 5}},
		{kAiff, 6, {2, 3, 4, 11, 9, 10}, "5.1", {0, 1, 2, 3, 4, 5}},
		// Surrounds before the centre, as some mixers write.
		{kAiff, 6, {2, 3, 9, 10, 4, 11}, "5.1", {0, 1, 4, 5, 2, 3}},
		{kAiff, 6, {2, 4, 3, 9, 10, 11}, "5.1", {0, 2, 1, 5, 3, 4}},
		// Surrounds at the sides.
		{SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 6, {2, 3, 4, 11, 14, 15}, "5.1", {0, 1, 2, 3, 4, 5}},
		// Places in front of and behind the centre: some other six channels.
		{SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 6, {2, 3, 4, 11, 12, 13}, "6 channels", {0, 1, 2, 3, 4, 5}},
		{kAiff, 6, {2, 3, 9, 10, 4, 8}, "6 channels", {0, 1, 2, 3, 4, 5}},
		{kWav, 8, {}, "8 channels", {0, 1, 2, 3, 4, 5, 6, 7}},
		// The fixed orders of Vorbis and Opus have the centre second and the low frequency last.
		{kVorbis, 3, {}, "3 channels", {0, 2, 1}},
		{kVorbis, 5, {}, "5 channels", {0, 2, 1, 3, 4}},
		{kVorbis, 6, {}, "5.1", {0, 2, 1, 5, 3, 4}},
		{kVorbis, 8, {}, "8 channels", {0, 2, 1, 7, 5, 6, 3, 4}},
	};
	TemporaryFolder const folder;
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mChannels);
		Sound const sound = MakeSound(test.mChannels, 48000, 100);
		if (test.mFormat == kVorbis)
		{
			// In another process: libvorbisenc loses memory where it has no mode for so many channels.
			WriteSound(folder / "in.wav", kWav, sound);
			RunFfmpeg("-i " + (folder / "in.wav").string() + " -c:a libvorbis -f ogg -y " +
					  (folder / "a").string());
		}
		else
		{
			WriteSound(folder / "a", test.mFormat, sound, std::nullopt, test.mMap);
		}
		AudioFileInfo const info = InspectAudioFile(folder / "a");
		EXPECT_EQ(GetLayoutName(info.mLayout), test.mLayout);
		EXPECT_EQ(info.mChannelOrder, test.mOrder);
		EXPECT_EQ(info.mLayout.size(), static_cast<std::size_t>(test.mChannels));
	}
}

} // namespace SonaroHost::Testing::AudioFileInspectionTest
