#include "Panner/Algorithm/PanLaw.h"

#include "Vexilon/Constants.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace SN
{

namespace
{

using VX::kPi;

constexpr float kHalfPi = 0.5f * kPi;

// What both surround laws share.
struct SurroundShares
{
	explicit SurroundShares(SurroundPosition const& inPosition)
		: mFront(zorvcore::math::Cos(kHalfPi * inPosition.mY)),
		  mRear(zorvcore::math::Sin(kHalfPi * inPosition.mY)),
		  mCenter(zorvcore::math::Sin(kHalfPi * inPosition.mCenter)),
		  mSides(zorvcore::math::Cos(kHalfPi * inPosition.mCenter)),
		  mFarLeft(std::max(0.0f, 1.0f - 2.0f * inPosition.mX)),
		  mFarRight(std::max(0.0f, 1.0f - 2.0f * (1.0f - inPosition.mX))),
		  mTowardsMiddle(inPosition.mX > 0.5f ? zorvcore::math::Cos((inPosition.mX - 0.5f) * kPi)
											  : zorvcore::math::Sin(inPosition.mX * kPi))
	{
	}

	// The gain of left or right. inShare: its share of the signal by X; inFar: what of it lies beyond the
	// middle of its half, which the centre channel cannot take.
	float GetSide(float inShare, float inFar) const
	{
		return zorvcore::math::Sin(kHalfPi * ((inShare - inFar) * mSides + inFar)) * mFront;
	}
	float GetCenter() const { return mTowardsMiddle * mFront * mCenter; }

	float mFront;
	float mRear;
	float mCenter;
	float mSides;
	float mFarLeft;
	float mFarRight;
	// 0 at both ends of X, 1 in the middle.
	float mTowardsMiddle;
};

} // namespace

StereoGains GetEqualPowerGains(float inPan)
{
	float const angle = (kPi + kPi) * 0.25f * inPan;
	return {zorvcore::math::Cos(angle), zorvcore::math::Sin(angle)};
}

StereoGains GetSideKeepingGains(float inPan)
{
	constexpr float kAngle = (kPi + kPi) * 0.5f;
	if (inPan == 0.5f)
	{
		return {1.0f, 1.0f};
	}
	if (inPan < 0.5f)
	{
		return {1.0f, zorvcore::math::Sin(kAngle * inPan)};
	}
	return {zorvcore::math::Sin(kAngle * (1.0f - inPan)), 1.0f};
}

SurroundGains GetMonoSurroundGains(SurroundPosition const& inPosition)
{
	SurroundShares const shares(inPosition);
	float const x = inPosition.mX;
	return {
		.mLeft = shares.GetSide(1.0f - x, shares.mFarLeft),
		.mRight = shares.GetSide(x, shares.mFarRight),
		.mCenter = shares.GetCenter(),
		.mLeftSurround = zorvcore::math::Cos(kHalfPi * x) * shares.mRear,
		.mRightSurround = zorvcore::math::Sin(kHalfPi * x) * shares.mRear,
	};
}

SurroundGains GetStereoSurroundGains(SurroundPosition const& inPosition)
{
	SurroundShares const shares(inPosition);
	float const x = inPosition.mX;
	float const fading = shares.mTowardsMiddle * shares.mRear;
	return {
		.mLeft = shares.GetSide(std::min(1.0f, 2.0f * (1.0f - x)), shares.mFarLeft),
		.mRight = shares.GetSide(std::min(1.0f, 2.0f * x), shares.mFarRight),
		.mCenter = shares.GetCenter(),
		.mLeftSurround = x > 0.5f ? fading : shares.mRear,
		.mRightSurround = x > 0.5f ? shares.mRear : fading,
	};
}

} // namespace SN
