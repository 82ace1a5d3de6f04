#include "SonaroHost/Render/AudioFileWriter.h"

#include "Host/Refusal.h"
#include "Media.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

namespace SonaroHost::Testing::AudioFileWriterTest
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

zorvmediatypes::AudioChannelLayout MakeLayout(int inChannels)
{
	return inChannels == 6 ? zorvmediatypes::Create51ChannelLayout()
						   : zorvmediatypes::CreateMultichannelLayout(inChannels);
}

// Writes blocks of that size, one after the other.
void WriteBlocks(AudioFileWriter& ioWriter, Sound const& inSound, unsigned inBlockFrames)
{
	auto const channels = static_cast<unsigned>(inSound.mChannels);
	dsp::AudioBuffer buffer(channels, inBlockFrames);
	for (std::int64_t first = 0; first < inSound.GetFrames(); first += inBlockFrames)
	{
		std::int64_t const count = std::min<std::int64_t>(inBlockFrames, inSound.GetFrames() - first);
		buffer.SetUseSize(static_cast<unsigned>(count));
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			for (std::int64_t i = 0; i < count; ++i)
			{
				buffer.GetChannel(channel)[i] =
					inSound.mSamples[static_cast<std::size_t>((first + i) * inSound.mChannels + channel)];
			}
		}
		ioWriter.Write(buffer);
	}
}

// Returns how many samples were clipped.
std::int64_t WriteFile(std::filesystem::path const& inPath, OutputFormat const& inFormat,
	Sound const& inSound, unsigned inBlockFrames = 512)
{
	AudioFileWriter writer(
		inPath, inFormat, inSound.mSampleRate, MakeLayout(inSound.mChannels), inSound.GetFrames());
	WriteBlocks(writer, inSound, inBlockFrames);
	writer.Finish();
	return writer.GetClippedSamples();
}

constexpr OutputContainer kContainers[] = {
	OutputContainer::kWav, OutputContainer::kAiff, OutputContainer::kFlac, OutputContainer::kCaf};

TEST(AudioFileWriter, FloatsGoInBitForBit)
{
	using Limits = std::numeric_limits<float>;
	std::vector<float> const samples = {0.0f, -0.0f, Limits::denorm_min(), -Limits::denorm_min(),
		Limits::min() / 2, 1.0f, -1.0f, 1.5f, -1000.0f, Limits::max(), Limits::lowest(), Limits::infinity(),
		-Limits::infinity(), Limits::quiet_NaN(), 1.0f / 3.0f, 1e-20f};
	TemporaryFolder const folder;
	for (OutputContainer const container :
		{OutputContainer::kWav, OutputContainer::kAiff, OutputContainer::kCaf})
	{
		for (int const channels : {1, 2, 4})
		{
			SCOPED_TRACE(GetName(container));
			Sound const sound{channels, 48000, samples};
			EXPECT_EQ(
				WriteFile(folder / "out", {container, OutputSamples::kFloat32, Dither::kNone}, sound, 3), 0);
			EXPECT_TRUE(SameBits(ReadSound(folder / "out"), sound));
		}
	}
}

TEST(AudioFileWriter, IntegersOfEveryContainerComeBackBitForBit)
{
	TemporaryFolder const folder;
	for (OutputSamples const samples : {OutputSamples::kInteger16, OutputSamples::kInteger24})
	{
		int const bits = GetIntegerBits(samples);
		Sound sound{2, 44100, {}};
		std::vector<int> integers;
		for (int i = 0; i < 20000; ++i)
		{
			int const fullScale = 1 << (bits - 1);
			int const value = i == 0   ? fullScale - 1
							  : i == 1 ? -fullScale
									   : (i * 7919) % fullScale - fullScale / 2;
			sound.mSamples.push_back(static_cast<float>(value) / static_cast<float>(fullScale));
			integers.push_back(value * (1 << (32 - bits)));
		}
		for (OutputContainer const container : kContainers)
		{
			SCOPED_TRACE(GetName(container));
			EXPECT_EQ(WriteFile(folder / "out", {container, samples, Dither::kNone}, sound), 0);
			EXPECT_EQ(ReadIntegers(folder / "out"), integers);
		}
	}
}

TEST(AudioFileWriter, SameBytesForAnyBlockSizeAndAnyTime)
{
	TemporaryFolder const folder;
	Sound const sound = MakeSound(3, 48000, 20000);
	for (OutputContainer const container : kContainers)
	{
		for (OutputSamples const samples : {OutputSamples::kInteger16, OutputSamples::kFloat32})
		{
			bool const isFloat = samples == OutputSamples::kFloat32;
			if (isFloat && container == OutputContainer::kFlac)
			{
				continue;
			}
			SCOPED_TRACE(GetName(container) + " " + GetName(samples));
			OutputFormat const format{container, samples, isFloat ? Dither::kNone : Dither::kTriangular};
			WriteFile(folder / "whole", format, sound, 20000);
			std::string const whole = ReadBytes(folder / "whole");
			for (unsigned const block : {1u, 7u, 256u, 8192u, 20000u})
			{
				WriteFile(folder / "blocks", format, sound, block);
				EXPECT_EQ(ReadBytes(folder / "blocks"), whole) << block;
			}
			// The chunk of peaks holds a time.
			EXPECT_THAT(whole.substr(0, 200), testing::Not(HasSubstr("PEAK")));
		}
	}
}

