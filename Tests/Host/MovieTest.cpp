#include "Movies.h"
#include "Pulling.h"
#include "Refusal.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Media/AudioFileInspection.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Media/NoSoundError.h"
#include "Support/Trials.h"

#include <gmock/gmock.h>

#include <random>

namespace SonaroHost::Testing::MovieTest
{

using testing::HasSubstr;

class Movies : public testing::Test
{
protected:
	void SetUp() override
	{
		if (DescribeMovieLibraries().empty())
		{
			GTEST_SKIP() << "built without SONARO_WITH_LIBAV";
		}
		SilenceMovieLibraries();
	}

	std::string Path(std::string const& inName) const { return (mFolder / inName).string(); }

	// The source of a movie, named so in the arguments of ffmpeg.
	std::string Write(Sound const& inSound, std::string const& inName = "source.wav") const
	{
		WriteSound(mFolder / inName, SF_FORMAT_WAV | SF_FORMAT_PCM_24, inSound);
		return Path(inName);
	}

	TemporaryFolder mFolder;
};

// A picture beside the sound.
constexpr char const* kPicture = "-f lavfi -i color=s=16x16:r=25:d=1 ";
constexpr char const* kPictureCodec = " -c:v mpeg2video";

// Several blocks of the reader, and not a whole number of anything.
constexpr std::int64_t kFrames = 40001;

struct PcmCase
{
	std::string mName;
	// Before and after the source among the arguments.
	std::string mBefore;
	std::string mAfter;
	int mChannels = 2;
	int mSampleRate = 48000;
	// Silence before the source, and how many of its frames are cut off at its start.
	std::int64_t mSilence = 0;
	std::int64_t mCut = 0;
	// Whether a container of whole frames of the picture may pad the end.
	bool mIsPadded = false;
};

std::string SplitToMono(int inStreams)
{
	std::string filter = " -filter_complex \"[1:a]channelsplit=channel_layout=7.1";
	std::string maps;
	for (int i = 0; i < inStreams; ++i)
	{
		filter += "[m" + std::to_string(i) + "]";
		maps += " -map [m" + std::to_string(i) + "]";
	}
	return filter + "\" -map 0:v" + maps;
}

std::vector<PcmCase> MakePcmCases()
{
	std::string const picture = kPicture;
	std::string const codec = kPictureCodec;
	return {
		{"plain.mov", "", "-c:a pcm_s24le"},
		{"big-endian.mov", picture, codec + " -c:a pcm_s24be"},
		{"alac.m4a", "", "-c:a alac -sample_fmt s32p"},
		{"alac.mkv", "", "-c:a alac -sample_fmt s32p"},
		{"flac.mp4", "", "-c:a flac -sample_fmt s32 -strict -2"},
		{"flac.mkv", "", "-c:a flac -sample_fmt s32 -strict -2"},
		{"plain.mkv", picture, codec + " -c:a pcm_s24le"},
		{"plain.avi", picture, codec + " -c:a pcm_s24le"},
		{"plain.mxf", picture, codec + " -c:a pcm_s24le -ar 48000 -shortest", 1, 48000, 0, 0, true},
		{"eight.mxf", picture, codec + SplitToMono(8) + " -c:a pcm_s24le", 8, 48000, 0, 0, true},
		{"eight.mov", picture, codec + SplitToMono(8) + " -c:a pcm_s24le", 8},
		{"odd-rate.mov", picture, codec + " -c:a pcm_s24le", 2, 47952},
		{"odd-rate.mkv", picture, codec + " -c:a pcm_s24le", 2, 44056},
		{"late.mov", picture + "-itsoffset 0.5 ", codec + " -c:a pcm_s24le", 2, 48000, 24000},
		{"late.mkv", picture + "-itsoffset 0.5 ", codec + " -c:a pcm_s24le", 2, 48000, 24000},
		// Writers leave the length of a late track's last packet out, as that of any WavPack packet.
		{"late-alac.mp4", "-itsoffset 0.5 ", "-c:a alac -sample_fmt s32p", 2, 48000, 24000},
		{"late-flac.mp4", "-itsoffset 0.5 ", "-c:a flac -sample_fmt s32 -strict -2", 2, 48000, 24000},
		{"wavpack.mkv", "", "-c:a wavpack -sample_fmt s32p"},
		// libsndfile knows the containers, and not these codecs in them.
		{"alac.caf", "", "-c:a alac -sample_fmt s32p"},
		{"flac.ogg", "", "-c:a flac -sample_fmt s32 -strict -2"},
		// Its times repeat.
		{"flac.wma", "", "-c:a flac -sample_fmt s32 -strict -2"},
		{"edit.mov", picture + "-itsoffset -0.25 ", codec + " -c:a pcm_s24le", 2, 48000, 0, 12000},
	};
}

TEST_F(Movies, EverySampleOfPcmAndLosslessCodecsIsInPlace)
{
	for (PcmCase const& test : MakePcmCases())
	{
		SCOPED_TRACE(test.mName);
		Sound const source = MakeIndexSound(test.mChannels, test.mSampleRate, kFrames);
		RunFfmpeg(test.mBefore + "-i " + Write(source) + " " + test.mAfter + " " + Path(test.mName));
		Sound read = ReadMovie(mFolder / test.mName);
		Sound expected{test.mChannels, test.mSampleRate,
			std::vector<float>(static_cast<std::size_t>(test.mSilence * test.mChannels))};
		Sound const kept = source.Cut(test.mCut, kFrames - test.mCut);
		expected.mSamples.insert(expected.mSamples.end(), kept.mSamples.begin(), kept.mSamples.end());
		if (test.mIsPadded)
		{
			EXPECT_GE(read.GetFrames(), expected.GetFrames());
			expected.mSamples.resize(read.mSamples.size());
		}
		EXPECT_TRUE(SameBits(read, expected));
		EXPECT_TRUE(InspectAudioFile(mFolder / test.mName).mDamage->Get().empty());
	}
}

TEST_F(Movies, RandomReadsEqualOneDecodeToTheBit)
{
	struct Case
	{
		char const* mName;
		char const* mCodec;
		// Whether it is entered in the middle, and not decoded from its start.
		bool mIsSeeked;
	};
	std::string const source = Write(MakeSound(2, 48000, 2 * kFrames));
	for (Case const& test : {Case{"a.mov", "-c:a pcm_s24le", true}, {"b.m4a", "-c:a alac", true},
			 {"c.mkv", "-c:a pcm_s16le", true}, {"d.avi", "-c:a pcm_s24le", true},
			 {"e.mxf", "-c:v mpeg2video -map 0:v -map 1:a -map 1:a -c:a pcm_s24le", true},
			 {"f.m4a", "-c:a aac", false}, {"g.mkv", "-c:a ac3", false}})
	{
		SCOPED_TRACE(test.mName);
		RunFfmpeg((std::string(test.mName) == "e.mxf" ? kPicture : "") + std::string("-i ") + source + " " +
				  test.mCodec + " " + Path(test.mName));
		Sound const whole = ReadMovie(mFolder / test.mName);
		auto const audio = AudioFileSource::Open(mFolder / test.mName);
		std::mt19937 random(4711);
		for (int i = 0; i < 60; ++i)
		{
			auto const length = static_cast<unsigned>(1 + random() % 3000);
			std::int64_t const position = static_cast<std::int64_t>(random() % (2 * kFrames)) - 100;
			ASSERT_TRUE(SameBits(Pull(*audio, position, length), CutWithSilence(whole, position, length)))
				<< length << " frames at " << position;
		}
		AudioFileReader reader(mFolder / test.mName);
		std::int64_t const last = (whole.GetFrames() - 1) / reader.GetBlockFrames();
		reader.GetBlock(last);
		reader.GetBlock(0);
		EXPECT_EQ(reader.GetJumpCount(), test.mIsSeeked ? 2u : 1u);
	}
}

TEST_F(Movies, LossyCodecsStandWhereTheirSourceDid)
{
	struct Case
	{
		char const* mName;
		char const* mCodec;
		// The encoder's delay, where the container has no place for it; it is presented then.
		std::int64_t mLag;
	};
	Sound const source = MakeSound(1, 48000, kFrames);
	std::string const path = Write(source);
	for (Case const& test :
		{Case{"a.m4a", "-c:a aac", 0}, {"a.mov", "-c:a aac", 0}, {"b.mov", "-c:a ac3", 0},
			{"b.mp4", "-c:a eac3", 0}, {"c.webm", "-c:a libopus", 0}, {"v.webm", "-c:a libvorbis", 0},
			{"g.wma", "-c:a wmav2 -b:a 192k", 2048}, {"d.aac", "-c:a aac", 1024}, {"e.mkv", "-c:a aac", 1024},
			{"f.ts", "-c:a aac", 1024}, {"g.avi", "-c:a eac3", 256}, {"h.avi", "-c:a dca -strict -2", 512},
			{"i.avi", "-c:a libvorbis", 0}, {"j.wav", "-c:a ac3", 256}, {"k.wav", "-c:a libmp3lame", 1105}})
	{
		SCOPED_TRACE(test.mName);
		RunFfmpeg("-i " + path + " " + test.mCodec + " " + Path(test.mName));
		Sound const read = ReadMovie(mFolder / test.mName);
		EXPECT_EQ(FindLag(read, source, 2100), test.mLag);
		EXPECT_GE(read.GetFrames(), kFrames - 48);
		EXPECT_LE(read.GetFrames(), kFrames + 6000);
		EXPECT_TRUE(InspectAudioFile(mFolder / test.mName).mDamage->Get().empty());
	}
}

TEST_F(Movies, LateLossyStreamsStandWhereFfmpegPresentsThem)
{
	std::string const path = Write(MakeSound(1, 48000, kFrames));
	for (auto const& [name, codec] :
		{std::pair<std::string, std::string>{"a.mkv", "libvorbis"}, {"a.mp4", "libvorbis"},
			{"b.mkv", "libopus"}, {"b.mp4", "libopus"}, {"c.mkv", "aac"}, {"c.mp4", "aac"},
			{"c.flv", "aac -ar 44100"}, {"d.mkv", "ac3"}, {"e.flv", "libmp3lame -ar 44100"}})
	{
		SCOPED_TRACE(name + " " + codec);
		bool const isFlash = name.ends_with("flv");
		RunFfmpeg(kPicture + std::string("-itsoffset 0.5 -i ") + path +
				  (isFlash ? " -c:v flv1" : " -c:v mpeg4") + " -c:a " + codec + " " + Path(name));
		// A frame of the picture is at 0, and silence goes before the sound.
		RunFfmpeg("-i " + Path(name) + " -map 0:a:0 -af aresample=async=1:first_pts=0 -c:a pcm_f32le " +
				  Path("peer.wav"));
		Sound const read = ReadMovie(mFolder / name);
		EXPECT_EQ(FindLag(read, ReadSound(mFolder / "peer.wav"), 2100), 0);
		EXPECT_THAT(InspectAudioFile(mFolder / name).mRemarks, testing::IsEmpty());
	}
}

TEST_F(Movies, CoarseTimesOpenNoGapsInAnHour)
{
	constexpr std::int64_t kSeconds = 3600;
	struct Case
	{
		char const* mName;
		char const* mCodec;
		std::int64_t mSampleRate;
		std::int64_t mPacket;
	};
	// Their clocks count milliseconds, of which the packets are no whole number.
	for (Case const& test : {Case{"a.flv", "nellymoser", 8000, 256}, {"b.mkv", "pcm_u8", 11025, 1},
			 {"c.wma", "pcm_u8", 11025, 1}, {"d.flv", "pcm_u8", 11025, 1}})
	{
		SCOPED_TRACE(test.mName);
		RunFfmpeg("-f lavfi -i sine=r=" + std::to_string(test.mSampleRate) +
				  ":d=" + std::to_string(kSeconds) + " -c:a " + test.mCodec + " " + Path(test.mName));
		AudioFileInfo const info = InspectAudioFile(mFolder / test.mName);
		EXPECT_THAT(info.mRemarks, testing::IsEmpty());
		EXPECT_GE(info.mFrames, kSeconds * test.mSampleRate);
		EXPECT_LE(info.mFrames, kSeconds * test.mSampleRate + test.mPacket);
		std::filesystem::remove(mFolder / test.mName);
	}
}

TEST_F(Movies, LostPacketsOfDvdPcmAreSilentAndNoted)
{
	constexpr std::size_t kPack = 2048;
	constexpr std::size_t kLostPacks = 20;
	Sound const source = MakeSound(2, 48000, 120000);
	for (char const* const format : {"s16", "s32"})
	{
		SCOPED_TRACE(format);
		RunFfmpeg("-i " + Write(source) + " -c:a pcm_dvd -sample_fmt " + format + " " + Path("a.vob"));
		Sound const whole = ReadMovie(mFolder / "a.vob");
		// The times that writers give packets are up to a packet off, which is no gap.
		EXPECT_THAT(InspectAudioFile(mFolder / "a.vob").mRemarks, testing::IsEmpty());
		EXPECT_EQ(FindLag(whole, source, 600), 0);
		EXPECT_EQ(whole.GetFrames(), source.GetFrames());
		std::string bytes = ReadBytes(mFolder / "a.vob");
		bytes.erase(bytes.size() / kPack / 2 * kPack, kLostPacks * kPack);
		WriteBytes(mFolder / "b.vob", bytes);
		EXPECT_THAT(InspectAudioFile(mFolder / "b.vob").mRemarks,
			testing::ElementsAre(
				HasSubstr("audio stream 1 has 1 gap between its packets, which is silent: from 0:01.")));
		Sound const read = ReadMovie(mFolder / "b.vob");
		EXPECT_NEAR(static_cast<double>(read.GetFrames()), static_cast<double>(whole.GetFrames()), 1000.0);
		EXPECT_NEAR(
			static_cast<double>(FindLag(read.Cut(90000, 25000), whole.Cut(90000, 25000), 1000)), 0.0, 600.0);
	}
}

TEST_F(Movies, AacIsWhatFfmpegDecodes)
{
	RunFfmpeg("-i " + Write(MakeSound(2, 44100, kFrames)) + " -c:a aac " + Path("a.mp4"));
	Sound const read = ReadMovie(mFolder / "a.mp4");
	Sound const peer = DecodeByFfmpeg(mFolder / "a.mp4", 2, 44100);
	std::int64_t const frames = std::min(read.GetFrames(), peer.GetFrames());
	ASSERT_GT(frames, kFrames - 1024);
	EXPECT_TRUE(SameBits(read.Cut(0, frames), peer.Cut(0, frames)));
}

TEST_F(Movies, StreamsFollowOneAnotherAndOneIsPicked)
{
	Sound const source = MakeIndexSound(3, 48000, kFrames);
	std::string const stereo = Write(source.Pick({0, 1}), "stereo.wav");
	std::string const mono = Write(source.Pick({2}), "mono.wav");
	std::string const other = Write(MakeIndexSound(1, 44100, kFrames), "other.wav");
	RunFfmpeg(kPicture + std::string("-i ") + stereo + " -i " + mono + " -i " + other +
			  " -map 0 -map 1 -map 2 -map 3 -c:v mpeg2video -c:a pcm_s24le " + Path("a.mov"));
	AudioFileInfo const info = InspectAudioFile(mFolder / "a.mov");
	EXPECT_THAT(
		info.mRemarks, testing::ElementsAre(HasSubstr("audio stream 3 is not read: it has 44100 Hz")));
	EXPECT_TRUE(SameBits(ReadMovie(mFolder / "a.mov"), source));
	EXPECT_TRUE(SameBits(ReadMovie(mFolder / "a.mov", 1), source.Pick({0, 1})));
	EXPECT_TRUE(SameBits(ReadMovie(mFolder / "a.mov", 2), source.Pick({2})));
	EXPECT_EQ(ReadMovie(mFolder / "a.mov", 3).mSampleRate, 44100);
	EXPECT_THAT(
		GetRefusalOf([&] { InspectAudioFile(mFolder / "a.mov", 4); }), HasSubstr("has no audio stream 4"));
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mono, 2); }), HasSubstr("is a sound file"));
}

