#pragma once

#include "SonaroHost/Playback/ClockedDevice.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace SonaroBenchmarks
{

// Hears a sound whose left channel counts its frames from 1 on, and whose right one is 1: so a fade is known as one, and
// a place as what it is. A converter's ripples beside a silence change both alike, so that their ratio stays the place.
class SoakDevice final : public SonaroHost::Playback::ClockedDevice
{
public:
	struct Counts
	{
		std::int64_t mFrames = 0;
		std::int64_t mSounding = 0;
		// Silences between sounds.
		std::uint64_t mGaps = 0;
		// Steps from one place to another without a fade: seams of loops, from their ends to their starts.
		std::uint64_t mSeams = 0;
		std::uint64_t mUnknownSeams = 0;
		// The last one of these.
		double mUnknownFrom = 0.0;
		double mUnknownTo = 0.0;
		// The place after the frame that was heard last, in full; whether there is silence since then.
		double mLast = 0.0;
		bool mIsSilent = true;
	};

	// inFrames: how long the sound is.
	SoakDevice(double inSpeed, double inFrames)
		: ClockedDevice(inSpeed),
		  mEnd(inFrames)
	{
	}
	~SoakDevice() override { Stop(); }

	// What is heard from then on begins anew.
	void Open(SonaroHost::Playback::DeviceFormat const& inFormat) override;

	Counts GetCounts() const;
	// A loop that may be gone round in from now on.
	void AddLoop(double inFirst, double inEnd);
	// What was done to the playback, for the line about an unknown seam.
	void NoteCommand(std::string const& inCommand);

private:
	void Take(float const* inSamples, unsigned inFrames) override;
	void TakeFrame(float inPlace, float inLevel);
	void TakeStep(double inPlace);
	// Whether a step may be what a converter makes of the silence beyond the sound's ends.
	bool IsAtAnEnd(double inLow, double inHigh) const;
	void PrintUnknownSeam(double inPlace) const;

	double mEnd;
	mutable std::mutex mMutex;
	Counts mCounts;
	bool mWasFull = false;
	bool mHasBegun = false;
	std::vector<std::pair<double, double>> mLoops;
	std::deque<std::string> mCommands;
};

} // namespace SonaroBenchmarks
