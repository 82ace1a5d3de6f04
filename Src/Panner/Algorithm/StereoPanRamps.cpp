#include "Panner/Algorithm/StereoPanRamps.h"

namespace SN
{

void StereoPanRamps::Init(FrameRate const& inFrameRate)
{
	mLeft = dsp::GainRamp(inFrameRate, 1.0f, kPannerRampSeconds);
	mRight = mLeft;
}

void StereoPanRamps::SetPan(float inPan)
{
	// Also for what is not a number, which differs from itself.
	if (inPan != mLastPan)
	{
		mLastPan = inPan;
		mGains = mLaw(inPan);
		mLeft.SetTargetGain(mGains.mLeft);
		mRight.SetTargetGain(mGains.mRight);
	}
}

void StereoPanRamps::Jump(FrameRate const& inFrameRate)
{
	mLeft = dsp::GainRamp(inFrameRate, mGains.mLeft, kPannerRampSecondsAfterJump);
	mRight = dsp::GainRamp(inFrameRate, mGains.mRight, kPannerRampSecondsAfterJump);
}

void StereoPanRamps::AdvanceWithoutProcessing(unsigned inFrames)
{
	mLeft.AdvanceWithoutProcessing(inFrames);
	mRight.AdvanceWithoutProcessing(inFrames);
}

} // namespace SN
