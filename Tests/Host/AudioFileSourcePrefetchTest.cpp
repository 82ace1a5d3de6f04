#include "Pulling.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "Vexilon/MediaManager.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

namespace SonaroHost::Testing::AudioFileSourcePrefetchTest
{

constexpr std::int64_t kFrames = 40000;

class AudioFileSourcePrefetch : public testing::Test
{
protected:
	SN::InterfaceRef<AudioFileSource> Open(Sound const& inSound, int inFormat)
	{
		WriteSound(mFolder / "sound", inFormat, inSound);
		mReference = ReadSound(mFolder / "sound");
		return AudioFileSource::Open(mFolder / "sound");
	}

	SN::InterfaceRef<AudioFileSource> OpenWav(int inChannels = 2)
	{
		return Open(MakeSound(inChannels, 48000, kFrames), SF_FORMAT_WAV | SF_FORMAT_FLOAT);
	}

	testing::AssertionResult IsReference(
		AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames)
	{
		return SameBits(
			PullPrefetched(ioSource, inPosition, inFrames), CutWithSilence(mReference, inPosition, inFrames));
	}

	TemporaryFolder mFolder;
	Sound mReference;
};

TEST_F(AudioFileSourcePrefetch, RandomRangesEqualOneDecodeToTheBit)
{
	for (int const format : {SF_FORMAT_WAV | SF_FORMAT_PCM_24, SF_FORMAT_OGG | SF_FORMAT_VORBIS,
			 SF_FORMAT_FLAC | SF_FORMAT_PCM_16})
	{
		SCOPED_TRACE(format);
		auto const source = Open(MakeSound(2, 44100, kFrames), format);
		std::mt19937 random(17);
		for (int i = 0; i < 100; ++i)
		{
			auto const frames = static_cast<unsigned>(1 + random() % (i % 10 == 9 ? 20000 : 3000));
			std::int64_t const position = static_cast<std::int64_t>(random() % (kFrames + 4000)) - 2000;
			Prefetch(*source, position, frames);
			ASSERT_TRUE(IsReference(*source, position, frames)) << frames << " frames at " << position;
		}
		EXPECT_EQ(source->GetMissCount(), 0u);
		EXPECT_FALSE(source->GetFailure());
	}
}

TEST_F(AudioFileSourcePrefetch, WhatIsNotThereIsSilenceAndCounted)
{
	auto const source = OpenWav();
	std::int64_t const chunk = AudioFileReader(mFolder / "sound").GetBlockFrames();
	ASSERT_GT(kFrames, 4 * chunk);
	struct Case
	{
		char const* mName;
		std::int64_t mPosition;
		std::int64_t mFrames;
		std::uint64_t mMisses;
		std::int64_t mMissed;
	};
	Case const cases[] = {
		// The second chunk alone is there.
		{"there", chunk, chunk, 0, 0},
		{"within it", chunk + 5, 100, 0, 0},
		{"one frame before it", chunk - 1, 1, 1, 1},
		{"across its start", chunk - 10, 30, 1, 10},
		{"across its end", 2 * chunk - 20, 50, 1, 30},
		{"around it", chunk - 3, chunk + 8, 2, 8},
		{"two others", 2 * chunk + 7, chunk, 2, chunk},
		{"before the start and beyond", -50, 60, 1, 10},
		{"before the start", -50, 50, 0, 0},
		{"across the end", kFrames - 4, 100, 1, 4},
		{"beyond the end", kFrames, 100, 0, 0},
	};
	Prefetch(*source, chunk + 10, 1);
	Sound present = mReference;
	std::fill_n(present.mSamples.begin(), 2 * chunk, 0.0f);
	std::fill(present.mSamples.begin() + 4 * chunk, present.mSamples.end(), 0.0f);
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		std::uint64_t const misses = source->GetMissCount();
		std::uint64_t const missed = source->GetMissedFrames();
		auto const frames = static_cast<unsigned>(test.mFrames);
		EXPECT_TRUE(SameBits(PullPrefetched(*source, test.mPosition, frames),
			CutWithSilence(present, test.mPosition, frames)));
		EXPECT_EQ(source->GetMissCount() - misses, test.mMisses);
		EXPECT_EQ(source->GetMissedFrames() - missed, static_cast<std::uint64_t>(test.mMissed));
	}
}

