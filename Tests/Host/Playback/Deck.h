#pragma once

#include "SonaroHost/Playback/ClockedDevice.h"
#include "SonaroHost/Playback/Playback.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace SonaroHost::Playback::Testing
{

// Interleaved frames.
using Frames = std::vector<float>;

// Keeps what it gets; its clock is the test.
class CaptureDevice final : public ClockedDevice
{
public:
	CaptureDevice()
		: ClockedDevice(0.0)
	{
	}
	~CaptureDevice() override { Stop(); }

	Frames TakeCaptured() { return std::exchange(mCaptured, {}); }

private:
	void Take(float const* inSamples, unsigned inFrames) override
	{
		mCaptured.insert(mCaptured.end(), inSamples, inSamples + inFrames * GetFormat().mChannels);
	}

	Frames mCaptured;
};

// A playback whose device takes a block when the ring is filled, so that nothing depends on the machine's speed.
class Deck
{
public:
	// Blocks of 128, 5 ms ahead.
	explicit Deck(Programme const& inProgramme);

	Playback& operator*() { return mPlayback; }
	Playback* operator->() { return &mPlayback; }
	CaptureDevice& GetDevice() { return mDevice; }

	// The next frames that are heard.
	Frames Pull(std::int64_t inFrames);
	// Waits for nothing but commands.
	Frames PullLate(std::int64_t inFrames);
	// The frames that are heard until another programme has taken over.
	Frames TakeOver(Programme const& inProgramme);
	// Those that are heard while another thread works.
	Frames PullDuring(std::function<void()> const& inWork);
	// Stops, and lets go by what is left.
	void Rest();

private:
	CaptureDevice mDevice;
	Playback mPlayback;
};

// A programme in memory, at the length of its sequence or at another one.
Programme MakeProgramme(std::shared_ptr<Sequence::Description const> const& inDescription, int inSampleRate,
	std::int64_t inFrames = 0);
// A mono programme at 48000 Hz whose frame k is k + 1.
Programme MakeCountingProgramme(std::int64_t inFrames, float inGain = 1.0f);

// What a render of the whole programme writes.
Frames Export(Programme const& inProgramme);

} // namespace SonaroHost::Playback::Testing
