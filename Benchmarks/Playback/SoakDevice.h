#pragma once

#include "SonaroHost/Playback/ClockedDevice.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace SonaroBenchmarks
{

// Hears a sound whose left channel counts its frames from 1 on, and whose right one is 1: so a fade is known as one, and
// a place as what it is.
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

	explicit SoakDevice(double inSpeed)
		: ClockedDevice(inSpeed)
	{
	}
	~SoakDevice() override { Stop(); }

	Counts GetCounts() const;
	// A loop that may be gone round in from now on.
	void AddLoop(double inFirst, double inEnd);

private:
	void Take(float const* inSamples, unsigned inFrames) override;
	void TakeFrame(float inPlace, float inLevel);
	void TakeStep(double inPlace);

	mutable std::mutex mMutex;
	Counts mCounts;
	bool mWasFull = false;
	bool mHasBegun = false;
	std::vector<std::pair<double, double>> mLoops;
};

} // namespace SonaroBenchmarks
