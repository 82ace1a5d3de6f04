// Exporting whole timelines from files, beside a plain loop that decodes the same files, multiplies and adds. One
// thread, CPU time of the process. Makes its media, 16-bit stereo at 48 kHz, in a temporary folder, prints a table
// and clears up.

#include "SonaroHost/Otio/TimelineRenderJob.h"
#include "nlohmann/json.hpp"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr int kRate = 48000;
constexpr int kSeconds = 120;
constexpr long long kFrames = static_cast<long long>(kRate) * kSeconds;
constexpr int kBlock = 2048;
// Of real content; tracks beyond read one of these by another name.
constexpr int kRecordings = 8;
constexpr double kGainDecibels = -12.0;
constexpr double kPan = -0.4;

struct Case
{
	int mTracks;
	int mClips;
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

// Noise; every file has a name of its own, so that nothing is opened twice.
void MakeMedia(fs::path const& inFolder, int inCount)
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
		for (std::size_t i = 0; i < samples.size(); ++i)
		{
			samples[i] =
				static_cast<short>((i + 1) * (2654435761u + static_cast<unsigned>(number)) >> 16 & 0x3fff);
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

Json MakeClip(int inTrack, int inClip, int inClips)
{
	double const length = static_cast<double>(kFrames / inClips);
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
			clips.push_back(MakeClip(track, clip, inCase.mClips));
		}
		tracks.push_back(
			{{"OTIO_SCHEMA", "Track.1"}, {"name", std::to_string(track + 1)}, {"kind", "Audio"},
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

void Export(fs::path const& inTimeline, fs::path const& inOutput)
{
	SonaroHost::Otio::TimelineRenderRequest request;
	request.mInput = inTimeline;
	request.mOutput = inOutput;
	SonaroHost::Otio::TimelineRenderJob(request).Run();
}

// With the clips flush, one file after the other is read from start to end.
void MixPlainly(fs::path const& inFolder, int inTracks, fs::path const& inOutput)
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
	for (long long frame = 0; frame < kFrames; frame += kBlock)
	{
		auto const count = std::min<long long>(kBlock, kFrames - frame);
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

} // namespace

int main()
{
	Folder const folder;
	MakeMedia(folder.mPath, 128);
	std::printf("%8s %8s %14s %14s %8s\n", "tracks", "clips", "export (s)", "plain loop (s)", "ratio");
	for (Case const& test : {Case{8, 1}, Case{32, 1}, Case{128, 1}, Case{32, 60}})
	{
		fs::path const timeline = folder.mPath / "edit.otio";
		MakeTimeline(timeline, test);
		// Both in turn, the better of three each: what else the machine does falls on both.
		double exported = 1e9;
		double plain = 1e9;
		for (int run = 0; run < 3; ++run)
		{
			plain = std::min(
				plain, Measure([&] { MixPlainly(folder.mPath, test.mTracks, folder.mPath / "plain.wav"); }));
			exported = std::min(exported, Measure([&] { Export(timeline, folder.mPath / "mix.wav"); }));
		}
		std::printf(
			"%8d %8d %14.2f %14.2f %8.2f\n", test.mTracks, test.mClips, exported, plain, exported / plain);
	}
	return 0;
}