TEST_F(Movies, SixChannelsAre51InTheEnginesOrder)
{
	Sound const source = MakeIndexSound(6, 48000, kFrames);
	std::string const path = Write(source);
	for (char const* const arguments : {"-c:a pcm_s24le a.mov", "-c:a pcm_s24le -channel_layout 5.1 b.mkv",
			 "-c:a alac -sample_fmt s32p -channel_layout 5.1 c.m4a"})
	{
		SCOPED_TRACE(arguments);
		std::string const text = arguments;
		std::size_t const name = text.rfind(' ') + 1;
		RunFfmpeg("-i " + path + " " + text.substr(0, name) + Path(text.substr(name)));
		auto const audio = AudioFileSource::Open(mFolder / text.substr(name));
		EXPECT_EQ(audio->GetInfo().mLayout.size(), 6u);
		EXPECT_TRUE(SameBits(Pull(*audio, 0, 1000), source.Cut(0, 1000)));
	}
}

TEST_F(Movies, OggHasItsChannelsWhereMatroskaHasThem)
{
	for (int const channels : {6, 8})
	{
		std::string const path = Write(MakeSound(channels, 48000, kFrames));
		for (char const* const codec : {"libvorbis -q:a 10", "libopus -b:a 1M -mapping_family 1"})
		{
			SCOPED_TRACE(codec);
			RunFfmpeg("-i " + path + " -c:a " + codec + " " + Path("a.ogg"));
			RunFfmpeg("-i " + Path("a.ogg") + " -c:a copy " + Path("a.mkv"));
			auto const ogg = AudioFileSource::Open(mFolder / "a.ogg");
			auto const movie = AudioFileSource::Open(mFolder / "a.mkv");
			EXPECT_EQ(GetLayoutName(ogg->GetInfo().mLayout), GetLayoutName(movie->GetInfo().mLayout));
			Sound const expected = Pull(*movie, 10000, 10000);
			Sound const read = Pull(*ogg, 10000, 10000);
			for (unsigned channel = 0; channel < static_cast<unsigned>(channels); ++channel)
			{
				EXPECT_EQ(FindLag(read.Pick({channel}), expected.Pick({channel}), 100), 0) << channel;
			}
		}
	}
}

