// Bytes of a mix on demand: those of the file that a render writes, whoever asks for which of them.

#include "Host/Media.h"
#include "Host/TimelineJson.h"
#include "Serve/FileFrame.h"
#include "Serve/GraphPool.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Render/AudioFileWriter.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "SonaroHost/Serve/PeakStore.h"
#include "SonaroHost/Serve/ServedTimeline.h"
#include "SonaroHost/Serve/TooBusyError.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <future>
#include <random>
#include <thread>

namespace SonaroHost::Testing::MixFileTest
{

using namespace Serve;
using Clock = MixFile::Clock;

constexpr int kRate = 48000;

Clock::time_point Soon()
{
	return Clock::now() + std::chrono::seconds(60);
}

std::string ReadRange(MixFile const& inFile, std::int64_t inFirst, std::int64_t inEnd)
{
	std::string bytes;
	while (inFirst + static_cast<std::int64_t>(bytes.size()) < inEnd)
	{
		std::int64_t const at = inFirst + static_cast<std::int64_t>(bytes.size());
		std::string const more = inFile.Read(at, std::min<std::int64_t>(inEnd - at, 50000), Soon());
		EXPECT_FALSE(more.empty());
		bytes += more;
	}
	return bytes;
}

Json Key(double inSeconds, double inDecibels)
{
	return {{"time", inSeconds}, {"value", inDecibels}};
}

class MixFiles : public testing::Test
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, MakeSound(2, kRate, 2 * kRate));
		WriteSound(mFolder / "b.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, MakeSound(1, 44100, 2 * 44100));
		WriteSound(mFolder / "c.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, MakeSound(2, kRate, 2 * kRate));
	}

	// A level that closes in between, whose silence has a sign in some blocks; a nest at another speed; a start label.
	void WriteTimeline(std::string const& inLayout) const
	{
		Json const warp = {{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"name", ""},
			{"effect_name", "LinearTimeWarp"}, {"time_scalar", 1.5}};
		Json const nest = With(Stack({Track("inner", {Clip("d", "b.flac", 0.0, 0.8)})}),
			{{"source_range", Range(0.12, 0.6)}, {"effects", List({warp})}});
		Json const muted =
			WithSettings(Track("one", {Clip("a", "a.wav", 0.2, 0.52), Clip("b", "c.ogg", 1.2, 0.4)}),
				{{"gain", {{"keyframes", List({Key(0.0, -3.0), Key(0.3, -200.0), Key(0.6, 0.0)})}}}});
		Json timeline = Timeline({muted, Track("two", {Gap(0.16), nest, Clip("g", "c.ogg", 0.4, 0.6)}),
			Track("three", {Clip("h", "b.flac", 0.2, 1.2)})});
		timeline["global_start_time"] = Time(3600.0);
		WriteBytes(mFolder / "edit.otio", WithSettings(timeline, {{"layout", inLayout}}).dump());
	}

	Otio::TimelineRenderRequest MakeRender(OutputFormat const& inFormat) const
	{
		Otio::TimelineRenderRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mOutput = mFolder / "mix";
		request.mContainer = inFormat.mContainer;
		request.mSamples = inFormat.mSamples;
		request.mDither = inFormat.mDither;
		return request;
	}

	std::string RenderFile(OutputFormat const& inFormat) const
	{
		EXPECT_TRUE(Otio::TimelineRenderJob(MakeRender(inFormat)).Run());
		return ReadBytes(mFolder / "mix");
	}

	ServeRequest MakeRequest(OutputFormat const& inFormat = {}) const
	{
		ServeRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mFormat = inFormat;
		return request;
	}

	TemporaryFolder mFolder;
};

