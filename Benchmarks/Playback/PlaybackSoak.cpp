#include "PlaybackSoak.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Render/AudioFileWriter.h"
#include "SonaroHost/Render/Programme.h"
#include "Vexilon/MediaManager.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

namespace SonaroBenchmarks
{

namespace
{

using namespace SonaroHost;
namespace Playing = SonaroHost::Playback;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kRate = 48000;
// All are exact as floats.
constexpr std::int64_t kFrames = 16'000'000;
constexpr std::uint64_t kSideTracks = 3;
// Nothing that is added to 1 can be heard.
constexpr float kInaudible = 1e-9f;

SN::TickTime ToTime(std::int64_t inFrames)
{
	return {inFrames, SN::FrameRate::FromSamplesPerSecond(kRate)};
}

double GetCachedMegabytes()
{
	return static_cast<double>(VX::GetMediaManager()->GetByteCount()) / 1048576.0;
}

// Of a part of the values: the middle one.
double FindMedian(std::vector<double> inValues)
{
	auto const middle = inValues.begin() + static_cast<std::ptrdiff_t>(inValues.size() / 2);
	std::nth_element(inValues.begin(), middle, inValues.end());
	return *middle;
}

std::int64_t CountEntries(char const* inFolder)
{
	std::filesystem::directory_iterator const entries(inFolder);
	return std::distance(begin(entries), end(entries));
}

} // namespace

Holdings Holdings::Count()
{
	Holdings holdings;
	std::ifstream status("/proc/self/status");
	for (std::string word; status >> word;)
	{
		if (word == "VmRSS:")
		{
			status >> holdings.mMegabytes;
			holdings.mMegabytes /= 1024.0;
		}
	}
	holdings.mCachedMegabytes = GetCachedMegabytes();
	holdings.mFiles = CountEntries("/proc/self/fd");
	holdings.mThreads = CountEntries("/proc/self/task");
	return holdings;
}

PlaybackSoak::PlaybackSoak(std::filesystem::path const& inFolder, double inSeconds, double inSpeed)
	: mFolder(inFolder),
	  mSeconds(inSeconds),
	  mSpeed(inSpeed),
	  mDevice(inSpeed, static_cast<double>(kFrames))
{
	std::filesystem::path const path = inFolder / "counting.wav";
	WriteSound(path);
	mSound = mMedia.Get(path, path);
}

void PlaybackSoak::WriteSound(std::filesystem::path const& inPath)
{
	constexpr unsigned kBlock = 16000;
	AudioFileWriter writer(inPath, OutputFormat{}, kRate, MakeLayoutOfChannels(2), kFrames);
	dsp::AudioBuffer block(2, kBlock);
	for (std::int64_t frame = 0; frame < kFrames; frame += kBlock)
	{
		for (unsigned i = 0; i < kBlock; ++i)
		{
			block.GetChannel(0)[i] = static_cast<float>(frame + i + 1);
			block.GetChannel(1)[i] = 1.0f;
		}
		block.NoteBufferWrite(0, kBlock);
		writer.Write(block);
	}
	writer.Finish();
}

Programme PlaybackSoak::MakeEdit()
{
	auto const description = std::make_shared<Sequence::Description>();
	description->mLayout = MakeLayoutOfChannels(2);
	for (std::uint64_t index = 0; index <= kSideTracks; ++index)
	{
		Sequence::Track& track = description->mTracks.emplace_back();
		track.mOrigin = std::string("/").append(std::to_string(index));
		track.mLayout = description->mLayout;
		for (std::int64_t first = 0; first < kFrames;)
		{
			std::int64_t const end =
				std::min<std::int64_t>(first + kRate + static_cast<std::int64_t>(Below(20 * kRate)), kFrames);
			Sequence::Item& item = track.mItems.emplace_back();
			item.mStart = ToTime(first);
			item.mEnd = ToTime(end);
			auto const shift = static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(kFrames)));
			item.mContent = Sequence::Clip{mSound, index == 0 ? first : shift, {}};
			first = end;
		}
		if (index > 0)
		{
			track.mChain.mStages.emplace_back(Sequence::Fader{
				AutomationParameter<float>::Create(kInaudible / static_cast<float>(kFrames)), {}});
		}
	}
	Programme programme;
	programme.mDescription = description;
	programme.mSampleRate = kRate;
	programme.mFrames = kFrames;
	programme.mMedia = std::shared_ptr<GraphMedia const>(&mMedia, [](GraphMedia const*) {});
	programme.mOpenForGraph = [this] { return mMedia.OpenForGraph(); };
	return programme;
}