TEST_F(Movies, TheOrdersOf51InQuickTimeAreHonoured)
{
	Sound const source = MakeIndexSound(6, 48000, kFrames);
	RunFfmpeg("-i " + Write(source) + " -c:a pcm_s24le -channel_layout 5.1 " + Path("a.mov"));
	std::string const movie = ReadBytes(mFolder / "a.mov");
	struct Case
	{
		char mTag;
		// Where left, right, centre, low frequency and the surrounds stand.
		std::vector<unsigned> mOrder;
	};
	for (Case const& test : {Case{121, {0, 1, 2, 3, 4, 5}}, {122, {0, 1, 4, 5, 2, 3}},
			 {123, {0, 2, 1, 5, 3, 4}}, {124, {1, 2, 0, 5, 3, 4}}})
	{
		SCOPED_TRACE(static_cast<int>(test.mTag));
		std::string bytes = movie;
		// The tag stands after the atom's name, version and flags.
		bytes.replace(bytes.rfind("chan") + 8, 4, std::string{0, test.mTag, 0, 6});
		WriteBytes(mFolder / "b.mov", bytes);
		auto const audio = AudioFileSource::Open(mFolder / "b.mov");
		EXPECT_EQ(GetLayoutName(audio->GetInfo().mLayout), "5.1");
		EXPECT_TRUE(SameBits(Pull(*audio, 0, 1000), source.Pick(test.mOrder).Cut(0, 1000)));
	}
}

