// Sound files, played into a file: real decoders, the real prefetch service, and disks that are too slow.

#include "SonaroHost/Playback/FileDevice.h"

#include "Deck.h"
#include "Host/ClipRenders.h"
#include "SonaroHost/Playback/SoundDevices.h"
#include "SonaroHost/Render/ClipProgramme.h"
#include "zorvcore/debug/DebugDatabase.h"

#include <gtest/gtest.h>

#include <chrono>

namespace SonaroHost::Playback::Testing::FileDeviceTest
{
namespace
{

using namespace SonaroHost::Testing;
using namespace std::chrono_literals;

constexpr std::chrono::seconds kPatience(60);

class FilePlayback : public ClipRenders
{
protected:
	// Two files of different codecs, joined.
	ClipRenderRequest MakeInputs()
	{
		WriteSound(mFolder / "in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, MakeSound(2, 44100, 50'000));
		WriteSound(mFolder / "in.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, MakeSound(2, 44100, 70'001));
		ClipRenderRequest request = MakeRequest("in.flac");
		request.mInputs.push_back({mFolder / "in.ogg"});
		return request;
	}

	// As if the disk read nothing in time, as long as it lives.
	class SlowDisk
	{
	public:
		SlowDisk() { Set("-1"); }
		~SlowDisk() { Set("110"); }
		SlowDisk(SlowDisk const&) = delete;
		SlowDisk& operator=(SlowDisk const&) = delete;

	private:
		static void Set(char const* inPercent)
		{
			zorvcore::debug::DebugDatabase::Instance().SetEntry(
				"Sonaro.Prefetch.DiskOverloadThreshold", inPercent);
		}
	};
};

TEST_F(FilePlayback, WhatReachesTheDeviceIsWhatAnExportWrites)
{
	ClipRenderRequest const request = MakeInputs();
	Sound const exported = Render(request);
	ProgrammePlan const plan(request);
	FileDevice device(mFolder / "played.wav", 0.0);
	{
		Playback playback(MakeProgramme(plan), device, {.mAheadSeconds = 0.005, .mDeviceBlockFrames = 128});
		playback.Play();
		for (std::int64_t left = exported.GetFrames(); left > 0; left -= 128)
		{
			ASSERT_TRUE(playback.WaitUntilFilled(kPatience));
			device.Advance(std::min<std::int64_t>(left, 128));
		}
		EXPECT_EQ(playback.GetState().mMisses, 0u);
		EXPECT_EQ(playback.GetState().mUnreadFrames, 0u);
	}
	EXPECT_FALSE(std::filesystem::exists(mFolder / "played.wav"));
	device.Finish();
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "played.wav"), exported));
}

TEST_F(FilePlayback, ADiskThatIsTooSlowIsMissesAndThenTheSoundGoesOn)
{
	ClipRenderRequest request = MakeInputs();
	Sound const exported = Render(request);
	ProgrammePlan const plan(request);
	Deck deck(MakeProgramme(plan));
	Frames heard;
	{
		SlowDisk const slow;
		deck->Play();
		EXPECT_FALSE(deck->WaitUntilFilled(100ms));
		heard = deck.PullLate(1024);
		EXPECT_TRUE(std::all_of(heard.begin(), heard.end(), [](float inSample) { return inSample == 0.0f; }));
		EXPECT_EQ(deck->GetState().mMisses, 0u) << "it has not begun";
	}
	heard = deck.Pull(4096);
	EXPECT_TRUE(std::equal(heard.begin(), heard.end(), exported.mSamples.begin()));
	{
		// What was read before lasts for two seconds at most.
		SlowDisk const slow;
		for (int blocks = 0; blocks < 120'000 / 128; ++blocks)
		{
			deck->WaitUntilFilled(1ms);
			Frames const more = deck.PullLate(128);
			heard.insert(heard.end(), more.begin(), more.end());
		}
	}
	PlaybackState const state = deck->GetState();
	EXPECT_GT(state.mMisses, 0u);
	EXPECT_TRUE(state.mIsPlaying);
	Frames const rest = deck.Pull(exported.GetFrames());
	// It has gone on where it was broken off, however long that took: the end of the programme follows.
	Sound const end = exported.Cut(exported.GetFrames() - 5'000, 5'000);
	EXPECT_NE(std::search(rest.begin(), rest.end(), end.mSamples.begin(), end.mSamples.end()), rest.end());
}

TEST_F(FilePlayback, WithoutMemoryForMediaTheirSilenceIsReported)
{
	ProgrammePlan const plan(MakeInputs());
	ByteBudget const none(0);
	Deck deck(MakeProgramme(plan));
	deck->Play();
	deck.Pull(22'050);
	EXPECT_GT(deck->GetState().mUnreadFrames, 0u);
}

TEST_F(FilePlayback, MediaThatAreTakenOutOfMemoryAreReadAgainAndHeard)
{
	ProgrammePlan const plan(MakeInputs());
	for (double const speed : {1.0, -1.0, 1.37})
	{
		SCOPED_TRACE(speed);
		auto const play = [&](bool inIsPurged)
		{
			constexpr std::int64_t kBlocks = 40;
			Deck deck(MakeProgramme(plan));
			deck->Seek(60'000);
			deck->SetSpeed(speed);
			deck->Play();
			Frames heard;
			for (std::int64_t block = 0; block < kBlocks; ++block)
			{
				std::optional<ByteBudget> none;
				if (inIsPurged && block % 10 == 7)
				{
					none.emplace(0);
				}
				none.reset();
				Frames const more = deck.Pull(1280);
				heard.insert(heard.end(), more.begin(), more.end());
			}
			EXPECT_EQ(deck->GetState().mUnreadFrames, 0u);
			return heard;
		};
		EXPECT_EQ(play(true), play(false));
	}
}

TEST_F(FilePlayback, MediaThatCannotBeDecodedStopItAndAreNamed)
{
	ClipRenderRequest request = MakeRequest("in.flac");
	WriteSound(mFolder / "in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, MakeSound(1, 44100, 300'000));
	std::string bytes = ReadBytes(mFolder / "in.flac");
	bytes.replace(bytes.size() / 3, 40'000, std::string(40'000, '\x55'));
	WriteBytes(mFolder / "in.flac", bytes);
	ProgrammePlan const plan(request);
	Deck deck(MakeProgramme(plan));
	deck->Play();
	deck.Pull(200'000);
	EXPECT_FALSE(deck->GetState().mIsPlaying);
	EXPECT_THAT(deck->GetState().mFailure, testing::HasSubstr("in.flac"));
}

TEST_F(FilePlayback, DevicesAreChosenByNameOrTheRefusalSaysWhatThereIs)
{
	EXPECT_TRUE(MakeDevice("null"));
	DeviceFormat const mono{8000, 1, 64};
	EXPECT_THAT(GetRefusalOf([&] { MakeDevice("no such device"); }, HostError::Kind::kOutput),
		testing::HasSubstr("no such device"));
	auto const file = MakeDevice("file:" + (mFolder / "nowhere" / "out.wav").string());
	EXPECT_THAT(
		GetRefusalOf([&] { file->Open(mono); }, HostError::Kind::kOutput), testing::HasSubstr("nowhere"));
	FileDevice device(mFolder / "out.wav");
	device.Open(mono);
	EXPECT_THAT(GetRefusalOf(
					[&] {
						device.Open({8000, 2, 64});
					},
					HostError::Kind::kOutput),
		testing::HasSubstr("use another file"));
}

} // namespace
} // namespace SonaroHost::Playback::Testing::FileDeviceTest