bool PlaybackSoak::Run()
{
	// Threads that serve the whole process begin with the first playback.
	{
		auto const mixed = mMix.Prepare(MakeEdit());
		Playback first(mixed.GetProgramme(), mDevice);
		first.Play();
		Rest(0.5);
	}
	Holdings const before = Holdings::Count();
	{
		auto const mixed = mMix.Prepare(MakeEdit());
		mMix.Adopt(mixed);
		mPlayback = std::make_unique<Playback>(
			mixed.GetProgramme(), mDevice, Playing::PlaybackSettings{.mIsRealtime = false});
	}
	mPlayback->Play();
	PlayAtRandom();
	mPlayback->Stop();
	Rest(0.2);
	bool const isGood = Judge();
	mPlayback.reset();
	bool const isGivenBack = IsAllGivenBack(before, Holdings::Count());
	std::filesystem::remove(mFolder / "counting.wav");
	return isGood && isGivenBack;
}

void PlaybackSoak::PlayAtRandom()
{
	Clock::time_point const start = Clock::now();
	double const printing = std::max(std::min(60.0, mSeconds / 10.0), 1.0);
	for (double next = printing; Clock::now() - start < Seconds(mSeconds);)
	{
		Act();
		++mActions;
		Rest(0.01 * static_cast<double>(Below(100)) * std::min(1.0, 10.0 / mSpeed));
		double const passed = Seconds(Clock::now() - start).count();
		if (passed >= next)
		{
			Print(passed);
			next += printing;
		}
	}
}

void PlaybackSoak::Act()
{
	std::uint64_t const kind = Below(100);
	if (kind < 35)
	{
		Seek();
	}
	else if (kind < 45)
	{
		ChangeLoop();
	}
	else if (kind < 55)
	{
		ChangeSpeed();
	}
	else if (kind < 65)
	{
		Pause();
	}
	else if (kind < 75)
	{
		Edit();
	}
	else if (kind < 78)
	{
		Lose();
	}
	else if (kind < 82)
	{
		CheckPlace();
	}
	else if (kind < 86)
	{
		Purge();
	}
	else
	{
		ChangeMix();
	}
	// It has run to an end.
	if (!mPlayback->GetState().mIsPlaying)
	{
		++mBreaks;
		mDevice.NoteCommand("play");
		mPlayback->Play();
	}
}

void PlaybackSoak::SeekTo(std::int64_t inPlace)
{
	++mBreaks;
	mDevice.NoteCommand("seek " + std::to_string(inPlace));
	mPlayback->Seek(inPlace);
}

void PlaybackSoak::Seek()
{
	SeekTo(static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(kFrames))));
	if (Below(8) == 0)
	{
		mBreaks += 2;
		auto const place = static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(kFrames)));
		mDevice.NoteCommand("scrub " + std::to_string(place));
		mPlayback->Scrub(place);
		mPlayback->Play();
	}
}

void PlaybackSoak::ChangeLoop()
{
	if (Below(3) == 0)
	{
		mDevice.NoteCommand("no loop");
		mPlayback->SetLoop(std::nullopt);
		return;
	}
	ProgrammeRange loop;
	loop.mFirstFrame = static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(kFrames - 2 * kRate)));
	loop.mFrames = 1 + static_cast<std::int64_t>(Below(2 * kRate));
	mDevice.AddLoop(
		static_cast<double>(loop.mFirstFrame), static_cast<double>(loop.mFirstFrame + loop.mFrames));
	mDevice.NoteCommand("loop " + std::to_string(loop.mFirstFrame) + " for " + std::to_string(loop.mFrames));
	mPlayback->SetLoop(loop);
	SeekTo(loop.mFirstFrame);
}