TEST_F(Movies, AMovieWithoutSoundIsSaidToBeOne)
{
	RunFfmpeg(kPicture + std::string("-c:v mpeg2video ") + Path("a.mov"));
	EXPECT_THROW(InspectAudioFile(mFolder / "a.mov"), SilentMovieError);
}

TEST_F(Movies, TheStartIsThatOfTheTimecode)
{
	struct Case
	{
		std::string mName;
		std::string mArguments;
		double mSeconds;
		char const* mText;
	};
	std::string const source = "-i " + Write(MakeIndexSound(1, 48000, kFrames));
	for (Case const& test : {
			 Case{"a.mov", "-f lavfi -i color=s=16x16:r=24000/1001:d=1 " + source + " -timecode 01:00:00:12",
				 3604.1005, "01:00:00:12 at 23.976 fps"},
			 {"b.mov", "-f lavfi -i color=s=16x16:r=30000/1001:d=1 " + source + " -timecode '01:00:00;00'",
				 3599.9964, "01:00:00;00 at 29.97 fps"},
			 {"c.mxf", kPicture + source + " -timecode 10:00:00:05", 36000.2, "10:00:00:05 at 25 fps"},
			 {"d.mkv", kPicture + source + " -timecode 00:00:10:00", 10.0, "00:00:10:00 at 25 fps"},
			 {"e.wav", source + " -write_bext 1 -metadata time_reference=172800000", 3600.0, "1:00:00.000"},
		 })
	{
		SCOPED_TRACE(test.mName);
		RunFfmpeg(test.mArguments + (test.mName == "e.wav" ? "" : kPictureCodec) + " -c:a pcm_s24le " +
				  Path(test.mName));
		auto const start = InspectAudioFile(mFolder / test.mName).mStart;
		ASSERT_TRUE(start);
		EXPECT_NEAR(
			static_cast<double>(start->mUnits * start->mRateDivisor) / static_cast<double>(start->mRate),
			test.mSeconds, 1e-6);
		EXPECT_EQ(start->mText, test.mText);
	}
	RunFfmpeg(source + " -c:a pcm_s24le " + Path("none.mov"));
	EXPECT_FALSE(InspectAudioFile(mFolder / "none.mov").mStart);
}

TEST_F(Movies, WhatFollowsLostPacketsStaysInPlace)
{
	struct Case
	{
		std::string mName;
		std::string mCodec;
		// Which packets are dropped, by their number n.
		std::string mDropped;
	};
	std::string const path = Write(MakeSound(2, 48000, 3 * kFrames));
	for (Case const& test :
		{Case{"a.webm", "libopus", "between(n,20,20)"}, {"b.webm", "libopus", "between(n,20,28)"},
			{"c.webm", "libopus", "not(mod(n+5,20))"}, {"d.webm", "libvorbis", "between(n,20,24)"},
			{"e.wma", "wmav2", "between(n,10,11)"}, {"f.mkv", "truehd -strict -2", "between(n,500,599)"},
			{"g.ts", "s302m -strict -2", "between(n,40,42)"}})
	{
		SCOPED_TRACE(test.mName);
		RunFfmpeg("-i " + path + " -c:a " + test.mCodec + " " + Path(test.mName));
		RunFfmpeg("-i " + Path(test.mName) + " -c copy -bsf:a \"noise=drop='" + test.mDropped + "'\" " +
				  Path("gap-" + test.mName));
		Sound const whole = ReadMovie(mFolder / test.mName);
		Sound const read = ReadMovie(mFolder / ("gap-" + test.mName));
		EXPECT_NEAR(static_cast<double>(read.GetFrames()), static_cast<double>(whole.GetFrames()), 1000.0);
		for (std::int64_t const position : {kFrames / 8, 2 * kFrames})
		{
			EXPECT_NEAR(
				static_cast<double>(FindLag(read.Cut(position, 8000), whole.Cut(position, 8000), 2000)), 0.0,
				48.0)
				<< position;
		}
	}
}