TEST(AudioFileWriter, AFlaggedChannelIsZerosWhateverItsSamples)
{
	TemporaryFolder const folder;
	dsp::AudioBuffer buffer(2, 100);
	std::fill_n(buffer.GetChannel(0), 100, 0.25f);
	std::fill_n(buffer.GetChannel(1), 100, std::numeric_limits<float>::quiet_NaN());
	buffer.MarkChannelSilent(1);
	for (OutputSamples const samples : {OutputSamples::kInteger16, OutputSamples::kFloat32})
	{
		AudioFileWriter writer(folder / "out.wav", {OutputContainer::kWav, samples, Dither::kNone}, 48000,
			zorvmediatypes::CreateStereoChannelLayout(), 100);
		writer.Write(buffer);
		writer.Finish();
		EXPECT_EQ(writer.GetClippedSamples(), 0);
		Sound expected{2, 48000, {}};
		for (int i = 0; i < 100; ++i)
		{
			expected.mSamples.insert(expected.mSamples.end(), {0.25f, 0.0f});
		}
		EXPECT_TRUE(SameBits(ReadSound(folder / "out.wav"), expected));
	}
}

TEST(AudioFileWriter, CountsClippedSamplesOverAllChannels)
{
	TemporaryFolder const folder;
	Sound const sound{2, 48000, {1.5f, 0.0f, -2.0f, 1.0f, 0.5f, -1.0f}};
	OutputFormat const format{OutputContainer::kWav, OutputSamples::kInteger24, Dither::kNone};
	EXPECT_EQ(WriteFile(folder / "out.wav", format, sound), 3);
	constexpr int kTop = 0x7fffff00;
	constexpr int kBottom = std::numeric_limits<int>::min();
	EXPECT_THAT(ReadIntegers(folder / "out.wav"), ElementsAre(kTop, 0, kBottom, kTop, 0x40000000, kBottom));
}

TEST(AudioFileWriter, AWavBeyond4GigabytesHas64BitLengths)
{
	TemporaryFolder const folder;
	// 4 bytes a frame: the last that fits 32 bits with its header, and one that does not.
	for (bool const isLarge : {false, true})
	{
		std::int64_t const frames = isLarge ? 1073741824 : 1073725440;
		AudioFileWriter writer(folder / "out.wav",
			{OutputContainer::kWav, OutputSamples::kFloat32, Dither::kNone}, 48000,
			zorvmediatypes::CreateMonoChannelLayout(), frames);
		writer.Finish();
		EXPECT_EQ(ReadBytes(folder / "out.wav").substr(0, 4), isLarge ? "RF64" : "RIFF");
	}
}

TEST(AudioFileWriter, RefusesWhatAFormatCannotHoldAndLeavesNothing)
{
	struct Case
	{
		OutputFormat mFormat;
		int mChannels;
		int mSampleRate;
		std::int64_t mFrames;
		char const* mReason;
	};
	constexpr OutputFormat kFlac{OutputContainer::kFlac, OutputSamples::kInteger24, Dither::kNone};
	constexpr OutputFormat kFloatFlac{OutputContainer::kFlac, OutputSamples::kFloat32, Dither::kNone};
	constexpr OutputFormat kAiff{OutputContainer::kAiff, OutputSamples::kInteger24, Dither::kNone};
	constexpr Case kCases[] = {
		{kFloatFlac, 2, 48000, 100, "FLAC cannot hold floats; choose 16 or 24 bits, or WAV"},
		{kFlac, 9, 48000, 100, "FLAC holds at most 8 channels, not 9; choose WAV or CAF"},
		{kFlac, 2, 700000, 100, "out.x"},
		{kAiff, 2, 48000, 800000000, "AIFF holds at most 4 GB; choose WAV or CAF"},
	};
	TemporaryFolder const folder;
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mReason);
		auto const open = [&]
		{
			AudioFileWriter const writer(
				folder / "out.x", test.mFormat, test.mSampleRate, MakeLayout(test.mChannels), test.mFrames);
		};
		EXPECT_THAT(GetRefusalOf(open, HostError::Kind::kRequest), HasSubstr(test.mReason));
		EXPECT_THAT(folder.List(), IsEmpty());
	}
}

TEST(AudioFileWriter, AFileAppearsWholeOrNotAtAll)
{
	TemporaryFolder const folder;
	WriteBytes(folder / "old.wav", "what was there before");
	OutputFormat const format{OutputContainer::kWav, OutputSamples::kFloat32, Dither::kNone};
	Sound const sound = MakeSound(2, 48000, 30000);
	{
		AudioFileWriter writer(folder / "old.wav", format, 48000, MakeLayout(2), 30000);
		WriteBlocks(writer, sound, 1000);
		// In the making, the new file stands beside the old one.
		EXPECT_EQ(folder.List().size(), 2u);
		EXPECT_EQ(ReadBytes(folder / "old.wav"), "what was there before");
	}
	EXPECT_THAT(folder.List(), ElementsAre("old.wav"));
	EXPECT_EQ(ReadBytes(folder / "old.wav"), "what was there before");

	WriteFile(folder / "old.wav", format, sound);
	EXPECT_THAT(folder.List(), ElementsAre("old.wav"));
	EXPECT_TRUE(SameBits(ReadSound(folder / "old.wav"), sound));
}

} // namespace SonaroHost::Testing::AudioFileWriterTest