void PlaybackSoak::ChangeSpeed()
{
	constexpr double kSpeeds[] = {1.0, 1.0, 1.0, -1.0, 0.5, 2.0, -2.0, 1.5, 4.0, -4.0};
	mPlaySpeed = kSpeeds[Below(std::size(kSpeeds))];
	++mBreaks;
	mDevice.NoteCommand("speed " + std::to_string(mPlaySpeed));
	mPlayback->SetSpeed(mPlaySpeed);
}

void PlaybackSoak::Pause()
{
	++mBreaks;
	mDevice.NoteCommand("pause");
	mPlayback->Stop();
	Rest(0.01 * static_cast<double>(Below(3)));
	mPlayback->Play();
}

void PlaybackSoak::Edit()
{
	++mEdits;
	mDevice.NoteCommand("edit");
	auto const mixed = mMix.Prepare(MakeEdit());
	mPlayback->TakeOver(mixed.GetProgramme());
	mMix.Adopt(mixed);
}

void PlaybackSoak::Lose()
{
	++mLosses;
	++mBreaks;
	mDevice.NoteCommand("loss");
	mDevice.Lose();
	mHangs += AwaitState([](auto const& inState) { return !inState.mIsPlaying; }) ? 0 : 1;
	mPlayback->Play();
	mHangs += AwaitState([](auto const& inState) { return inState.mFailure.empty(); }) ? 0 : 1;
}

void PlaybackSoak::ChangeMix()
{
	std::size_t const track = 1 + Below(kSideTracks);
	mMix.SetGain(track, static_cast<float>(Below(100)) / 100.0f);
	mMix.SetMute(track, Below(2) == 0);
}

void PlaybackSoak::Purge()
{
	auto const manager = VX::GetMediaManager();
	unsigned long long const budget = manager->GetByteBudget();
	double const before = GetCachedMegabytes();
	mDevice.NoteCommand("purge");
	manager->SetByteBudget(0);
	mPurgedMegabytes += before - GetCachedMegabytes();
	manager->SetByteBudget(budget);
	++mPurges;
}

void PlaybackSoak::CheckPlace()
{
	mDevice.NoteCommand("check, no loop, speed 1");
	mPlayback->SetLoop(std::nullopt);
	mPlayback->SetSpeed(mPlaySpeed = 1.0);
	SeekTo(static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(kFrames / 2))));
	mPlayback->Play();
	std::int64_t const before = mDevice.GetCounts().mSounding;
	std::uint64_t const misses = mPlayback->GetState().mMisses;
	for (unsigned i = 0; i < 500 && mDevice.GetCounts().mSounding - before < kRate; ++i)
	{
		Rest(0.01);
	}
	++mBreaks;
	mPlayback->Stop();
	mPlayback->WaitUntilFilled(std::chrono::seconds(5));
	for (unsigned i = 0; i < 500 && !mDevice.GetCounts().mIsSilent; ++i)
	{
		Rest(0.01);
	}
	Rest(0.02);
	if (mPlayback->GetState().mMisses == misses)
	{
		++mPlaces;
		mWrongPlaces +=
			static_cast<double>(mPlayback->GetState().mFrame) == mDevice.GetCounts().mLast ? 0 : 1;
	}
	mPlayback->Play();
}

void PlaybackSoak::Rest(double inSeconds) const
{
	std::this_thread::sleep_for(Seconds(inSeconds));
}

bool PlaybackSoak::AwaitState(std::function<bool(Playing::PlaybackState const&)> const& inIs) const
{
	for (unsigned i = 0; i < 2000; ++i)
	{
		if (inIs(mPlayback->GetState()))
		{
			return true;
		}
		Rest(0.005);
	}
	return false;
}

void PlaybackSoak::Print(double inPassed)
{
	mNow = Holdings::Count();
	mAtFirst = mAtFirst ? mAtFirst : mNow;
	mMegabytes.push_back(mNow.mMegabytes);
	SoakDevice::Counts const counts = mDevice.GetCounts();
	std::printf("%4.0f s: %.2f hours played, %llu actions, %llu misses, %llu gaps of %llu breaks, %.1f MB, "
				"%lld files, "
				"%lld threads\n",
		inPassed, static_cast<double>(counts.mFrames) / kRate / 3600.0,
		static_cast<unsigned long long>(mActions),
		static_cast<unsigned long long>(mPlayback->GetState().mMisses),
		static_cast<unsigned long long>(counts.mGaps), static_cast<unsigned long long>(mBreaks),
		mNow.mMegabytes, static_cast<long long>(mNow.mFiles), static_cast<long long>(mNow.mThreads));
	std::fflush(stdout);
}