TEST_F(Movies, SingleTimesThatAreOffAreNoGaps)
{
	RunFfmpeg("-i " + Write(MakeSound(1, 48000, kFrames)) + " -c:a libopus " + Path("a.mkv"));
	Sound const whole = ReadMovie(mFolder / "a.mkv");
	for (char const* const ticks : {"9*not(mod(N+3,7))", "-9*not(mod(N+3,7))", "6*mod(N,2)"})
	{
		SCOPED_TRACE(ticks);
		RunFfmpeg(
			"-i " + Path("a.mkv") + " -c copy -bsf:a \"setts=ts='PTS+" + ticks + "'\" " + Path("b.mkv"));
		Sound const read = ReadMovie(mFolder / "b.mkv");
		EXPECT_TRUE(SameBits(read.Cut(0, kFrames - 960), whole.Cut(0, kFrames - 960)));
	}
}

TEST_F(Movies, DamagedPacketsAreSilenceOfTheirLength)
{
	RunFfmpeg("-i " + Write(MakeSound(1, 48000, kFrames)) + " -c:a ac3 " + Path("a.mkv"));
	Sound const whole = ReadMovie(mFolder / "a.mkv");
	std::string bytes = ReadBytes(mFolder / "a.mkv");
	std::size_t const middle = bytes.size() / 2;
	std::size_t const sync = bytes.find("\x0b\x77", middle);
	std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(sync) + 20, 40, '\x55');
	WriteBytes(mFolder / "b.mkv", bytes);

	AudioFileReader reader(mFolder / "b.mkv");
	ASSERT_EQ(reader.GetInfo().mFrames, whole.GetFrames());
	Sound read = ReadMovie(mFolder / "b.mkv");
	for (std::int64_t block = 0; block * reader.GetBlockFrames() < whole.GetFrames(); ++block)
	{
		reader.GetBlock(block);
	}
	auto const damage = reader.GetInfo().mDamage->Get();
	ASSERT_EQ(damage.size(), 1u);
	EXPECT_EQ(damage[0].mEnd - damage[0].mFirst, 1536);
	EXPECT_EQ(damage[0].mFirst % 1536, 0);
	EXPECT_TRUE(SameBits(read.Cut(damage[0].mFirst, 1536), Sound{1, 48000, std::vector<float>(1536)}));
	EXPECT_TRUE(SameBits(read.Cut(0, damage[0].mFirst), whole.Cut(0, damage[0].mFirst)));
	// Noise that the codec makes itself goes on differently, in its place.
	std::int64_t const rest = whole.GetFrames() - damage[0].mEnd;
	EXPECT_EQ(FindLag(read.Cut(damage[0].mEnd, rest), whole.Cut(damage[0].mEnd, rest), 100), 0);
}

TEST_F(Movies, TruncatedFilesKeepTheirLength)
{
	Sound const source = MakeIndexSound(1, 48000, 3 * kFrames);
	std::string const path = Write(source);
	for (char const* const test : {"-movflags +faststart a.mov", "a.mkv", "a.avi"})
	{
		SCOPED_TRACE(test);
		std::string const text = test;
		std::string const name = text.substr(text.find("a."));
		RunFfmpeg("-i " + path + " -c:a pcm_s24le " + text.substr(0, text.find("a.")) + Path(name));
		std::string const bytes = ReadBytes(mFolder / name);
		WriteBytes(mFolder / name, bytes.substr(0, bytes.size() / 2));
		AudioFileInfo const info = InspectAudioFile(mFolder / name);
		EXPECT_NEAR(static_cast<double>(info.mFrames), 3.0 * kFrames, 48.0);
		auto const damage = info.mDamage->Get();
		ASSERT_EQ(damage.size(), 1u);
		EXPECT_EQ(damage[0].mEnd, info.mFrames);
		EXPECT_NEAR(static_cast<double>(damage[0].mFirst), 1.5 * kFrames, 6000.0);
		Sound expected = source.Cut(0, damage[0].mFirst);
		expected.mSamples.resize(static_cast<std::size_t>(info.mFrames));
		EXPECT_TRUE(SameBits(ReadMovie(mFolder / name), expected));
	}
	WriteBytes(mFolder / "headless.mov", ReadBytes(mFolder / "a.mov").substr(0, 300));
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "headless.mov"); }),
		HasSubstr("is truncated or damaged"));
}

TEST_F(Movies, ALostEndOfSomePacketsIsReported)
{
	std::string const path = Write(MakeSound(1, 48000, 3 * kFrames));
	for (auto const& [name, codec] : {std::pair<std::string, std::string>{"a.mkv", "pcm_s24le"},
			 {"b.webm", "libopus"}, {"c.flv", "aac -ar 44100"}, {"d.wma", "wmav2"}})
	{
		SCOPED_TRACE(name);
		RunFfmpeg("-i " + path + " -c:a " + codec + " " + Path(name));
		AudioFileInfo const whole = InspectAudioFile(mFolder / name);
		EXPECT_TRUE(whole.mDamage->Get().empty());
		std::string const bytes = ReadBytes(mFolder / name);
		WriteBytes(mFolder / name, bytes.substr(0, bytes.size() * 9 / 10));
		AudioFileInfo const info = InspectAudioFile(mFolder / name);
		EXPECT_NEAR(static_cast<double>(info.mFrames), static_cast<double>(whole.mFrames), 3000.0);
		auto const damage = info.mDamage->Get();
		ASSERT_FALSE(damage.empty());
		EXPECT_EQ(damage.back().mEnd, info.mFrames);
		EXPECT_NEAR(static_cast<double>(damage.back().mFirst), 2.7 * kFrames, 9000.0);
	}
}

