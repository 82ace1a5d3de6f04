// Trials of playback that take minutes, each with a line of counts at its end; Scripts/soak-playback.sh makes what they
// need. The exit code is 0 when all is as it should be.
//
//   playback_trials exact TIMELINE EXPORT SECONDS SEEKS   what a device gets against an export, with seeks and loops
//   playback_trials disk TIMELINE EXPORT SECONDS          the same on a disk that becomes ten times as slow
//   playback_trials first TIMELINE TIMES                  how long it takes until something is heard
//   playback_trials soak FOLDER SECONDS SPEED             everything at random, on a clock that is so many times as fast

#include "MissWatch.h"
#include "PlaybackSoak.h"
#include "Recording.h"
#include "SlowReads.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Playback/Playback.h"
#include "SonaroHost/Render/TimelineProgramme.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>

namespace SonaroBenchmarks
{

namespace
{

using namespace SonaroHost;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
namespace Playing = SonaroHost::Playback;

constexpr int kRate = 48000;
Playing::PlaybackSettings const kTight{.mAheadSeconds = 0.005, .mDeviceBlockFrames = 128, .mMeters = {}};

// A timeline, ready to be played.
struct Input
{
	explicit Input(std::string const& inPath)
		: mInput(inPath),
		  mSequence(mInput.MakeSequence(MakeOptions())),
		  mProgramme(Otio::MakeProgramme(mSequence, mInput.GetMedia()))
	{
	}

	static Otio::TimelineOptions MakeOptions()
	{
		Otio::TimelineOptions options;
		options.mSampleRate = kRate;
		options.mLayout = MakeLayoutOfChannels(2);
		return options;
	}