bool PlaybackSoak::IsMemoryFlat() const
{
	constexpr double kMargin = 16.0;
	constexpr double kShortest = 300.0;
	std::size_t const quarter = mMegabytes.size() / 4;
	// The caches are not full yet.
	if (quarter == 0 || mSeconds < kShortest)
	{
		return true;
	}
	auto const begin = mMegabytes.begin() + static_cast<std::ptrdiff_t>(quarter);
	double const early = FindMedian({begin, begin + static_cast<std::ptrdiff_t>(quarter)});
	double const late =
		FindMedian({mMegabytes.end() - static_cast<std::ptrdiff_t>(quarter), mMegabytes.end()});
	return late <= 1.1 * early + kMargin;
}

bool PlaybackSoak::IsAllGivenBack(Holdings const& inBefore, Holdings const& inAfter)
{
	std::printf("before and after: %lld and %lld files, %lld and %lld threads, %.1f and %.1f MB\n",
		static_cast<long long>(inBefore.mFiles), static_cast<long long>(inAfter.mFiles),
		static_cast<long long>(inBefore.mThreads), static_cast<long long>(inAfter.mThreads),
		inBefore.mMegabytes, inAfter.mMegabytes);
	return inAfter.mFiles <= inBefore.mFiles && inAfter.mThreads <= inBefore.mThreads;
}

bool PlaybackSoak::Judge() const
{
	SoakDevice::Counts const counts = mDevice.GetCounts();
	std::uint64_t const misses = mPlayback->GetState().mMisses;
	std::uint64_t const allowed = mBreaks + misses;
	std::uint64_t const unreported = counts.mGaps - std::min(counts.mGaps, allowed);
	double const growth = mAtFirst ? mNow.mMegabytes - mAtFirst->mMegabytes : 0.0;
	bool const isFlat =
		!mAtFirst || (mNow.mFiles <= mAtFirst->mFiles + 2 && mNow.mThreads <= mAtFirst->mThreads + 1);
	std::printf(
		"soak: %.2f hours, %llu actions, %llu edits, %llu losses, %llu purges of %.0f MB, %llu seams of "
		"loops "
		"(%llu unknown), %llu places checked (%llu wrong), %llu misses reported, %llu frames unread, %llu "
		"gaps of %llu breaks, "
		"%llu misses unreported, %llu hangs, %+.1f MB since the first count%s\n",
		static_cast<double>(counts.mFrames) / kRate / 3600.0, static_cast<unsigned long long>(mActions),
		static_cast<unsigned long long>(mEdits), static_cast<unsigned long long>(mLosses),
		static_cast<unsigned long long>(mPurges), mPurgedMegabytes,
		static_cast<unsigned long long>(counts.mSeams), static_cast<unsigned long long>(counts.mUnknownSeams),
		static_cast<unsigned long long>(mPlaces), static_cast<unsigned long long>(mWrongPlaces),
		static_cast<unsigned long long>(misses),
		static_cast<unsigned long long>(mPlayback->GetState().mUnreadFrames),
		static_cast<unsigned long long>(counts.mGaps), static_cast<unsigned long long>(mBreaks),
		static_cast<unsigned long long>(unreported), static_cast<unsigned long long>(mHangs), growth,
		IsMemoryFlat() ? "" : ", memory grows");
	if (counts.mUnknownSeams > 0)
	{
		std::printf(
			"the last unknown seam leads from %.1f to %.1f\n", counts.mUnknownFrom, counts.mUnknownTo);
	}
	return unreported == 0 && isFlat && IsMemoryFlat() && counts.mUnknownSeams == 0 && mWrongPlaces == 0 &&
		   mHangs == 0;
}

} // namespace SonaroBenchmarks