TEST_F(Movies, WhatCannotBeDecodedAnywhereIsRefused)
{
	RunFfmpeg("-i " + Write(MakeSound(1, 48000, kFrames)) + " -c:a ac3 " + Path("a.mkv"));
	std::string bytes = ReadBytes(mFolder / "a.mkv");
	for (std::size_t place = 0; (place = bytes.find("\x0b\x77", place)) != std::string::npos;)
	{
		bytes[place] = 0;
	}
	WriteBytes(mFolder / "a.mkv", bytes);
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "a.mkv"); }),
		HasSubstr("none of its packets can be decoded"));
}

TEST_F(Movies, AMovieThatIsCutWhileItIsReadIsRefused)
{
	for (char const* const arguments : {"-c:a pcm_s24le a.mov", "-c:a aac a.mp4"})
	{
		std::string const text = arguments;
		std::size_t const name = text.rfind(' ') + 1;
		std::filesystem::path const path = mFolder / text.substr(name);
		RunFfmpeg(
			"-i " + Write(MakeSound(1, 48000, 9 * kFrames)) + " " + text.substr(0, name) + path.string());
		AudioFileReader reader(path);
		reader.GetBlock(0);
		std::filesystem::resize_file(path, std::filesystem::file_size(path) / 3);
		EXPECT_THAT(
			GetRefusalOf([&] { reader.GetBlock(reader.GetInfo().mFrames / reader.GetBlockFrames()); }),
			HasSubstr("has changed while it was being read"));
	}
}

TEST_F(Movies, WhatADecoderRefusesIsRefusedWithTheFile)
{
	RunFfmpeg("-i " + Write(MakeIndexSound(1, 48000, kFrames)) + " -c:a alac " + Path("a.m4a"));
	std::string movie = ReadBytes(mFolder / "a.m4a");
	// Packets of 4096 frames become packets of none.
	std::size_t const found = movie.rfind(std::string("alac\0\0\0\0\0\0\x10\0", 12));
	ASSERT_NE(found, std::string::npos);
	movie[found + 10] = 0;
	WriteBytes(mFolder / "a.m4a", movie);
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "a.m4a"); }),
		testing::AllOf(
			HasSubstr("a.m4a"), HasSubstr("it cannot be decoded: the decoder for alac refuses it")));
}

TEST_F(Movies, PacketsOfImpossibleSizesAreRefusedWithTheFile)
{
	RunFfmpeg("-i " + Write(MakeSound(1, 48000, kFrames)) + " -c:a aac " + Path("a.mp4"));
	std::string movie = ReadBytes(mFolder / "a.mp4");
	// Of the third packet, in the table of sizes.
	constexpr std::size_t kPlace = 4 + 12 + 2 * 4;
	movie.replace(movie.rfind("stsz") + kPlace, 4, std::string("\x20\0\x02\x29", 4));
	WriteBytes(mFolder / "a.mp4", movie);
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "a.mp4"); }),
		testing::AllOf(HasSubstr("a.mp4"), HasSubstr("get a complete copy")));
}

TEST_F(Movies, ListsOfOtherFilesAreRefused)
{
	std::string const path = Write(MakeIndexSound(1, 48000, kFrames), "a.wav");
	for (auto const& [name, text] :
		{std::pair<std::string, std::string>{"list.ffconcat", "ffconcat version 1.0\nfile a.wav\n"},
			{"list.m3u8",
				"#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXTINF:1,\na.wav\n#EXT-X-ENDLIST\n"},
			{"list.mov",
				"#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXTINF:1,\na.wav\n#EXT-X-ENDLIST\n"}})
	{
		std::filesystem::path const list = mFolder / name;
		WriteBytes(list, text);
		EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(list); }), HasSubstr("is a list of other files"))
			<< name;
	}
	WriteBytes(mFolder / "text.mov", "No movie at all, only words that somebody has named so.");
	EXPECT_THAT(
		GetRefusalOf([&] { InspectAudioFile(mFolder / "text.mov"); }), HasSubstr("cannot be read as sound"));
}

// A big-endian number of so many bytes.
std::string Number(std::uint64_t inValue, int inBytes)
{
	std::string text;
	for (int i = inBytes - 1; i >= 0; --i)
	{
		text += static_cast<char>(inValue >> (8 * i) & 0xff);
	}
	return text;
}

std::uint64_t GetNumber(std::string const& inBytes, std::size_t inPlace)
{
	std::uint64_t value = 0;
	for (std::size_t i = 0; i < 4; ++i)
	{
		value = value << 8 | static_cast<unsigned char>(inBytes[inPlace + i]);
	}
	return value;
}

// A QuickTime movie, its header at its end, with another atom at a place within those of the names.
std::string ReplaceAtom(std::string inMovie, std::size_t inPlace, std::string const& inAtom,
	std::vector<std::string> const& inParents)
{
	std::uint64_t const old = GetNumber(inMovie, inPlace);
	for (std::string const& parent : inParents)
	{
		std::size_t const size = inMovie.rfind(parent, inPlace) - 4;
		inMovie.replace(size, 4, Number(GetNumber(inMovie, size) + inAtom.size() - old, 4));
	}
	return inMovie.replace(inPlace, old, inAtom);
}

// A QuickTime movie, its header at its end, whose sound is said to be in another file of its folder.
std::string ReferToOtherFile(std::string inMovie, std::string const& inName)
{
	std::size_t const own = inMovie.rfind(Number(12, 4) + "url " + Number(1, 4));
	std::string const path = "disk:" + inName + (inName.size() % 2 == 0 ? " " : "");
	std::string alias = std::string(10, '\0') + Number(4, 1) + "disk" + std::string(23, '\0') +
						std::string(12, '\0') + Number(inName.size(), 1) + inName +
						std::string(63 - inName.size(), '\0') + std::string(16, '\0') + Number(1, 2) +
						Number(1, 2) + std::string(16, '\0') + Number(2, 2) + Number(path.size(), 2) + path +
						Number(0xffff, 2) + Number(0, 2);
	alias = Number(alias.size() + 12, 4) + "alis" + Number(0, 4) + alias;
	return ReplaceAtom(std::move(inMovie), own, alias, {"moov", "trak", "mdia", "minf", "dinf", "dref"});
}