TEST_F(MixFiles, AnyRangeHasTheBytesOfTheRenderedFile)
{
	struct Case
	{
		char const* mLayout;
		OutputSamples mSamples;
		Dither mDither;
	};
	for (Case const& test : {Case{"stereo", OutputSamples::kFloat32, Dither::kNone},
			 Case{"5.1", OutputSamples::kInteger24, Dither::kNone},
			 Case{"mono", OutputSamples::kInteger24, Dither::kTriangular},
			 // B-format, whose channels have another order and level in the file.
			 Case{"ambisonic1", OutputSamples::kFloat32, Dither::kNone},
			 Case{"ambisonic1", OutputSamples::kInteger16, Dither::kTriangular},
			 Case{"stereo", OutputSamples::kInteger16, Dither::kTriangular}})
	{
		SCOPED_TRACE(std::string(test.mLayout) + ", " + GetName(test.mSamples));
		WriteTimeline(test.mLayout);
		OutputFormat const format{OutputContainer::kWav, test.mSamples, test.mDither};
		std::string const whole = RenderFile(format);
		ServedTimeline timeline(MakeRequest(format));
		auto const file = timeline.OpenWave({}, Soon());
		EXPECT_EQ(file->GetWhyInOneRun(), "");
		auto const length = static_cast<std::int64_t>(whole.size());
		ASSERT_EQ(file->GetLength(), length);
		EXPECT_TRUE(ReadRange(*file, 0, length) == whole);
		std::mt19937 random(7);
		for (int trial = 0; trial < 60; ++trial)
		{
			std::int64_t const first = std::uniform_int_distribution<std::int64_t>(0, length - 1)(random);
			std::int64_t const most = trial % 3 == 0 ? 3 : trial % 3 == 1 ? 5000 : length;
			std::int64_t const end =
				std::uniform_int_distribution(first + 1, std::min(first + most, length))(random);
			EXPECT_TRUE(ReadRange(*file, first, end) ==
						whole.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(end - first)))
				<< first << " to " << end;
		}
	}
}

// Of a timeline in memory, and also where the engine's resampling remembers all that came before.
TEST_F(MixFiles, ReadsGiveTheSamplesOfTheFile)
{
	using Sequence::Resampling;
	constexpr std::int64_t kFrames = 3000;
	for (auto const& [layout, resampling] : {std::pair("stereo", Resampling::kExact),
			 std::pair("ambisonic1", Resampling::kExact), std::pair("mono", Resampling::kEngine)})
	{
		SCOPED_TRACE(layout);
		WriteTimeline(layout);
		ServeRequest request = MakeRequest();
		request.mOptions.mResampling = resampling;
		request.mText = std::make_shared<std::string const>(ReadBytes(mFolder / "edit.otio"));
		request.mWarmUpSeconds = 1e6;
		Otio::TimelineRenderRequest render = MakeRender({});
		render.mOptions.mResampling = resampling;
		ASSERT_TRUE(Otio::TimelineRenderJob(render).Run());
		std::string const whole = ReadBytes(mFolder / "mix");
		std::filesystem::remove(mFolder / "edit.otio");
		ServedTimeline timeline(request);
		std::size_t const channels = timeline.GetSequence().mLayout.size();
		std::int64_t const frames = timeline.GetSequence().mFrames;
		std::size_t const data = whole.find("data") + 8;
		std::vector<std::vector<float>> samples(channels, std::vector<float>(kFrames));
		std::vector<float*> planes;
		for (std::vector<float>& plane : samples)
		{
			planes.push_back(plane.data());
		}
		for (std::int64_t const first : {std::int64_t{20000}, std::int64_t{23000}, std::int64_t{5001},
				 std::int64_t{-100}, frames - 100, frames, std::int64_t{-5000}})
		{
			timeline.Read({}, {first, kFrames}, Soon(), planes);
			for (std::int64_t i = 0; i < kFrames; ++i)
			{
				for (std::size_t channel = 0; channel < channels; ++channel)
				{
					float expected = 0.0f;
					if (std::int64_t const frame = first + i; frame >= 0 && frame < frames)
					{
						std::size_t const place = static_cast<std::size_t>(frame) * channels + channel;
						std::memcpy(
							&expected, whole.data() + data + place * sizeof expected, sizeof expected);
					}
					ASSERT_EQ(samples[channel][static_cast<std::size_t>(i)], expected) << first << " + " << i;
				}
			}
		}
	}
}

TEST_F(MixFiles, ClientsWithDifferentTracksAreServedAtOnce)
{
	WriteTimeline("stereo");
	Otio::TimelineRenderRequest stems = MakeRender({});
	stems.mStems = Otio::Stems::kTracks;
	stems.mOutput = mFolder / "stems";
	ASSERT_TRUE(Otio::TimelineRenderJob(stems).Run());
	ServedTimeline timeline(MakeRequest());
	std::vector<std::string> const names = {"01 one.wav", "02 two.wav", "03 three.wav"};
	std::vector<std::thread> clients;
	for (unsigned client = 0; client < 6; ++client)
	{
		clients.emplace_back(
			[&, client]
			{
				unsigned const track = client % 3;
				std::string const whole = ReadBytes(mFolder / "stems" / names[track]);
				auto const file = timeline.OpenWave({{}, {track + 1}}, Soon());
				std::mt19937 random(client);
				for (int trial = 0; trial < 12; ++trial)
				{
					auto const first = static_cast<std::int64_t>(random() % whole.size());
					auto const end = std::min(first + 70000, file->GetLength());
					EXPECT_TRUE(ReadRange(*file, first, end) == whole.substr(static_cast<std::size_t>(first),
																	static_cast<std::size_t>(end - first)));
				}
			});
	}
	for (std::thread& client : clients)
	{
		client.join();
	}
}