TEST_F(AudioFileSourcePrefetch, OnlyTheRangeIsDecodedAndOnlyOnce)
{
	auto const source = OpenWav();
	std::int64_t const chunk = AudioFileReader(mFolder / "sound").GetBlockFrames();
	unsigned long long const before = VX::GetMediaManager()->GetByteCount();
	auto const chunkBytes = static_cast<unsigned long long>(2 * chunk) * sizeof(float);
	std::tuple<std::int64_t, std::int64_t, unsigned long long> const cases[] = {
		{0, 0, 0},
		{-100, 100, 0},
		{kFrames, 5000, 0},
		{-100, 101, 1},
		{chunk - 1, 1, 1},
		{chunk - 1, 2, 2},
		{0, 2 * chunk, 2},
	};
	for (auto const& [position, frames, chunksAfterwards] : cases)
	{
		Prefetch(*source, position, static_cast<unsigned>(frames));
		EXPECT_EQ(VX::GetMediaManager()->GetByteCount() - before, chunksAfterwards * chunkBytes)
			<< frames << " frames at " << position;
	}
}

TEST_F(AudioFileSourcePrefetch, BuffersOfAnyChannelCountAndWindowsAreFilled)
{
	auto const source = OpenWav(3);
	Prefetch(*source, 0, kFrames);
	for (unsigned const channels : {1u, 2u, 3u, 5u})
	{
		dsp::AudioBuffer buffer(channels, 300);
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			std::fill_n(buffer.GetChannel(channel), 300, 0.5f);
		}
		dsp::AudioSubBuffer window;
		window.Init(channels);
		window.Assign(buffer, 100);
		window.SetUseSize(100);
		source->ReadPrefetchedAudio(SN::TickTime(kFrames - 50, source->GetFrameRate()), window);
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			EXPECT_EQ(window.IsChannelSilent(channel), channel >= 3);
			for (unsigned i = 0; i < 300 && channel < 3; ++i)
			{
				auto const frame = static_cast<std::size_t>(kFrames - 150 + i);
				float const expected = i < 100 || i >= 200 ? 0.5f
									   : i < 150           ? mReference.mSamples[frame * 3 + channel]
														   : 0.0f;
				ASSERT_EQ(buffer.GetChannel(channel)[i], expected) << i << " of channel " << channel;
			}
		}
	}
}

TEST_F(AudioFileSourcePrefetch, APurgeIsAMissUntilItIsReadAgain)
{
	auto const source = OpenWav();
	Prefetch(*source, 0, kFrames);
	ASSERT_TRUE(IsReference(*source, 0, kFrames));
	ASSERT_EQ(source->GetMissCount(), 0u);
	{
		ByteBudget const none(0);
		EXPECT_TRUE(SameBits(PullPrefetched(*source, 0, 1000), {2, 48000, std::vector<float>(2000)}));
		EXPECT_EQ(source->GetMissCount(), 1u);
		EXPECT_EQ(source->GetMissedFrames(), 1000u);
		// What does not fit is gone at once.
		Prefetch(*source, 0, kFrames);
		PullPrefetched(*source, 0, 1000);
		EXPECT_EQ(source->GetMissCount(), 2u);
	}
	Prefetch(*source, 0, kFrames);
	EXPECT_TRUE(IsReference(*source, 0, kFrames));
	EXPECT_EQ(source->GetMissCount(), 2u);
	EXPECT_FALSE(source->GetFailure());
}