TEST_F(Movies, SoundInOtherFilesIsNotFollowed)
{
	RunFfmpeg("-i " + Write(MakeIndexSound(1, 48000, kFrames)) + " -c:a pcm_s24le " + Path("own.mov"));
	std::string const movie = ReadBytes(mFolder / "own.mov");
	WriteBytes(mFolder / "refers.mov", ReferToOtherFile(movie, "own.mov"));
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "refers.mov"); }),
		HasSubstr("has its audio in another file"));
	// A reference without an address is to the file itself.
	std::string bytes = movie;
	bytes.replace(bytes.rfind("url " + Number(1, 4)) + 4, 4, Number(0, 4));
	WriteBytes(mFolder / "unflagged.mov", bytes);
	EXPECT_EQ(InspectAudioFile(mFolder / "unflagged.mov").mFrames, kFrames);
}

// A part of a track's media, in samples; silence where it begins below 0.
struct Edit
{
	std::int64_t mDuration = 0;
	std::int64_t mMedia = 0;
};

// A movie that counts in samples, with another edit list.
std::string EditMovie(std::string const& inMovie, std::vector<Edit> const& inEdits)
{
	std::string list = "elst" + Number(0, 4) + Number(inEdits.size(), 4);
	for (Edit const& edit : inEdits)
	{
		list += Number(static_cast<std::uint64_t>(edit.mDuration), 4) +
				Number(static_cast<std::uint64_t>(edit.mMedia), 4) + Number(0x10000, 4);
	}
	return ReplaceAtom(
		inMovie, inMovie.rfind("elst") - 4, Number(list.size() + 4, 4) + list, {"moov", "trak", "edts"});
}

TEST_F(Movies, EditsOfSeveralSegmentsAreExact)
{
	Sound const source = MakeIndexSound(2, 48000, kFrames);
	std::string const path = Write(source);
	for (char const* const codec : {"pcm_s24le", "alac -sample_fmt s32p"})
	{
		RunFfmpeg("-i " + path + " -movie_timescale 48000 -c:a " + codec + " " + Path("a.mov"));
		std::string const movie = ReadBytes(mFolder / "a.mov");
		for (std::vector<Edit> const& edits : std::vector<std::vector<Edit>>{{{10000, 24001}, {12000, 5000}},
				 {{10000, 5000}, {4800, -1}, {10000, 20000}},
				 {{4801, -1}, {10000, 5000}, {2400, -1}, {10000, 1234}},
				 {{3000, 1000}, {3000, 1000}, {3000, 1000}}, {{3000, 1000}, {0, 7000}},
				 {{3000, 39000}, {1000, 0}}})
		{
			SCOPED_TRACE(codec + std::to_string(edits.back().mMedia));
			WriteBytes(mFolder / "b.mov", EditMovie(movie, edits));
			Sound expected{2, 48000, {}};
			for (Edit const& edit : edits)
			{
				std::int64_t const length = edit.mDuration > 0 ? edit.mDuration : kFrames - edit.mMedia;
				Sound const part = edit.mMedia < 0
									   ? CutWithSilence(source, -length, static_cast<unsigned>(length))
									   : CutWithSilence(source, edit.mMedia, static_cast<unsigned>(length));
				expected.mSamples.insert(expected.mSamples.end(), part.mSamples.begin(), part.mSamples.end());
			}
			EXPECT_TRUE(SameBits(ReadMovie(mFolder / "b.mov"), expected));
			EXPECT_TRUE(InspectAudioFile(mFolder / "b.mov").mDamage->Get().empty());
		}
	}
}

TEST_F(Movies, EditsOfLossySoundAreInPlace)
{
	constexpr std::int64_t kDelay = 1024;
	Sound const source = MakeSound(1, 48000, kFrames);
	RunFfmpeg("-i " + Write(source) + " -movie_timescale 48000 -c:a aac -b:a 256k " + Path("a.mov"));
	WriteBytes(mFolder / "b.mov",
		EditMovie(ReadBytes(mFolder / "a.mov"), {{15000, 20001 + kDelay}, {15000, 3000 + kDelay}}));
	Sound const read = ReadMovie(mFolder / "b.mov");
	EXPECT_EQ(read.GetFrames(), 30000);
	EXPECT_EQ(FindLag(read.Cut(0, 15000), source.Cut(20001, 15000), 2000), 0);
	EXPECT_EQ(FindLag(read.Cut(15000, 15000), source.Cut(3000, 15000), 2000), 0);
	auto const audio = AudioFileSource::Open(mFolder / "b.mov");
	for (std::int64_t const position : {20000, 100, 14500})
	{
		EXPECT_TRUE(SameBits(Pull(*audio, position, 1000), read.Cut(position, 1000)));
	}
}

