#pragma once

#include "SonaroHost/Playback/ClockedDevice.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace SonaroBenchmarks
{

// Frames of two channels.
struct Frame
{
	float mLeft = 0.0f;
	float mRight = 0.0f;

	bool operator==(Frame const&) const = default;
	bool IsSilent() const { return *this == Frame{}; }
	Frame operator*(float inGain) const { return {mLeft * inGain, mRight * inGain}; }
	Frame operator+(Frame const& inOther) const { return {mLeft + inOther.mLeft, mRight + inOther.mRight}; }
};
using Frames = std::vector<Frame>;

// A sound file of two channels.
Frames ReadFrames(std::filesystem::path const& inPath);

// Keeps all that it is given, up to a number of frames, and when it was given sound first.
class RecordingDevice final : public SonaroHost::Playback::ClockedDevice
{
public:
	RecordingDevice(double inSpeed, std::size_t inMostFrames)
		: ClockedDevice(inSpeed),
		  mFrames(inMostFrames)
	{
	}
	~RecordingDevice() override { Stop(); }

	// While it is stopped.
	Frames TakeFrames();

	// The next block of sound is the first one.
	void Await() { mIsSound = false; }
	bool HasSound() const { return mIsSound; }
	// When it asked for that block.
	std::chrono::steady_clock::time_point GetSoundTime() const { return mSoundTime; }

private:
	void Take(float const* inSamples, unsigned inFrames) override;

	Frames mFrames;
	std::size_t mCount = 0;
	std::atomic<bool> mIsSound{true};
	std::chrono::steady_clock::time_point mSoundTime;
};

// From where a playback went on, and in which loop; an empty one for none.
struct Start
{
	std::int64_t mPlace = 0;
	std::int64_t mLoopFirst = 0;
	std::int64_t mLoopEnd = 0;
};

struct Comparison
{
	std::int64_t mCompared = 0;
	std::int64_t mSilent = 0;
	std::int64_t mFaded = 0;
	// Frames that are none of what they may be, and starts that were not found.
	std::int64_t mWrong = 0;
};

// Holds what was heard against an export: from each start on its frames, then as many as fade out over 2 ms, then
// silence. Where frames came late, they faded out, and in again.
Comparison CompareStarts(Frames const& inHeard, Frames const& inExport, std::vector<Start> const& inStarts);

// The same of one start that goes on to the end of what was heard.
Comparison CompareLate(Frames const& inHeard, Frames const& inExport, std::int64_t inPlace);

} // namespace SonaroBenchmarks