	Otio::TimelineInput mInput;
	Otio::TimelineSequence mSequence;
	Programme mProgramme;
};

bool Report(char const* inName, Comparison const& inResult, Playing::PlaybackState const& inState)
{
	std::printf(
		"%s: %lld frames are those of the export, %lld wrong, %lld in fades, %lld silent; %llu misses, "
		"%llu frames missed, %llu frames unread\n",
		inName, static_cast<long long>(inResult.mCompared), static_cast<long long>(inResult.mWrong),
		static_cast<long long>(inResult.mFaded), static_cast<long long>(inResult.mSilent),
		static_cast<unsigned long long>(inState.mMisses),
		static_cast<unsigned long long>(inState.mMissedFrames),
		static_cast<unsigned long long>(inState.mUnreadFrames));
	return inResult.mWrong == 0;
}

// Every tenth seek comes with another loop, or with none.
Start SeekAtRandom(Playing::Playback& ioPlayback, Start const& inBefore, std::mt19937& ioRandom)
{
	auto const frames = static_cast<std::uint64_t>(ioPlayback.GetState().mFrames);
	auto const pick = [&](std::uint64_t inEnd) { return static_cast<std::int64_t>(ioRandom() % inEnd); };
	Start next{pick(frames - 10 * kRate), inBefore.mLoopFirst, inBefore.mLoopEnd};
	bool const isNewLoop = pick(10) == 0;
	if (isNewLoop)
	{
		ioPlayback.Stop();
		bool const isLoop = pick(3) != 0;
		next.mLoopFirst = isLoop ? next.mPlace + pick(kRate / 4) : 0;
		next.mLoopEnd = isLoop ? next.mLoopFirst + 1 + pick(kRate / 2) : 0;
		ioPlayback.SetLoop(
			isLoop ? std::optional(ProgrammeRange{next.mLoopFirst, next.mLoopEnd - next.mLoopFirst})
				   : std::nullopt);
	}
	ioPlayback.Seek(next.mPlace);
	if (isNewLoop)
	{
		ioPlayback.Play();
	}
	return next;
}

bool RunExact(std::string const& inTimeline, std::string const& inExport, double inSeconds, unsigned inSeeks)
{
	Frames const whole = ReadFrames(inExport);
	Input const input(inTimeline);
	RecordingDevice device(1.0, static_cast<std::size_t>((inSeconds + 60.0) * kRate));
	std::vector<Start> starts{{}};
	std::mt19937 random(1);
	std::optional<Playing::PlaybackState> state;
	{
		Playing::Playback playback(input.mProgramme, device, kTight);
		MissWatch watch(playback);
		playback.Play();
		double const pause = inSeconds / (inSeeks + 1.0);
		std::uniform_real_distribution<double> length(0.5 * pause, 1.5 * pause);
		for (unsigned i = 0; i < inSeeks; ++i)
		{
			watch.Pause(length(random));
			starts.push_back(SeekAtRandom(playback, starts.back(), random));
		}
		watch.Pause(pause);
		watch.Report();
		playback.Stop();
		std::this_thread::sleep_for(Seconds(0.2));
		state = playback.GetState();
	}
	Comparison const result = CompareStarts(device.TakeFrames(), whole, starts);
	std::string const name = "exact, " + std::to_string(inSeeks) + " seeks";
	return Report(name.c_str(), result, *state) && state->mMisses == 0;
}

bool RunDisk(std::string const& inTimeline, std::string const& inExport, double inSeconds)
{
	Frames const whole = ReadFrames(inExport);
	Input const input(inTimeline);
	RecordingDevice device(1.0, static_cast<std::size_t>((4.0 * inSeconds + 60.0) * kRate));
	Playing::Playback playback(input.mProgramme, device, {.mAheadSeconds = 0.05});
	std::uint64_t misses = 0;
	std::uint64_t worst = 0;
	auto const play = [&](char const* inName, double inBandwidth)
	{
		SlowReads::SetBandwidth(inBandwidth);
		std::int64_t const bytes = SlowReads::CountBytes();
		std::this_thread::sleep_for(Seconds(inSeconds));
		std::uint64_t const before = misses;
		misses = playback.GetState().mMisses;
		double const rate = static_cast<double>(SlowReads::CountBytes() - bytes) / inSeconds;
		std::printf("disk %s: %.2f MB/s read, %llu misses, %s\n", inName, rate * 1e-6,
			static_cast<unsigned long long>(misses - before),
			playback.GetState().mIsPlaying ? "playing" : playback.GetState().mFailure.c_str());
		std::fflush(stdout);
		worst = std::max(worst, misses - before);
		return rate;
	};
	playback.Play();
	double const enough = 3.0 * play("as it is", 0.0);
	play("at three times what is needed", enough);
	play("ten times slower", enough / 10.0);
	play("as before", enough);
	std::uint64_t const recovered = misses;
	play("and on", enough);
	playback.Stop();
	std::this_thread::sleep_for(Seconds(0.2));
	Playing::PlaybackState const state = playback.GetState();
	device.Stop();
	return Report("disk", CompareLate(device.TakeFrames(), whole, 0), state) && worst > 0 &&
		   misses == recovered;
}

// In milliseconds.
double AwaitSound(RecordingDevice& ioDevice, Clock::time_point inStart)
{
	while (!ioDevice.HasSound() && Clock::now() - inStart < Seconds(10.0))
	{
		std::this_thread::sleep_for(Seconds(0.0005));
	}
	return Seconds(ioDevice.GetSoundTime() - inStart).count() * 1000.0;
}

bool RunFirst(std::string const& inTimeline, unsigned inTimes)
{
	Clock::time_point const opening = Clock::now();
	Input const input(inTimeline);
	double const read = Seconds(Clock::now() - opening).count() * 1000.0;
	RecordingDevice device(1.0, 0);
	Playing::Playback playback(input.mProgramme, device, {});
	double const made = Seconds(Clock::now() - opening).count() * 1000.0;
	device.Await();
	std::mt19937_64 random(1);
	auto const pick = [&]
	{
		return static_cast<std::int64_t>(
			random() % static_cast<std::uint64_t>(input.mProgramme.mFrames - kRate));
	};
	playback.Seek(pick());
	playback.Play();
	double const opened = AwaitSound(device, opening);
	std::printf("first sound: timeline read after %.0f ms, graph made after %.0f ms, sound after %.0f ms\n",
		read, made, opened);
	std::vector<double> times;
	for (unsigned i = 0; i < inTimes; ++i)
	{
		playback.Stop();
		std::this_thread::sleep_for(Seconds(0.2));
		device.Await();
		Clock::time_point const start = Clock::now();
		playback.Seek(pick());
		playback.Play();
		times.push_back(AwaitSound(device, start));
	}
	std::ranges::sort(times);
	std::printf(
		"first sound of %u plays at random places: median %.1f ms, nine tenths within %.1f ms, last %.1f ms; "
		"%llu misses\n",
		inTimes, times[times.size() / 2], times[times.size() * 9 / 10], times.back(),
		static_cast<unsigned long long>(playback.GetState().mMisses));
	return times.back() < 10000.0;
}

bool Run(std::vector<std::string> const& inWords)
{
	std::string const mode = inWords.empty() ? "" : inWords[0];
	if (mode == "exact" && inWords.size() == 5)
	{
		return RunExact(
			inWords[1], inWords[2], std::stod(inWords[3]), static_cast<unsigned>(std::stoul(inWords[4])));
	}
	if (mode == "disk" && inWords.size() == 4)
	{
		return RunDisk(inWords[1], inWords[2], std::stod(inWords[3]));
	}
	if (mode == "first" && inWords.size() == 3)
	{
		return RunFirst(inWords[1], static_cast<unsigned>(std::stoul(inWords[2])));
	}
	if (mode == "soak" && inWords.size() == 4)
	{
		return PlaybackSoak(inWords[1], std::stod(inWords[2]), std::stod(inWords[3])).Run();
	}
	std::fprintf(stderr, "the first lines of PlaybackTrials.cpp say how to use this\n");
	return false;
}

} // namespace

} // namespace SonaroBenchmarks

int main(int inCount, char** inWords)
{
	try
	{
		return SonaroBenchmarks::Run({inWords + 1, inWords + inCount}) ? EXIT_SUCCESS : EXIT_FAILURE;
	}
	catch (std::exception const& error)
	{
		std::fprintf(stderr, "%s\n", error.what());
		return EXIT_FAILURE;
	}
}