TEST_F(Movies, DelayAndPaddingThatATagStatesAreDropped)
{
	Sound const source = MakeSound(1, 48000, kFrames);
	RunFfmpeg("-i " + Write(source) + " -c:a aac -use_editlist 0 " + Path("a.m4a"));
	auto const atom = [](std::string const& inName, std::string const& inContent)
	{ return Number(inContent.size() + 8, 4) + inName + inContent; };
	// What iTunes writes: hexadecimal numbers of the delay, the padding and the samples between them.
	auto const tagMovie = [&](std::string const& inNumbers)
	{
		std::string const tag = atom("----", atom("mean", Number(0, 4) + "com.apple.iTunes") +
												 atom("name", Number(0, 4) + "iTunSMPB") +
												 atom("data", Number(1, 4) + Number(0, 4) + inNumbers));
		std::string const handler = atom("hdlr", Number(0, 8) + "mdirappl" + Number(0, 9));
		std::string const movie = ReadBytes(mFolder / "a.m4a");
		WriteBytes(mFolder / "b.m4a",
			ReplaceAtom(movie, movie.rfind("udta") - 4,
				atom("udta", atom("meta", Number(0, 4) + handler + atom("ilst", tag))), {"moov"}));
	};
	tagMovie(" 00000000 00000400 000003BF 0000000000009C41");
	Sound const read = ReadMovie(mFolder / "b.m4a");
	EXPECT_EQ(read.GetFrames(), kFrames);
	EXPECT_EQ(FindLag(read, source, 2100), 0);
	EXPECT_TRUE(InspectAudioFile(mFolder / "b.m4a").mDamage->Get().empty());
	// That of a longer file.
	tagMovie(" 00000000 00000400 000003BF 0000000000109C41");
	EXPECT_LT(InspectAudioFile(mFolder / "b.m4a").mFrames, kFrames + 4096);
	// Without the tag, nothing says what the encoder added.
	EXPECT_EQ(FindLag(ReadMovie(mFolder / "a.m4a"), source, 2100), 1024);
}

TEST_F(Movies, EditsThatChangeTheSpeedAreRefused)
{
	RunFfmpeg("-i " + Write(MakeIndexSound(1, 48000, kFrames)) + " -c:a pcm_s24le " + Path("a.mov"));
	std::string movie = EditMovie(ReadBytes(mFolder / "a.mov"), {{500, 0}, {500, 0}});
	movie.replace(movie.rfind(Number(0x10000, 4), movie.rfind("mdia")), 4, Number(0x8000, 4));
	WriteBytes(mFolder / "b.mov", movie);
	EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "b.mov"); }),
		HasSubstr("its edit list changes the speed"));
}

TEST_F(Movies, WhatIsEncryptedIsRefused)
{
	std::string const key = "00112233445566778899aabbccddeeff";
	std::string const path = Write(MakeSound(1, 48000, kFrames));
	for (char const* const codec : {"aac", "alac", "flac -strict -2"})
	{
		SCOPED_TRACE(codec);
		RunFfmpeg("-i " + path + " -c:a " + codec + " -encryption_scheme cenc-aes-ctr -encryption_key " +
				  key + " -encryption_kid " + key + " " + Path("a.mp4"));
		EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "a.mp4"); }),
			HasSubstr("stream 1 is not read: it is encrypted"));
		// The name of a stream in Matroska makes room for an element of the same size: encryption by AES with a key.
		RunFfmpeg("-i " + path + " -metadata:s:a title=" + std::string(33, 'x') + " -c:a " + codec + " " +
				  Path("a.mkv"));
		std::string bytes = ReadBytes(mFolder / "a.mkv");
		std::size_t const name = bytes.find("\x53\x6e\xa1" + std::string(33, 'x'));
		ASSERT_NE(name, std::string::npos);
		bytes.replace(name, 36,
			std::string("\x6d\x80\xa1\x62\x40\x9e\x50\x33\x81\x01\x50\x35\x97\x47\xe1\x81\x05\x47\xe2\x90") +
				key.substr(0, 16));
		WriteBytes(mFolder / "a.mkv", bytes);
		EXPECT_THAT(GetRefusalOf([&] { InspectAudioFile(mFolder / "a.mkv"); }),
			HasSubstr("stream 1 is not read: it is encrypted"));
	}
}

// Whether the file is read or refused; what is read is looked at from both ends.
void ReadOrRefuse(std::filesystem::path const& inPath)
{
	try
	{
		AudioFileReader reader(inPath);
		AudioFileInfo const& info = reader.GetInfo();
		ASSERT_GT(info.mFrames, 0);
		// Times that were changed may lie days apart.
		std::int64_t const last = std::min<std::int64_t>(info.mFrames - 1, 10 * info.mSampleRate);
		for (std::int64_t const frame : {std::int64_t{0}, last, last / 2})
		{
			reader.GetBlock(frame / reader.GetBlockFrames());
		}
	}
	catch (HostError const& error)
	{
		ASSERT_NE(error.what(), std::string());
	}
}

TEST_F(Movies, MutatedFilesAreReadOrRefused)
{
	std::string const path = Write(MakeSound(2, 48000, 6000));
	std::vector<std::string> seeds;
	for (char const* const arguments : {"-c:a aac -movflags +faststart seed.mp4", "-c:a pcm_s24le seed.mov",
			 "-c:a ac3 seed.mkv", "-c:a pcm_s16le seed.avi", "-c:a aac seed.ts", "-c:a wmav2 seed.wma"})
	{
		std::string const text = arguments;
		std::size_t const name = text.rfind(' ') + 1;
		RunFfmpeg("-i " + path + " " + text.substr(0, name) + Path(text.substr(name)));
		seeds.push_back(ReadBytes(Path(text.substr(name))));
	}
	constexpr unsigned kSeed = 15;
	std::mt19937 random(kSeed);
	for (unsigned trial = 0; trial < SN::Testing::GetNumTrials(1000); ++trial)
	{
		SCOPED_TRACE("trial " + std::to_string(trial));
		std::string bytes = seeds[trial % seeds.size()];
		for (auto i = 1 + random() % 12; i > 0; --i)
		{
			// Most of what a demuxer reads stands at the start and the end.
			std::size_t const room =
				random() % 2 == 0 ? std::min<std::size_t>(bytes.size(), 1500) : bytes.size();
			std::size_t const place =
				random() % 3 == 0 ? bytes.size() - 1 - random() % room : random() % room;
			bytes[place] = static_cast<char>(random() % 4 == 0 ? 0xff : random());
		}
		bytes.resize(random() % 8 == 0 ? random() % bytes.size() : bytes.size());
		WriteBytes(mFolder / "mutated", bytes);
		ReadOrRefuse(mFolder / "mutated");
	}
}

} // namespace SonaroHost::Testing::MovieTest
