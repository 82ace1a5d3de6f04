#pragma once

namespace dsp::ambi
{

// Where a head is turned: by yaw about the vertical axis, then by pitch about the axis through its ears, then by roll
// about the axis through its nose. All 0 looks to the front.
struct EulerAngle
{
	// The order of the three turns. There is one, and every number stands for it.
	unsigned mConvention = 0;
	// Above 0: to the left, upwards, and with the right ear down.
	float mYaw = 0.0f;
	float mPitch = 0.0f;
	float mRoll = 0.0f;
	// Else in radians.
	bool mDegrees = true;
};

} // namespace dsp::ambi