TEST_F(MixFiles, ChoicesOfTracksAreResolvedAndChecked)
{
	WriteTimeline("stereo");
	ServedTimeline timeline(MakeRequest());
	auto const open = [&](TrackChoice const& inChoice) { return timeline.OpenWave(inChoice, Soon()); };
	EXPECT_EQ(open({{2}, {}})->GetTag(), open({{}, {1, 3}})->GetTag());
	EXPECT_EQ(open({{2}, {1, 2}})->GetTag(), open({{}, {1}})->GetTag());
	EXPECT_NE(open({})->GetTag(), open({{1}, {}})->GetTag());
	// Nothing is left, which is silence of the same length.
	auto const silent = open({{1, 2, 3}, {}});
	std::string const bytes = ReadRange(*silent, silent->GetLength() - 8000, silent->GetLength());
	EXPECT_EQ(bytes.find_first_not_of('\0'), std::string::npos);
	EXPECT_THROW(open({{4}, {}}), HostError);
	EXPECT_THROW(open({{}, {0}}), HostError);
}

TEST_F(MixFiles, WhatDependsOnTheWholePastIsExactFromTheStartOn)
{
	WriteTimeline("stereo");
	Otio::TimelineRenderRequest render = MakeRender({});
	render.mOptions.mResampling = Sequence::Resampling::kEngine;
	ASSERT_TRUE(Otio::TimelineRenderJob(render).Run());
	std::string const whole = ReadBytes(mFolder / "mix");
	ServeRequest request = MakeRequest();
	request.mOptions = render.mOptions;
	request.mWarmUpSeconds = 0.25;
	ServedTimeline timeline(request);
	auto const file = timeline.OpenWave({}, Soon());
	EXPECT_NE(file->GetWhyInOneRun(), "");
	EXPECT_EQ(file->GetWarmUpSeconds(), 0.25);
	EXPECT_TRUE(ReadRange(*file, 0, file->GetLength()) == whole);
	// A warm-up that reaches the start is all that came before.
	EXPECT_TRUE(ReadRange(*file, 60000, 90000) == whole.substr(60000, 30000));
	EXPECT_EQ(ReadRange(*file, 250000, 250800).size(), 800u);
}

TEST_F(MixFiles, FlacHasTheSamplesOfTheRange)
{
	WriteTimeline("stereo");
	for (OutputFormat const& format :
		{OutputFormat{OutputContainer::kFlac, OutputSamples::kInteger24, Dither::kNone},
			OutputFormat{OutputContainer::kFlac, OutputSamples::kInteger16, Dither::kTriangular}})
	{
		RenderFile(format);
		std::vector<int> const whole = ReadIntegers(mFolder / "mix");
		ServedTimeline timeline(MakeRequest({OutputContainer::kWav, format.mSamples, format.mDither}));
		for (ProgrammeRange const& range : {ProgrammeRange{0, 1 << 30}, {12345, 30000}, {40000, 1}})
		{
			auto const stream = timeline.OpenFlac({}, range);
			std::string bytes;
			for (std::string more = stream->Read(Soon()); !more.empty(); more = stream->Read(Soon()))
			{
				bytes += more;
			}
			WriteBytes(mFolder / "part.flac", bytes);
			auto const first = whole.begin() + 2 * range.mFirstFrame;
			auto const end = first + std::min<std::int64_t>(2 * range.mFrames, whole.end() - first);
			EXPECT_TRUE(ReadIntegers(mFolder / "part.flac") == std::vector<int>(first, end));
		}
		EXPECT_THROW(timeline.OpenFlac({}, {1 << 30, 10}), HostError);
	}
}

