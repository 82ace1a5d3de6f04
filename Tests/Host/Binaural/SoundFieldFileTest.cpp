#include "../ClipRenders.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Media/AudioFileInspection.h"

#include <cmath>
#include <numbers>

namespace SonaroHost::Testing::SoundFieldFileTest
{

constexpr int kRate = 48000;
constexpr std::int64_t kFrames = 5000;
// At the scale of FuMa, against SN3D.
float const kScaleOfW = std::numbers::sqrt2_v<float> / 2.0f;

class SoundFieldFileTest : public ClipRenders
{
protected:
	// Writes four channels as B-format by libsndfile alone.
	void WriteField(std::string const& inName, Sound const& inSound) const
	{
		SF_INFO info{};
		info.channels = inSound.mChannels;
		info.samplerate = inSound.mSampleRate;
		info.format = SF_FORMAT_WAVEX | SF_FORMAT_FLOAT;
		SNDFILE* const file = sf_open((mFolder / inName).c_str(), SFM_WRITE, &info);
		ASSERT_TRUE(file);
		sf_command(file, SFC_WAVEX_SET_AMBISONIC, nullptr, SF_AMBISONIC_B_FORMAT);
		sf_writef_float(file, inSound.mSamples.data(), inSound.GetFrames());
		sf_close(file);
	}
	bool IsMarked(std::filesystem::path const& inPath) const
	{
		SF_INFO info{};
		SNDFILE* const file = sf_open(inPath.c_str(), SFM_READ, &info);
		bool const isMarked = sf_command(file, SFC_WAVEX_GET_AMBISONIC, nullptr, 0) == SF_AMBISONIC_B_FORMAT;
		sf_close(file);
		return isMarked;
	}
};

TEST_F(SoundFieldFileTest, MarkedFilesAreReadAndWrittenInTheirOrderAndScale)
{
	Sound const field = MakeSound(4, kRate, kFrames);
	WriteField("in.wav", field);
	EXPECT_EQ(GetLayoutName(InspectAudioFile(mFolder / "in.wav").mLayout), "ambisonic1");
	ClipRenderRequest request = MakeRequest();
	request.mLayout.mLayout = ParseLayout("4");
	Sound const plain = Render(request);
	request.mLayout.mLayout.reset();
	Sound const marked = Render(request);
	EXPECT_TRUE(IsMarked(request.mOutput));
	for (std::size_t i = 0; i < field.mSamples.size(); i += 4)
	{
		float const w = field.mSamples[i] * std::numbers::sqrt2_v<float>;
		// W, Y, Z and X of what the file has as W, X, Y and Z.
		ASSERT_EQ(plain.mSamples[i], w);
		ASSERT_EQ(plain.mSamples[i + 1], field.mSamples[i + 2]);
		ASSERT_EQ(plain.mSamples[i + 2], field.mSamples[i + 3]);
		ASSERT_EQ(plain.mSamples[i + 3], field.mSamples[i + 1]);
		ASSERT_EQ(marked.mSamples[i], w * kScaleOfW);
		ASSERT_EQ(marked.mSamples[i + 1], field.mSamples[i + 1]);
		ASSERT_EQ(marked.mSamples[i + 2], field.mSamples[i + 2]);
		ASSERT_EQ(marked.mSamples[i + 3], field.mSamples[i + 3]);
	}
}

// Any place of a file can be read first, in integers as well.
TEST_F(SoundFieldFileTest, PartsAreThoseOfTheWhole)
{
	WriteField("in.wav", MakeSound(4, kRate, kFrames));
	ClipRenderRequest request = MakeRequest();
	Sound const whole = RenderInBlocks(request);
	constexpr std::int64_t kFirst = 1234;
	request.mInputs.front().mStart = TimePosition::Parse("1234s").value();
	EXPECT_TRUE(SameBits(Render(request), whole.Cut(kFirst, kFrames - kFirst)));
	request.mSamples = OutputSamples::kInteger16;
	EXPECT_EQ(ClipRenderJob(request).GetOutputFormat().mDither, Dither::kTriangular);
}

TEST_F(SoundFieldFileTest, OtherContainersHoldTheChannelsAsTheyAre)
{
	WriteInput(MakeSound(4, kRate, kFrames));
	for (OutputContainer const container :
		{OutputContainer::kAiff, OutputContainer::kCaf, OutputContainer::kWav})
	{
		ClipRenderRequest request = MakeRequest();
		request.mLayout.mLayout = ParseLayout("ambisonic1");
		request.mContainer = container;
		Sound const written = Render(request);
		bool const isWav = container == OutputContainer::kWav;
		EXPECT_NE(static_cast<bool>(SameBits(written, ReadSound(mFolder / "in.wav"))), isWav);
	}
}

} // namespace SonaroHost::Testing::SoundFieldFileTest
