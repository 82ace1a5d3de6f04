#include "Pulling.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <gmock/gmock.h>

#include <random>

namespace SonaroHost::Testing::AudioFileSourceTest
{

using testing::HasSubstr;

// Several blocks of the reader, and not a whole number of anything: the last block is a part of one packet
// in the codecs whose packets are large.
constexpr std::int64_t kFrames = 66537;

std::int64_t GetFramesFor(FileKind const& inKind)
{
	return inKind.mChannels > 8 ? kFrames / 8 : kFrames;
}

class EachFileKind : public testing::TestWithParam<FileKind>
{
protected:
	EachFileKind()
		: mPath(mFolder / "sound")
	{
		FileKind const& kind = GetParam();
		WriteSound(mPath, kind.mFormat, MakeSound(kind.mChannels, kind.mSampleRate, GetFramesFor(kind)),
			kind.mCompression);
		mReference = ReadSound(mPath);
	}

	TemporaryFolder mFolder;
	std::filesystem::path mPath;
	Sound mReference;
};

TEST_P(EachFileKind, RandomReadsEqualOneDecodeToTheBit)
{
	auto const source = AudioFileSource::Open(mPath);
	std::int64_t const frames = source->GetInfo().mFrames;
	ASSERT_EQ(frames, mReference.GetFrames());
	ASSERT_EQ(source->GetNumChannels(), static_cast<unsigned>(mReference.mChannels));

	constexpr unsigned kSeed = 4711;
	std::mt19937 random(kSeed);
	std::int64_t position = 0;
	for (int i = 0; i < 200; ++i)
	{
		auto const length = static_cast<unsigned>(i % 50 == 49 ? 20000 : 1 + random() % 3000);
		switch (random() % 6)
		{
		case 0: // just behind the last one
			position += length;
			break;
		case 1: // overlapping it
			position -= length / 2;
			break;
		case 2: // across the end
			position = frames - length / 2;
			break;
		case 3: // beyond the end
			position = frames + static_cast<std::int64_t>(random() % 1000);
			break;
		case 4: // around the start
			position = static_cast<std::int64_t>(random() % 100) - 50;
			break;
		default:
			position = static_cast<std::int64_t>(random() % static_cast<unsigned>(frames));
			break;
		}
		ASSERT_TRUE(SameBits(Pull(*source, position, length), CutWithSilence(mReference, position, length)))
			<< "read " << i << " of seed " << kSeed << ": " << length << " frames at " << position;
	}
	EXPECT_FALSE(source->GetFailure());
}

TEST_P(EachFileKind, ReadingForwardNeverJumps)
{
	AudioFileReader reader(mPath);
	std::int64_t const blockFrames = reader.GetBlockFrames();
	Sound read{mReference.mChannels, mReference.mSampleRate, {}};
	for (std::int64_t position = 0; position < reader.GetInfo().mFrames; position += blockFrames)
	{
		float const* const block = reader.GetBlock(position / blockFrames);
		std::int64_t const count = std::min(blockFrames, reader.GetInfo().mFrames - position);
		read.mSamples.insert(read.mSamples.end(), block, block + count * mReference.mChannels);
	}
	EXPECT_TRUE(SameBits(read, mReference));
	EXPECT_EQ(reader.GetJumpCount(), 0u);
}

TEST_P(EachFileKind, ReadingBackwardsEqualsOneDecode)
{
	auto const source = AudioFileSource::Open(mPath);
	constexpr unsigned kBlock = 1000;
	for (std::int64_t end = mReference.GetFrames(); end > 0; end -= kBlock)
	{
		std::int64_t const position = end - kBlock;
		ASSERT_TRUE(SameBits(Pull(*source, position, kBlock), CutWithSilence(mReference, position, kBlock)))
			<< "at " << position;
	}
}

std::string MakeTestName(testing::TestParamInfo<FileKind> const& inInfo)
{
	std::string name;
	for (char const* character = inInfo.param.mName; *character; ++character)
	{
		name += std::isalnum(static_cast<unsigned char>(*character)) ? *character : '_';
	}
	return name;
}

INSTANTIATE_TEST_SUITE_P(AudioFileSource, EachFileKind, testing::ValuesIn(GetFileKinds()), MakeTestName);

// The plain decoder stops such a file at a guess. What it gives with the tag, which also trims the
// encoder's delay, is the whole.
TEST(AudioFileSource, MpegWithoutALengthIsReadToItsEnd)
{
	TemporaryFolder const folder;
	// Variable rate: a start that takes few bits or many misleads the guess in either direction.
	Sound const loud = MakeSound(2, 44100, 200000);
	Sound silent{2, 44100, std::vector<float>(400000)};
	Sound quietFirst = silent;
	quietFirst.mSamples.insert(quietFirst.mSamples.end(), loud.mSamples.begin(), loud.mSamples.end());
	Sound loudFirst = loud;
	loudFirst.mSamples.insert(loudFirst.mSamples.end(), silent.mSamples.begin(), silent.mSamples.end());
	for (Sound const& sound : {quietFirst, loudFirst})
	{
		WriteSound(folder / "tag.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, sound);
		std::string const bytes = ReadBytes(folder / "tag.mp3");
		// The second frame starts like the first but for its bit rate and padding.
		std::size_t const second = bytes.find(bytes.substr(0, 2), 4);
		ASSERT_NE(second, std::string::npos);
		std::string id3v1 = "TAG";
		id3v1.resize(128, ' ');
		WriteBytes(folder / "bare.mp3", bytes.substr(second) + id3v1);

		auto const source = AudioFileSource::Open(folder / "bare.mp3");
		EXPECT_FALSE(source->GetInfo().mStatesLength);
		Sound const whole = ReadSound(folder / "tag.mp3");
		ASSERT_EQ(whole.GetFrames(), sound.GetFrames());
		ASSERT_GE(source->GetInfo().mFrames, whole.GetFrames());
		// The delay that the tag has the decoder trim: 576 of this encoder, 529 of any decoder.
		Sound const read = Pull(*source, 576 + 529, static_cast<unsigned>(whole.GetFrames()));
		EXPECT_TRUE(SameBits(read, whole));
	}
}

TEST(AudioFileSource, WritesOnlyIntoTheWindowThatItGets)
{
	TemporaryFolder const folder;
	Sound const sound = MakeSound(2, 48000, 1000);
	WriteSound(folder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	auto const source = AudioFileSource::Open(folder / "a.wav");

	// More channels than the file, and a window in the middle.
	dsp::AudioBuffer buffer(3, 300);
	for (unsigned long long channel = 0; channel < 3; ++channel)
	{
		std::fill_n(buffer.GetChannel(channel), 300, 0.5f);
	}
	dsp::AudioSubBuffer window;
	window.Init(3);
	window.Assign(buffer, 100);
	window.SetUseSize(100);
	source->ReadAudio(VX::BinaryData(), window, SN::TickTime(950, source->GetFrameRate()), false);

	EXPECT_TRUE(window.IsChannelSilent(2));
	for (unsigned i = 0; i < 300; ++i)
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			bool const isInWindow = i >= 100 && i < 200;
			bool const isInFile = i < 150;
			float const expected = !isInWindow ? 0.5f
								   : isInFile  ? sound.mSamples[(850 + i) * 2 + channel]
											   : 0.0f;
			ASSERT_EQ(buffer.GetChannel(channel)[i], expected) << "sample " << i << ", channel " << channel;
		}
	}
}

TEST(AudioFileSource, DamageInTheMiddleIsSilenceAndAnErrorThatTellsWhere)
{
	TemporaryFolder const folder;
	Sound const sound = MakeSound(1, 44100, 100000);
	WriteSound(folder / "a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, sound);
	std::string bytes = ReadBytes(folder / "a.flac");
	std::size_t const middle = bytes.size() / 2;
	bytes.replace(middle, 40000, std::string(40000, '\x55'));
	WriteBytes(folder / "a.flac", bytes);

	auto const source = AudioFileSource::Open(folder / "a.flac");
	EXPECT_TRUE(SameBits(Pull(*source, 0, 1000), sound.Cut(0, 1000)) || !source->GetFailure());
	for (std::int64_t position = 0; position < 100000; position += 1000)
	{
		Pull(*source, position, 1000);
	}
	ASSERT_TRUE(source->GetFailure());
	EXPECT_THAT(source->GetFailure()->what(), HasSubstr("a.flac': cannot be read at sample "));
	EXPECT_TRUE(SameBits(Pull(*source, 99000, 1000), Sound{1, 44100, std::vector<float>(1000)}));
}

} // namespace SonaroHost::Testing::AudioFileSourceTest
