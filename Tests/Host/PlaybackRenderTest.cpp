// Renders that read ahead on the prefetch thread, against those that read as they go.

#include "ClipRenders.h"
#include "Sonaro/AudioPrefetch.h"
#include "Support/Trials.h"
#include "zorvcore/config/InitializerRegistrar.h"
#include "zorvcore/debug/DebugDatabase.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace SonaroHost::Testing::PlaybackRenderTest
{

class PlaybackRender : public ClipRenders
{
protected:
	// Renders to a file of floats and reads it back.
	Sound Render(ClipRenderRequest const& inRequest, ProgressCallback const& inProgress = {})
	{
		auto const summary = ClipRenderJob(inRequest).Run(inProgress);
		EXPECT_TRUE(summary);
		EXPECT_EQ(summary->mPlayback.has_value(), inRequest.mAsPlayback);
		mPlayback = summary->mPlayback.value_or(PlaybackSummary());
		return ReadSound(inRequest.mOutput);
	}

	// Either way of reading gives the same, in both directions.
	void ExpectSame(ClipRenderRequest inRequest)
	{
		for (RenderDirection const direction : {RenderDirection::kForward, RenderDirection::kReverse})
		{
			inRequest.mDirection = direction;
			inRequest.mAsPlayback = false;
			Sound const plain = Render(inRequest);
			inRequest.mAsPlayback = true;
			EXPECT_TRUE(SameBits(Render(inRequest), plain));
			EXPECT_EQ(mPlayback.mMisses, 0u);
			EXPECT_EQ(mPlayback.mMissedFrames, 0u);
		}
	}

	// Some stretches long.
	Sound WriteInput()
	{
		Sound const sound = MakeSound(2, 8000, 70001);
		ClipRenders::WriteInput(sound);
		return sound;
	}

	PlaybackSummary mPlayback;
};

TEST_F(PlaybackRender, EqualsThePlainRenderOfEachKindOfFile)
{
	for (FileKind const& kind : GetFileKinds())
	{
		SCOPED_TRACE(kind.mName);
		// More than a stretch where that is not too much.
		std::int64_t const frames = std::min(kind.mSampleRate * 2 + 1234, 500000 / kind.mChannels);
		WriteSound(mFolder / "in", kind.mFormat, MakeSound(kind.mChannels, kind.mSampleRate, frames),
			kind.mCompression);
		ExpectSame(MakeRequest("in"));
	}
}

TEST_F(PlaybackRender, EqualsThePlainRenderWhateverIsAskedFor)
{
	WriteInput();
	ClipRenderRequest const plain = MakeRequest();
	for (unsigned const block : {SN::Testing::kSmallestBlock, 999u, 16000u, 16001u, kMaxBlockFrames})
	{
		SCOPED_TRACE(block);
		ClipRenderRequest request = plain;
		request.mBlockFrames = block;
		ExpectSame(request);
		request.mInputs[0].mStart = TimePosition::FromSamples(12345);
		request.mInputs[0].mDuration = TimePosition::FromSamples(40000);
		ExpectSame(request);
	}
	ClipRenderRequest request = plain;
	request.mInputs[0].mChannels = {1, 0};
	request.mLayout.mPan = 0.3;
	request.mGain = 0.7f;
	ExpectSame(request);
}

TEST_F(PlaybackRender, EndsWithAnErrorWhenTheModuleIsStopped)
{
	WriteInput();
	ClipRenderRequest request = MakeRequest();
	request.mAsPlayback = true;
	auto const stop = [](RenderProgress const&) { zorvcore::config::StopRegisteredModules(); };
	EXPECT_THROW(Render(request, stop), std::exception);
	zorvcore::config::StartRegisteredModules();
}

TEST_F(PlaybackRender, WhatIsCancelledIsAskedForAgain)
{
	Sound const sound = WriteInput();
	ClipRenderRequest request = MakeRequest();
	request.mAsPlayback = true;
	request.mBlockFrames = 4000;
	auto const cancel = [](RenderProgress const&)
	{ SN::AudioPrefetch::CancelAllPendingPrefetchRequests(SN::AudioPrefetch::PlaybackPriority); };
	EXPECT_TRUE(SameBits(Render(request, cancel), sound));
	EXPECT_EQ(mPlayback.mMisses, 0u);
}

TEST_F(PlaybackRender, WithoutMemoryAllIsMissedAndReported)
{
	Sound const sound = WriteInput();
	ByteBudget const none(0);
	ClipRenderRequest request = MakeRequest();
	request.mAsPlayback = true;
	Sound const silence{2, 8000, std::vector<float>(sound.mSamples.size())};
	EXPECT_TRUE(SameBits(Render(request), silence));
	EXPECT_GT(mPlayback.mMisses, 0u);
	EXPECT_EQ(mPlayback.mMissedFrames, static_cast<std::uint64_t>(sound.GetFrames()));
}

TEST_F(PlaybackRender, AnOverloadThatStaysIsReportedAndEnds)
{
	WriteInput();
	auto& database = zorvcore::debug::DebugDatabase::Instance();
	constexpr char const* kThreshold = "Sonaro.Prefetch.DiskOverloadThreshold";
	database.SetEntry(kThreshold, "-1");
	ClipRenderRequest request = MakeRequest();
	request.mAsPlayback = true;
	Render(request);
	database.SetEntry(kThreshold, "110");
	EXPECT_GT(mPlayback.mMisses, 0u);
	EXPECT_GT(mPlayback.mReadAhead.mGivenUp, 0u);
	EXPECT_TRUE(mPlayback.mReadAhead.mWasBehind);

	// The next one finds the queue at work again.
	Render(request);
	EXPECT_EQ(mPlayback.mMisses, 0u);
}

TEST_F(PlaybackRender, DamageEndsItAsItEndsThePlainRender)
{
	WriteSound(mFolder / "in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, MakeSound(1, 44100, 300000));
	std::string bytes = ReadBytes(mFolder / "in.flac");
	bytes.replace(bytes.size() * 2 / 3, 40000, std::string(40000, '\x55'));
	WriteBytes(mFolder / "in.flac", bytes);
	ClipRenderRequest request = MakeRequest("in.flac");
	auto const getError = [&] { return GetRefusalOf([&] { ClipRenderJob(request).Run(); }); };
	std::string const plain = getError();
	request.mAsPlayback = true;
	EXPECT_NE(plain, "");
	EXPECT_EQ(getError(), plain);
	EXPECT_FALSE(std::filesystem::exists(request.mOutput));
}

} // namespace SonaroHost::Testing::PlaybackRenderTest
