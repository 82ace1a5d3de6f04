#include "SonaroHost/Render/ClipRenderJob.h"

#include "Host/Refusal.h"
#include "Media.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace SonaroHost::Testing
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

class ClipRenderJobTest : public testing::Test
{
protected:
	ClipRenderRequest MakeRequest(std::string const& inInput, std::string const& inOutput = "out.wav")
	{
		ClipRenderRequest request;
		request.mInputs = {{mFolder / inInput}};
		request.mOutput = mFolder / inOutput;
		return request;
	}

	// Renders to a file of floats and reads it back.
	Sound Render(ClipRenderRequest const& inRequest)
	{
		auto const summary = ClipRenderJob(inRequest).Run();
		EXPECT_TRUE(summary);
		return ReadSound(inRequest.mOutput);
	}

	void ExpectRefusal(ClipRenderRequest const& inRequest, HostError::Kind inKind, char const* inReason)
	{
		EXPECT_THAT(GetRefusalOf([&] { ClipRenderJob(inRequest).Run(); }, inKind), HasSubstr(inReason));
	}

	TemporaryFolder mFolder;
};

TEST_F(ClipRenderJobTest, AnyBlockSizeGivesTheBitsOfTheSource)
{
	for (FileKind const& kind : GetFileKinds())
	{
		SCOPED_TRACE(kind.mName);
		constexpr std::int64_t kFrames = 12001;
		WriteSound(mFolder / "in", kind.mFormat, MakeSound(kind.mChannels, kind.mSampleRate, kFrames),
			kind.mCompression);
		Sound const source = ReadSound(mFolder / "in");
		for (unsigned const block : {1u, 7u, 256u, 8192u, kMaxBlockFrames})
		{
			ClipRenderRequest request = MakeRequest("in");
			request.mBlockFrames = block;
			EXPECT_TRUE(SameBits(Render(request), source)) << "blocks of " << block;
			request.mDirection = RenderDirection::eReverse;
			EXPECT_TRUE(SameBits(Render(request), source.Reversed())) << "backwards in blocks of " << block;
		}
	}
}

TEST_F(ClipRenderJobTest, FloatsPassWhateverTheyAre)
{
	using Limits = std::numeric_limits<float>;
	Sound const sound{2, 48000,
		{0.0f, -0.0f, Limits::denorm_min(), -Limits::denorm_min(), 1.0f, -1.0f, 1.5f, -1000.0f, Limits::max(),
			Limits::lowest(), Limits::infinity(), -Limits::infinity(), -0.0f, -0.0f}};
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	EXPECT_TRUE(SameBits(Render(MakeRequest("in.wav")), sound));
}

TEST_F(ClipRenderJobTest, RangesAreCutExactly)
{
	constexpr std::int64_t kFrames = 20000;
	Sound const sound = MakeSound(2, 48000, kFrames);
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	struct Case
	{
		char const* mStart;
		char const* mDuration;
		std::int64_t mFirst;
		std::int64_t mFrames;
	};
	constexpr Case kCases[] = {
		{"0", nullptr, 0, kFrames},
		{"1s", nullptr, 1, kFrames - 1},
		{"0.1", "0.05", 4800, 2400},
		{"19999s", nullptr, 19999, 1},
		{"0", "1s", 0, 1},
		{"15000s", "1:00", 15000, 5000},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mStart);
		ClipRenderRequest request = MakeRequest("in.wav");
		request.mInputs[0].mStart = *TimePosition::Parse(test.mStart);
		if (test.mDuration)
		{
			request.mInputs[0].mDuration = TimePosition::Parse(test.mDuration);
		}
		request.mBlockFrames = 333;
		Sound const expected = sound.Cut(test.mFirst, test.mFrames);
		EXPECT_TRUE(SameBits(Render(request), expected));
		request.mDirection = RenderDirection::eReverse;
		EXPECT_TRUE(SameBits(Render(request), expected.Reversed()));
	}
	ClipRenderRequest request = MakeRequest("in.wav");
	request.mInputs[0].mStart = TimePosition::FromSamples(kFrames);
	ExpectRefusal(request, HostError::Kind::eRequest, "lies beyond");
	request = MakeRequest("in.wav");
	for (char const* const duration : {"0", "0s", "0.000001"})
	{
		request.mInputs[0].mDuration = TimePosition::Parse(duration);
		ExpectRefusal(request, HostError::Kind::eRequest, "nothing to render");
	}
	WriteSound(mFolder / "none.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {1, 48000, {}});
	ExpectRefusal(MakeRequest("none.wav"), HostError::Kind::eInput, "none.wav': has no samples");
}

