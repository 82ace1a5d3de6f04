#include "SonaroHost/Render/ClipRenderJob.h"

#include "ClipRenders.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <cmath>
#include <limits>
#include <tuple>

namespace SonaroHost::Testing::ClipRenderJobTest
{

using testing::ElementsAre;

using ClipRenderJobTest = ClipRenders;

TEST_F(ClipRenderJobTest, AnyBlockSizeGivesTheBitsOfTheSource)
{
	for (FileKind const& kind : GetFileKinds())
	{
		SCOPED_TRACE(kind.mName);
		constexpr std::int64_t kFrames = 6001;
		WriteSound(mFolder / "in", kind.mFormat, MakeSound(kind.mChannels, kind.mSampleRate, kFrames),
			kind.mCompression);
		Sound const source = ReadSound(mFolder / "in");
		ClipRenderRequest request = MakeRequest("in");
		EXPECT_TRUE(SameBits(RenderInBlocks(request), source));
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(RenderInBlocks(request), source.Reversed()));
	}
}

TEST_F(ClipRenderJobTest, FloatsPassWhateverTheyAre)
{
	using Limits = std::numeric_limits<float>;
	Sound const sound{2, 48000,
		{0.0f, -0.0f, Limits::denorm_min(), -Limits::denorm_min(), 1.0f, -1.0f, 1.5f, -1000.0f, Limits::max(),
			Limits::lowest(), Limits::infinity(), -Limits::infinity(), -0.0f, -0.0f}};
	WriteInput(sound);
	EXPECT_TRUE(SameBits(Render(MakeRequest()), sound));
}

TEST_F(ClipRenderJobTest, AnOutputThatAppearsDuringTheRenderIsKeptWhereItMayNotBeReplaced)
{
	WriteInput(MakeSound(1, 48000, 20000));
	ClipRenderRequest request = MakeRequest();
	request.mReplace = false;
	ClipRenderJob job(request);
	EXPECT_THAT(
		GetRefusalOf([&] { job.Run([&](RenderProgress const&) { WriteBytes(request.mOutput, "old"); }); },
			HostError::Kind::kOutput),
		testing::HasSubstr("out.wav"));
	EXPECT_EQ(ReadBytes(request.mOutput), "old");
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "out.wav"));
}

TEST_F(ClipRenderJobTest, RangesAreCutExactly)
{
	constexpr std::int64_t kFrames = 20000;
	Sound const sound = MakeSound(2, 48000, kFrames);
	WriteInput(sound);
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
		ClipRenderRequest request = MakeRequest();
		request.mInputs[0].mStart = *TimePosition::Parse(test.mStart);
		if (test.mDuration)
		{
			request.mInputs[0].mDuration = TimePosition::Parse(test.mDuration);
		}
		request.mBlockFrames = 333;
		Sound const expected = sound.Cut(test.mFirst, test.mFrames);
		EXPECT_TRUE(SameBits(Render(request), expected));
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(Render(request), expected.Reversed()));
	}
	ClipRenderRequest request = MakeRequest();
	request.mInputs[0].mStart = TimePosition::FromSamples(kFrames);
	ExpectRefusal(request, "is past its end");
	request = MakeRequest();
	for (char const* const duration : {"0", "0s", "0.000001"})
	{
		request.mInputs[0].mDuration = TimePosition::Parse(duration);
		ExpectRefusal(request, "nothing to render");
	}
	WriteSound(mFolder / "none.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {1, 48000, {}});
	ExpectRefusal(MakeRequest("none.wav"), "none.wav': has no samples", HostError::Kind::kInput);
}

TEST_F(ClipRenderJobTest, ChannelsComeInTheOrderThatWasAskedFor)
{
	std::tuple<int, std::vector<unsigned>, char const*> const cases[] = {
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
	for (auto const& [sourceChannels, channels, layout] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(channels));
		Sound const sound = MakeSound(sourceChannels, 44100, 3000);
		WriteInput(sound);
		ClipRenderRequest request = MakeRequest();
		request.mInputs[0].mChannels = channels;
		request.mBlockFrames = 700;
		EXPECT_TRUE(SameBits(Render(request), sound.Pick(channels)));
		EXPECT_EQ(GetLayoutName(ClipRenderJob(request).GetOutputLayout()), layout);
	}
	ClipRenderRequest request = MakeRequest();
	request.mInputs[0].mChannels = {0, 8};
	ExpectRefusal(request, "has no channel 9; use 1 to");
	request.mInputs[0].mChannels.assign(65, 0);
	ExpectRefusal(request, "at most 64 channels");
}

TEST_F(ClipRenderJobTest, GainMultipliesEachSampleOnce)
{
	Sound sound = MakeSound(2, 48000, 5000);
	WriteInput(sound);
	for (float const gain : {0.5f, 1.9952623f, 0.1f})
	{
		ClipRenderRequest request = MakeRequest();
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
	constexpr std::tuple<int, OutputContainer, OutputSamples> kCases[] = {
		{SF_FORMAT_WAV | SF_FORMAT_PCM_16, OutputContainer::kFlac, OutputSamples::kInteger16},
		{SF_FORMAT_FLAC | SF_FORMAT_PCM_16, OutputContainer::kAiff, OutputSamples::kInteger24},
		{SF_FORMAT_AIFF | SF_FORMAT_PCM_24, OutputContainer::kWav, OutputSamples::kInteger24},
		{SF_FORMAT_CAF | SF_FORMAT_ALAC_24, OutputContainer::kCaf, OutputSamples::kInteger24},
	};
	for (auto const& [sourceFormat, container, samples] : kCases)
	{
		WriteSound(mFolder / "in", sourceFormat, MakeSound(2, 44100, 9000));
		ClipRenderRequest request = MakeRequest("in", "out");
		request.mContainer = container;
		request.mSamples = samples;
		ASSERT_TRUE(ClipRenderJob(request).Run());
		EXPECT_EQ(ReadIntegers(mFolder / "out"), ReadIntegers(mFolder / "in"));
	}
}

TEST_F(ClipRenderJobTest, AStoppedRenderLeavesWhatWasThere)
{
	WriteInput(MakeSound(2, 48000, 20000));
	WriteBytes(mFolder / "out.wav", "old");
	// At the first block, in the middle, and when the last block is done already.
	for (std::int64_t const stopAt : {1000, 10000, 20000})
	{
		ClipRenderRequest request = MakeRequest();
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
	WriteInput(MakeSound(1, 44100, 1000));
	WriteBytes(mFolder / "out.wav", "old");
	ClipRenderRequest request = MakeRequest();
	request.mReplace = false;
	ExpectRefusal(request, "already exists", HostError::Kind::kOutput);
	EXPECT_EQ(ReadBytes(mFolder / "out.wav"), "old");
}

} // namespace SonaroHost::Testing::ClipRenderJobTest
