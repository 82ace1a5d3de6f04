#pragma once

#include "Panner/Algorithm/PanLaw.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/GainRamp.h"

namespace SN
{

// How long a gain takes to its new value, in seconds: as built, and since the last jump of the playhead.
inline constexpr float kPannerRampSeconds = 0.005f;
inline constexpr float kPannerRampSecondsAfterJump = 0.015f;

// The two gains of a panner with one control, each moved by a ramp.
class StereoPanRamps
{
public:
	using Law = StereoGains (*)(float inPan);

	// inLaw: GetEqualPowerGains or GetSideKeepingGains.
	explicit StereoPanRamps(Law inLaw)
		: mLaw(inLaw)
	{
	}

	// Makes ramps for that rate; the gains are those of no pan yet.
	void Init(FrameRate const& inFrameRate);

	// Works out new gains when the pan is another one and moves towards them.
	void SetPan(float inPan) SONARO_NONBLOCKING;
	// Stands at the gains of the pan at once.
	void Jump(FrameRate const& inFrameRate) SONARO_NONBLOCKING;
	void AdvanceWithoutProcessing(unsigned inFrames) SONARO_NONBLOCKING;

	dsp::GainRamp& GetLeft() { return mLeft; }
	dsp::GainRamp& GetRight() { return mRight; }

private:
	Law mLaw;
	// The start value is out of range, so that the first pan is another one.
	float mLastPan = -1.0f;
	StereoGains mGains;
	dsp::GainRamp mLeft{48000.0f, 1.0f, kPannerRampSeconds};
	dsp::GainRamp mRight{48000.0f, 1.0f, kPannerRampSeconds};
};

} // namespace SN