TEST_F(MixFiles, TagsFollowTheTimelineAndItsMedia)
{
	WriteTimeline("stereo");
	auto const open = [&] { return std::make_unique<ServedTimeline>(MakeRequest()); };
	auto const first = open();
	EXPECT_TRUE(first->IsCurrent());
	EXPECT_EQ(open()->GetTag(), first->GetTag());
	std::filesystem::last_write_time(mFolder / "c.ogg", std::filesystem::file_time_type::clock::now());
	EXPECT_FALSE(first->IsCurrent());
	auto const second = open();
	EXPECT_NE(second->GetTag(), first->GetTag());
	WriteTimeline("mono");
	EXPECT_FALSE(second->IsCurrent());
	EXPECT_NE(open()->GetTag(), second->GetTag());
	// Files go on without the timeline that they were opened from.
	auto file = open()->OpenWave({}, Soon());
	EXPECT_FALSE(ReadRange(*file, 5000, 6000).empty());
}

TEST_F(MixFiles, WhoWaitsForAGraphGivesUpAtTheDeadline)
{
	WriteTimeline("stereo");
	Otio::TimelineInput input(mFolder / "edit.otio");
	Otio::TimelineSequence const sequence = input.MakeSequence();
	GraphPool pool(Otio::MakeProgramme(sequence, input.GetMedia()), {1, 0});
	std::promise<void> isRendering;
	std::promise<void> mayGoOn;
	std::thread other(
		[&]
		{
			pool.Render({}, {0, 10}, Soon(),
				[&](dsp::AudioBuffer const&)
				{
					isRendering.set_value();
					mayGoOn.get_future().wait();
				});
		});
	isRendering.get_future().wait();
	auto const ignore = [](dsp::AudioBuffer const&) {};
	EXPECT_THROW(
		pool.Render({}, {0, 10}, Clock::now() + std::chrono::milliseconds(10), ignore), TooBusyError);
	mayGoOn.set_value();
	other.join();
	pool.Render({}, {0, 10}, Soon(), ignore);
}

TEST_F(MixFiles, PeaksAreKeptAndBelongToAState)
{
	WriteTimeline("stereo");
	auto const timeline = std::make_shared<ServedTimeline>(MakeRequest());
	auto const file = timeline->OpenWave({{}, {1}}, Soon());
	PeakStore store(mFolder / "cache");
	auto const peaks = store.Get(timeline, {{}, {1}}, Soon());
	ASSERT_EQ(peaks->mChannels.size(), 2u);
	std::int64_t const frames = timeline->GetSequence().mFrames;
	EXPECT_EQ(peaks->GetNumColumns(), static_cast<std::size_t>((frames + 255) / 256));
	// Those of the bytes that are served.
	std::int64_t const samples = frames * 2;
	std::string const bytes = ReadRange(*file, file->GetLength() - samples * 4, file->GetLength());
	std::vector<float> sound(static_cast<std::size_t>(samples));
	std::memcpy(sound.data(), bytes.data(), bytes.size());
	for (std::size_t column : {std::size_t{0}, std::size_t{90}, peaks->GetNumColumns() - 1})
	{
		float highest = -2.0f;
		for (std::size_t i = column * 512; i < std::min(column * 512 + 512, sound.size()); i += 2)
		{
			highest = std::max(highest, sound[i]);
		}
		EXPECT_EQ(peaks->GetColumn(0, column).mMaximum, highest) << column;
	}
	// Another store reads them from the disk, to the step of 16 bits, and gives the same bytes.
	EXPECT_EQ(
		MakePeakDat(*PeakStore(mFolder / "cache").Get(timeline, {{}, {1}}, Soon())), MakePeakDat(*peaks));
	Waveform const reduced = Reduce(*peaks, 4);
	EXPECT_EQ(reduced.mSamplesPerColumn, 1024);
	EXPECT_EQ(reduced.GetColumn(1, 3).mMinimum,
		std::min({peaks->GetColumn(1, 12).mMinimum, peaks->GetColumn(1, 13).mMinimum,
			peaks->GetColumn(1, 14).mMinimum, peaks->GetColumn(1, 15).mMinimum}));
	// A file that is damaged is computed again, and replaced.
	std::filesystem::path const kept = mFolder.Get() / "cache" / (file->GetTag() + ".dat");
	std::string const whole = ReadBytes(kept);
	std::string flipped = whole;
	flipped[whole.size() / 2] ^= 0x10;
	for (std::string const& damaged : {std::string("damaged"), std::string(), flipped,
			 whole.substr(0, whole.size() - 1), MakePeakDat(*peaks)})
	{
		WriteBytes(kept, damaged);
		EXPECT_EQ(
			MakePeakDat(*PeakStore(mFolder / "cache").Get(timeline, {{}, {1}}, Soon())), MakePeakDat(*peaks));
		EXPECT_TRUE(ReadBytes(kept) == whole);
	}
	EXPECT_EQ(store.FindObstacle(), "");
	EXPECT_NE(PeakStore(mFolder / "a.wav").FindObstacle(), "");
}

