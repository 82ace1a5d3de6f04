// Exporting whole timelines from files, beside a plain loop that decodes the same files, multiplies and adds. One
// thread, CPU time of the process. Then the same with meters, of the mix alone and of every track for a report. At last one
// thread beside one for each core, by the clock and in CPU time. Makes its media, 16-bit stereo at 48 kHz, in a temporary
// folder, prints tables and clears up.

#include "SonaroHost/Render/TimelineRenderJob.h"
#include "SonaroHost/Render/TimelineRenderRequest.h"
#include "nlohmann/json.hpp"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr int kRate = 48000;
constexpr int kSeconds = 120;
constexpr long long kFrames = static_cast<long long>(kRate) * kSeconds;
// With meters.
constexpr long long kMeteredFrames = kFrames / 2;
constexpr int kMeteredTracks = 32;
constexpr int kBlock = 2048;
// Of real content; tracks beyond read one of these by another name.
constexpr int kRecordings = 8;
constexpr double kGainDecibels = -12.0;
constexpr double kPan = -0.4;

struct Case
{
	int mTracks;
	int mClips;
	long long mFrames = kFrames;
};

struct Folder
{
	Folder()
	{
		std::string name = (fs::temp_directory_path() / "export-XXXXXX").string();
		mPath = mkdtemp(name.data());
	}
	~Folder() { fs::remove_all(mPath); }
	Folder(Folder const&) = delete;
	Folder& operator=(Folder const&) = delete;

	fs::path mPath;
};

using File = std::unique_ptr<SNDFILE, decltype(&sf_close)>;

File OpenForReading(fs::path const& inPath)
{
	SF_INFO info{};
	return {sf_open(inPath.c_str(), SFM_READ, &info), &sf_close};
}

File OpenForWriting(fs::path const& inPath, int inSamples)
{
	SF_INFO info{};
	info.samplerate = kRate;
	info.channels = 2;
	info.format = SF_FORMAT_WAV | inSamples;
	return {sf_open(inPath.c_str(), SFM_WRITE, &info), &sf_close};
}

// One second of a recording, over and over.
struct Content
{
	char const* mName;
	// Of a recording's frames, left and right in turns.
	double (*mSample)(int inRecording, int inIndex);
};

double Draw(int inRecording, int inIndex)
{
	unsigned const value =
		(static_cast<unsigned>(inIndex) + 1) * (2654435761u + static_cast<unsigned>(inRecording));
	return ((value ^ value >> 15) * 2246822519u >> 8) / 16777216.0;
}

double GetWave(int inHertz, int inIndex)
{
	return std::sin(2.0 * std::numbers::pi * inHertz * (inIndex / 2) / kRate);
}

// Of the same level all the time, which gives a meter of peaks the most to do, and one that dies away.
constexpr Content kContents[] = {
	{"noise", [](int inRecording, int inIndex) { return 0.6 * Draw(inRecording, inIndex) - 0.3; }},
	{"tone", [](int inRecording, int inIndex) { return 0.3 * GetWave(200 + 131 * inRecording, inIndex); }},
	{"plucked",
		[](int inRecording, int inIndex)
		{
			double const level = std::exp(-4.0 * (inIndex / 2) / kRate);
			return 0.5 * level * GetWave(110 * (1 + inRecording), inIndex) +
				   0.1 * level * level * (Draw(inRecording, inIndex) - 0.5);
		}},
};

// Every file has a name of its own, so that nothing is opened twice.
void MakeMedia(fs::path const& inFolder, int inCount, Content const& inContent)
{
	std::vector<short> samples(2 * kRate);
	for (int number = 0; number < inCount; ++number)
	{
		fs::path const path = inFolder / (std::to_string(number) + ".wav");
		if (number >= kRecordings)
		{
			fs::create_hard_link(inFolder / (std::to_string(number % kRecordings) + ".wav"), path);
			continue;
		}
		File const file = OpenForWriting(path, SF_FORMAT_PCM_16);
		for (int i = 0; i < 2 * kRate; ++i)
		{
			samples[static_cast<std::size_t>(i)] =
				static_cast<short>(std::lround(32767.0 * inContent.mSample(number, i)));
		}
		for (int second = 0; second < kSeconds; ++second)
		{
			sf_writef_short(file.get(), samples.data(), kRate);
		}
	}
}

