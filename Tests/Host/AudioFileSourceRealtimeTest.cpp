#include "Media.h"
#include "SonaroHost/Media/AudioFileSource.h"
#include "SonaroHost/Sequence/FileMedia.h"
#include "Support/RealtimeGuard.h"
#include "Vexilon/BinaryData.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroHost::Testing::AudioFileSourceRealtimeTest
{

TEST(AudioFileSource, ReadingPcmNeitherAllocatesNorLocks)
{
	TemporaryFolder const folder;
	int tested = 0;
	for (FileKind const& kind : GetFileKinds())
	{
		int const codec = kind.mFormat & SF_FORMAT_SUBMASK;
		if (codec > SF_FORMAT_DOUBLE || (kind.mFormat & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC)
		{
			continue;
		}
		SCOPED_TRACE(kind.mName);
		WriteSound(folder / "sound", kind.mFormat, MakeSound(kind.mChannels, kind.mSampleRate, 50000));
		auto const source = AudioFileSource::Open(folder / "sound");
		dsp::AudioBuffer buffer(source->GetNumChannels(), 4096);
		VX::BinaryData const options;

		SN::Testing::RealtimeGuard const guard;
		for (std::int64_t const position : {0, 4096, 30000, 10, 49000, 60000, 49000, 20000})
		{
			source->ReadAudio(options, buffer, SN::TickTime(position, source->GetFrameRate()), false);
		}
		EXPECT_EQ(guard.GetAllocations(), 0);
		EXPECT_EQ(guard.GetLocks(), 0);
		++tested;
	}
	EXPECT_GT(tested, 10);
}

TEST(AudioFileSource, ReadingWhatWasPrefetchedNeitherAllocatesNorLocks)
{
	TemporaryFolder const folder;
	WriteSound(folder / "sound", SF_FORMAT_OGG | SF_FORMAT_VORBIS, MakeSound(2, 44100, 50000));
	auto const source = AudioFileSource::Open(folder / "sound");
	SN::FrameRate const frameRate = source->GetFrameRate();
	source->PrefetchAudioData(0, SN::TickTime(10000, frameRate), 10000);
	dsp::AudioBuffer buffer(3, 4096);

	SN::Testing::RealtimeGuard const guard;
	// There, in part there, missed, and outside of the file.
	for (std::int64_t const position : {10000, 12000, 5000, 40000, -1000, -10000, 49000, 60000})
	{
		source->ReadPrefetchedAudio(SN::TickTime(position, frameRate), buffer);
		source->GetFailure();
	}
	EXPECT_EQ(guard.GetAllocations(), 0);
	EXPECT_EQ(guard.GetLocks(), 0);
	EXPECT_GT(source->GetMissCount(), 0u);
}

TEST(AudioFileSource, ReadingWhatWasPrefetchedWithoutItsNoiseNeitherAllocatesNorLocks)
{
	TemporaryFolder const folder;
	WriteSound(folder / "sound", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, 44100, 50000));
	FileMedia media;
	media.Get(folder / "sound", "sound");
	SN::FrameRate const frameRate = SN::FrameRate::FromSamplesPerSecond(44100);
	auto const opened = media.GetDenoised({folder / "sound", 0}, {})->mOpen(frameRate);
	auto const source = SN::InterfaceRef<AudioFileSource>::FromUnknown(opened.GetUnknown());
	source->PrefetchAudioData(0, SN::TickTime(10000, frameRate), 10000);
	dsp::AudioBuffer buffer(2, 4096);

	SN::Testing::RealtimeGuard const guard;
	for (std::int64_t const position : {10000, 12000, 40000})
	{
		source->ReadPrefetchedAudio(SN::TickTime(position, frameRate), buffer);
		source->GetFailure();
	}
	EXPECT_EQ(guard.GetAllocations(), 0);
	EXPECT_EQ(guard.GetLocks(), 0);
	EXPECT_EQ(source->GetMissCount(), 3u);
	EXPECT_FALSE(source->GetFailure());
}

} // namespace SonaroHost::Testing::AudioFileSourceRealtimeTest