TEST_F(ClipRenderJobTest, ChannelsComeInTheOrderThatWasAskedFor)
{
	struct Case
	{
		int mSourceChannels;
		std::vector<unsigned> mChannels;
		char const* mLayout;
	};
	Case const cases[] = {
		{2, {1, 0}, "stereo"},
		{2, {0}, "mono"},
		{2, {1}, "mono"},
		{1, {0, 0}, "stereo"},
		{2, {0, 1, 0, 1, 1}, "5 channels"},
		{6, {0, 1, 2, 3, 4, 5}, "5.1"},
		{6, {5, 4, 3, 2, 1, 0}, "6 channels"},
		{6, {3}, "mono"},
		{8, {7, 0}, "stereo"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mChannels));
		Sound const sound = MakeSound(test.mSourceChannels, 44100, 3000);
		WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
		ClipRenderRequest request = MakeRequest("in.wav");
		request.mInputs[0].mChannels = test.mChannels;
		request.mBlockFrames = 700;
		EXPECT_TRUE(SameBits(Render(request), sound.Pick(test.mChannels)));
		EXPECT_EQ(GetLayoutName(ClipRenderJob(request).GetOutputLayout()), test.mLayout);
	}
	ClipRenderRequest request = MakeRequest("in.wav");
	request.mInputs[0].mChannels = {0, 8};
	ExpectRefusal(request, HostError::Kind::eRequest, "there is no channel 9");
	request.mInputs[0].mChannels.assign(65, 0);
	ExpectRefusal(request, HostError::Kind::eRequest, "at most 64 channels");
}

TEST_F(ClipRenderJobTest, GainMultipliesEachSampleOnce)
{
	Sound sound = MakeSound(2, 48000, 5000);
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	for (float const gain : {0.5f, 1.9952623f, 0.1f})
	{
		ClipRenderRequest request = MakeRequest("in.wav");
		request.mGain = gain;
		Sound expected = sound;
		float peak = 0.0f;
		for (float& sample : expected.mSamples)
		{
			sample *= gain;
			peak = std::max(peak, std::fabs(sample));
		}
		auto const summary = ClipRenderJob(request).Run();
		ASSERT_TRUE(summary);
		EXPECT_EQ(summary->GetFile().mPeak, peak);
		EXPECT_TRUE(SameBits(ReadSound(request.mOutput), expected));
	}
}

TEST_F(ClipRenderJobTest, IntegersPassBitForBitWithoutBeingAsked)
{
	struct Case
	{
		int mSourceFormat;
		OutputContainer mContainer;
		OutputSamples mSamples;
	};
	constexpr Case kCases[] = {
		{SF_FORMAT_WAV | SF_FORMAT_PCM_16, OutputContainer::eFlac, OutputSamples::eInteger16},
		{SF_FORMAT_FLAC | SF_FORMAT_PCM_16, OutputContainer::eAiff, OutputSamples::eInteger24},
		{SF_FORMAT_AIFF | SF_FORMAT_PCM_24, OutputContainer::eWav, OutputSamples::eInteger24},
		{SF_FORMAT_CAF | SF_FORMAT_ALAC_24, OutputContainer::eCaf, OutputSamples::eInteger24},
	};
	for (Case const& test : kCases)
	{
		WriteSound(mFolder / "in", test.mSourceFormat, MakeSound(2, 44100, 9000));
		ClipRenderRequest request = MakeRequest("in", "out");
		request.mContainer = test.mContainer;
		request.mSamples = test.mSamples;
		ASSERT_TRUE(ClipRenderJob(request).Run());
		EXPECT_EQ(ReadIntegers(mFolder / "out"), ReadIntegers(mFolder / "in"));
	}
}

TEST_F(ClipRenderJobTest, AStoppedRenderLeavesWhatWasThere)
{
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, 48000, 20000));
	WriteBytes(mFolder / "out.wav", "old");
	// At the first block, in the middle, and when the last block is done already.
	for (std::int64_t const stopAt : {1000, 10000, 20000})
	{
		ClipRenderRequest request = MakeRequest("in.wav");
		request.mBlockFrames = 1000;
		std::stop_source stop;
		std::int64_t last = 0;
		auto const summary = ClipRenderJob(request).Run(
			[&](RenderProgress const& inProgress)
			{
				EXPECT_EQ(inProgress.mFramesTotal, 20000);
				EXPECT_EQ(inProgress.mFramesDone, last + 1000);
				last = inProgress.mFramesDone;
				if (last == stopAt)
				{
					stop.request_stop();
				}
			},
			stop.get_token());
		EXPECT_FALSE(summary);
		EXPECT_EQ(last, stopAt);
		EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "out.wav"));
		EXPECT_EQ(ReadBytes(mFolder / "out.wav"), "old");
	}
}

TEST_F(ClipRenderJobTest, AnOlderFileIsKeptWhenAskedTo)
{
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(1, 44100, 1000));
	WriteBytes(mFolder / "out.wav", "old");
	ClipRenderRequest request = MakeRequest("in.wav");
	request.mReplace = false;
	ExpectRefusal(request, HostError::Kind::eOutput, "exists already");
	EXPECT_EQ(ReadBytes(mFolder / "out.wav"), "old");
}

} // namespace
} // namespace SonaroHost::Testing