Json MakeTime(double inValue)
{
	return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", inValue}, {"rate", kRate}};
}

Json MakeClip(int inTrack, int inClip, Case const& inCase)
{
	double const length = static_cast<double>(inCase.mFrames / inCase.mClips);
	Json clip = {{"OTIO_SCHEMA", "Clip.1"}, {"name", std::to_string(inClip)}};
	clip["source_range"] = {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", MakeTime(inClip * length)},
		{"duration", MakeTime(length)}};
	clip["media_reference"] = {
		{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", std::to_string(inTrack) + ".wav"}};
	return clip;
}

void MakeTimeline(fs::path const& inPath, Case const& inCase)
{
	Json tracks = Json::array();
	for (int track = 0; track < inCase.mTracks; ++track)
	{
		Json clips = Json::array();
		for (int clip = 0; clip < inCase.mClips; ++clip)
		{
			clips.push_back(MakeClip(track, clip, inCase));
		}
		tracks.push_back({{"OTIO_SCHEMA", "Track.1"}, {"name", std::to_string(track + 1)}, {"kind", "Audio"},
			{"metadata", {{"sonaro", {{"gain", kGainDecibels}, {"pan", kPan}}}}}, {"children", clips}});
	}
	Json const timeline = {{"OTIO_SCHEMA", "Timeline.1"}, {"name", "export"},
		{"tracks", {{"OTIO_SCHEMA", "Stack.1"}, {"name", "tracks"}, {"children", tracks}}}};
	std::ofstream(inPath) << timeline.dump();
}

double GetCPUSeconds()
{
	timespec time{};
	clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
	return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

template <class Work>
double Measure(Work const& inWork)
{
	double const begin = GetCPUSeconds();
	inWork();
	return GetCPUSeconds() - begin;
}

using SonaroHost::Measuring;

void Export(fs::path const& inTimeline, fs::path const& inOutput, Measuring inMeasuring, unsigned inJobs = 1)
{
	SonaroHost::Otio::TimelineRenderRequest request;
	request.mInput = inTimeline;
	request.mOutput = inOutput;
	request.mMeasuring = inMeasuring;
	request.mJobs = inJobs;
	SonaroHost::Otio::TimelineRenderJob(request).Run();
}

// With the clips flush, one file after the other is read from start to end.
void MixPlainly(fs::path const& inFolder, int inTracks, long long inFrames, fs::path const& inOutput)
{
	std::vector<File> files;
	for (int track = 0; track < inTracks; ++track)
	{
		files.push_back(OpenForReading(inFolder / (std::to_string(track) + ".wav")));
	}
	auto const gain = static_cast<float>(std::pow(10.0, kGainDecibels / 20.0));
	float const gains[2] = {gain, gain * static_cast<float>(1.0 + kPan)};
	File const output = OpenForWriting(inOutput, SF_FORMAT_FLOAT);
	std::vector<float> read(2 * kBlock);
	std::vector<float> mix(2 * kBlock);
	for (long long frame = 0; frame < inFrames; frame += kBlock)
	{
		auto const count = std::min<long long>(kBlock, inFrames - frame);
		std::fill(mix.begin(), mix.end(), 0.0f);
		for (File const& file : files)
		{
			sf_readf_float(file.get(), read.data(), count);
			for (int i = 0; i < 2 * count; i += 2)
			{
				mix[static_cast<std::size_t>(i)] += gains[0] * read[static_cast<std::size_t>(i)];
				mix[static_cast<std::size_t>(i) + 1] += gains[1] * read[static_cast<std::size_t>(i) + 1];
			}
		}
		sf_writef_float(output.get(), mix.data(), count);
	}
}

// All of them in turn, the best of several each: what else the machine does falls on all.
template <std::size_t kCount>
std::array<double, kCount> MeasureInTurn(std::array<std::function<void()>, kCount> const& inWork)
{
	constexpr int kRuns = 5;
	std::array<double, kCount> best;
	best.fill(1e9);
	for (int run = 0; run < kRuns; ++run)
	{
		for (std::size_t i = 0; i < kCount; ++i)
		{
			best[i] = std::min(best[i], Measure(inWork[i]));
		}
	}
	return best;
}

void CompareExports(fs::path const& inFolder)
{
	std::printf("%8s %8s %14s %14s %8s\n", "tracks", "clips", "export (s)", "plain loop (s)", "ratio");
	fs::path const timeline = inFolder / "edit.otio";
	for (Case const& test : {Case{8, 1}, Case{32, 1}, Case{128, 1}, Case{32, 60}})
	{
		MakeTimeline(timeline, test);
		auto const [plain, exported] = MeasureInTurn<2>(
			{[&] { MixPlainly(inFolder, test.mTracks, test.mFrames, inFolder / "plain.wav"); },
				[&] { Export(timeline, inFolder / "mix.wav", Measuring::kNothing); }});
		std::printf(
			"%8d %8d %14.2f %14.2f %8.2f\n", test.mTracks, test.mClips, exported, plain, exported / plain);
	}
}

// Quiet, with the mix's loudness and true peak, and with those of every track for a report.
void CompareMeters(fs::path const& inFolder, Content const& inContent)
{
	fs::path const timeline = inFolder / "edit.otio";
	Case const test{kMeteredTracks, 1, kMeteredFrames};
	MakeTimeline(timeline, test);
	auto const exportWith = [&](Measuring inMeasuring)
	{ return [&timeline, &inFolder, inMeasuring] { Export(timeline, inFolder / "mix.wav", inMeasuring); }; };
	auto const [plain, quiet, mix, tracks] =
		MeasureInTurn<4>({[&] { MixPlainly(inFolder, test.mTracks, test.mFrames, inFolder / "plain.wav"); },
			exportWith(Measuring::kNothing), exportWith(Measuring::kOutput), exportWith(Measuring::kTracks)});
	std::printf("%8s %14.2f %10.2f %10.2f %12.2f %12.2f %12.2f\n", inContent.mName, plain, quiet, mix, tracks,
		mix / quiet, tracks / quiet);
}

// The best of several by the clock; what others do on the machine falls on both.
void CompareJobs(fs::path const& inFolder)
{
	constexpr int kRuns = 5;
	unsigned const cores = std::max(std::thread::hardware_concurrency(), 1u);
	fs::path const timeline = inFolder / "edit.otio";
	MakeTimeline(timeline, {kMeteredTracks, 1});
	std::printf("\n%d tracks of %d s, 1 and %u threads\n%8s %12s %12s %8s %12s %12s %8s\n", kMeteredTracks,
		kSeconds, cores, "meters", "1, clock (s)", "all, clock", "ratio", "1, CPU (s)", "all, CPU", "ratio");
	for (auto const& test : {std::pair("none", Measuring::kNothing), std::pair("mix", Measuring::kOutput),
			 std::pair("tracks", Measuring::kTracks)})
	{
		struct Cost
		{
			double mClock = 1e9;
			double mCPU = 1e9;
		};
		Cost costs[2];
		for (int run = 0; run < 2 * kRuns; ++run)
		{
			auto const begin = std::chrono::steady_clock::now();
			unsigned const jobs = run % 2 == 0 ? 1 : cores;
			double const seconds =
				Measure([&] { Export(timeline, inFolder / "mix.wav", test.second, jobs); });
			Cost& cost = costs[run % 2];
			cost.mCPU = std::min(cost.mCPU, seconds);
			cost.mClock = std::min(
				cost.mClock, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
		}
		std::printf("%8s %12.2f %12.2f %8.2f %12.2f %12.2f %8.2f\n", test.first, costs[0].mClock,
			costs[1].mClock, costs[0].mClock / costs[1].mClock, costs[0].mCPU, costs[1].mCPU,
			costs[1].mCPU / costs[0].mCPU);
	}
}

} // namespace

int main()
{
	{
		Folder const folder;
		MakeMedia(folder.mPath, 128, kContents[0]);
		CompareExports(folder.mPath);
		CompareJobs(folder.mPath);
	}
	std::printf("\n%d tracks of %d s\n%8s %14s %10s %10s %12s %12s %12s\n", kMeteredTracks,
		static_cast<int>(kMeteredFrames / kRate), "content", "plain loop (s)", "quiet (s)", "mix (s)",
		"report (s)", "mix/quiet", "report/quiet");
	for (Content const& content : kContents)
	{
		Folder const folder;
		MakeMedia(folder.mPath, kMeteredTracks, content);
		CompareMeters(folder.mPath, content);
	}
	return 0;
}