TEST_F(AudioFileSourcePrefetch, DamageIsMissedAndToldWhileTheRestStays)
{
	WriteSound(mFolder / "a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, MakeSound(1, 44100, 100000));
	std::string bytes = ReadBytes(mFolder / "a.flac");
	bytes.replace(bytes.size() / 2, 40000, std::string(40000, '\x55'));
	WriteBytes(mFolder / "a.flac", bytes);

	auto const source = AudioFileSource::Open(mFolder / "a.flac");
	Prefetch(*source, 0, 1000);
	Sound const start = PullPrefetched(*source, 0, 1000);
	EXPECT_FALSE(source->GetFailure());
	Prefetch(*source, 0, 100000);
	ASSERT_TRUE(source->GetFailure());
	EXPECT_THAT(source->GetFailure()->what(), testing::HasSubstr("a.flac': cannot be read at sample "));
	EXPECT_TRUE(SameBits(PullPrefetched(*source, 0, 1000), start));
	EXPECT_EQ(source->GetMissCount(), 0u);
	PullPrefetched(*source, 99000, 1000);
	EXPECT_EQ(source->GetMissCount(), 1u);
}

// Each piece that is read is either the file's or silent as a whole; the counts add up to the silent ones.
TEST_F(AudioFileSourcePrefetch, ReadersPrefetchersAndPurgesMeet)
{
	auto const source = OpenWav();
	std::int64_t const chunk = AudioFileReader(mFolder / "sound").GetBlockFrames();
	constexpr unsigned kPiece = 100;
	std::atomic<bool> isEnding{false};
	auto const prefetch = [&](unsigned inSeed)
	{
		std::mt19937 random(inSeed);
		while (!isEnding)
		{
			Prefetch(*source, static_cast<std::int64_t>(random() % kFrames), 12000);
		}
	};
	auto const purge = [&]
	{
		while (!isEnding)
		{
			ByteBudget const none(0);
			std::this_thread::yield();
		}
	};
	std::vector<std::thread> threads;
	threads.emplace_back(prefetch, 1);
	threads.emplace_back(prefetch, 2);
	threads.emplace_back(purge);

	std::mt19937 random(3);
	std::uint64_t found = 0;
	std::uint64_t missed = 0;
	for (int i = 0; i < 200000 && (i < 3000 || found == 0 || missed == 0); ++i)
	{
		// Within one chunk.
		std::int64_t const position = chunk * static_cast<std::int64_t>(random() % 4) +
									  static_cast<std::int64_t>(random()) % (chunk - kPiece);
		Sound const read = PullPrefetched(*source, position, kPiece);
		bool const isThere = bool(SameBits(read, CutWithSilence(mReference, position, kPiece)));
		bool const isSilent = bool(SameBits(read, {2, 48000, std::vector<float>(2 * kPiece)}));
		if (isThere == isSilent)
		{
			ADD_FAILURE() << "neither the file nor silence at " << position;
			break;
		}
		++(isThere ? found : missed);
	}
	isEnding = true;
	for (std::thread& thread : threads)
	{
		thread.join();
	}
	EXPECT_EQ(source->GetMissCount(), missed);
	EXPECT_EQ(source->GetMissedFrames(), missed * kPiece);
	EXPECT_GT(found, 0u);
	EXPECT_GT(missed, 0u);
	EXPECT_FALSE(source->GetFailure());
}

TEST_F(AudioFileSourcePrefetch, BlockingReadsMayGoOnBesideIt)
{
	auto const source = Open(MakeSound(2, 44100, kFrames), SF_FORMAT_OGG | SF_FORMAT_VORBIS);
	std::thread prefetcher(
		[&]
		{
			for (std::int64_t position = kFrames; position > -5000; position -= 5000)
			{
				Prefetch(*source, position, 5000);
			}
		});
	for (std::int64_t position = 0; position < kFrames; position += 1000)
	{
		EXPECT_TRUE(SameBits(Pull(*source, position, 1000), CutWithSilence(mReference, position, 1000)));
	}
	prefetcher.join();
	EXPECT_TRUE(IsReference(*source, 0, kFrames));
}

} // namespace SonaroHost::Testing::AudioFileSourcePrefetchTest