TEST(FileFrames, SmallFilesHaveTheBytesOfTheWriter)
{
	TemporaryFolder const folder;
	for (int const channels : {1, 2, 3, 6, 8})
	{
		for (OutputSamples const samples :
			{OutputSamples::kInteger16, OutputSamples::kInteger24, OutputSamples::kFloat32})
		{
			for (unsigned const frames : {1u, 2u, 333u})
			{
				auto const layout = channels == 6 ? zorvmediatypes::Create51ChannelLayout()
												  : zorvmediatypes::CreateMultichannelLayout(channels);
				std::optional<std::int64_t> const label =
					frames == 2 ? std::nullopt : std::optional<std::int64_t>(123456789012);
				OutputFormat const format{OutputContainer::kWav, samples, Dither::kNone};
				AudioFileWriter writer(folder / "a.wav", format, kRate, layout, frames, label);
				dsp::AudioBuffer silence(layout.size(), frames);
				silence.Zero();
				writer.Write(silence);
				writer.Finish();
				FileFrame const frame = MakeFileFrame({format, kRate, layout, frames, label});
				std::string const zeros(static_cast<std::size_t>(frame.mSampleBytes), '\0');
				EXPECT_TRUE(frame.mHeader + zeros + frame.mTrailer == ReadBytes(folder / "a.wav"))
					<< channels << " channels of " << GetName(samples) << ", " << frames << " frames";
			}
		}
	}
}

TEST(FileFrames, BeyondFourGigabytesTheHeaderIsThatOfTheLargerForm)
{
	std::int64_t const frames = std::int64_t{1} << 30;
	FileFrame const frame =
		MakeFileFrame({{}, kRate, zorvmediatypes::CreateStereoChannelLayout(), frames, 5});
	EXPECT_EQ(frame.mSampleBytes, frames * 8);
	EXPECT_EQ(frame.mHeader.substr(0, 4), "RF64");
	// The file as libsndfile reads it, all samples being 0.
	struct Reader
	{
		FileFrame const& mFrame;
		std::int64_t mAt = 0;
	} reader{frame};
	SF_VIRTUAL_IO callbacks{};
	callbacks.get_filelen = [](void* inReader) -> sf_count_t
	{ return static_cast<Reader*>(inReader)->mFrame.GetLength(); };
	callbacks.seek = [](sf_count_t inOffset, int inOrigin, void* inReader) -> sf_count_t
	{
		auto& file = *static_cast<Reader*>(inReader);
		file.mAt = inOffset + (inOrigin == SEEK_SET      ? 0
								  : inOrigin == SEEK_CUR ? file.mAt
														 : file.mFrame.GetLength());
		return file.mAt;
	};
	callbacks.read = [](void* outBytes, sf_count_t inCount, void* inReader) -> sf_count_t
	{
		auto& file = *static_cast<Reader*>(inReader);
		std::memset(outBytes, 0, static_cast<std::size_t>(inCount));
		auto const header = static_cast<std::int64_t>(file.mFrame.mHeader.size());
		if (file.mAt < header)
		{
			std::memcpy(outBytes, file.mFrame.mHeader.data() + file.mAt,
				static_cast<std::size_t>(std::min(inCount, header - file.mAt)));
		}
		file.mAt += inCount;
		return inCount;
	};
	callbacks.tell = [](void* inReader) -> sf_count_t { return static_cast<Reader*>(inReader)->mAt; };
	SF_INFO info{};
	SNDFILE* const file = sf_open_virtual(&callbacks, SFM_READ, &info, &reader);
	ASSERT_TRUE(file) << sf_strerror(nullptr);
	EXPECT_EQ(info.frames, frames);
	EXPECT_EQ(info.channels, 2);
	sf_close(file);
}

} // namespace SonaroHost::Testing::MixFileTest
