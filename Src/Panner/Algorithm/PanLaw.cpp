#include "Panner/Algorithm/PanLaw.h"

#include "Vexilon/Constants.h"

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
		: mFront(std::cos(kHalfPi * inPosition.mY)),
		  mRear(std::sin(kHalfPi * inPosition.mY)),
		  mCenter(std::sin(kHalfPi * inPosition.mCenter)),
		  mSides(std::cos(kHalfPi * inPosition.mCenter)),
		  mFarLeft(std::max(0.0f, 1.0f - 2.0f * inPosition.mX)),
		  mFarRight(std::max(0.0f, 1.0f - 2.0f * (1.0f - inPosition.mX))),
		  mTowardsMiddle(
			  inPosition.mX > 0.5f ? std::cos((inPosition.mX - 0.5f) * kPi) : std::sin(inPosition.mX * kPi))
	{
	}

	// The gain of left or right. inShare: its share of the signal by X; inFar: what of it lies beyond the
	// middle of its half, which the centre channel cannot take.
	float GetSide(float inShare, float inFar) const
	{
		return std::sin(kHalfPi * ((inShare - inFar) * mSides + inFar)) * mFront;
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
	return {std::cos(angle), std::sin(angle)};
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
		return {1.0f, std::sin(kAngle * inPan)};
	}
	return {std::sin(kAngle * (1.0f - inPan)), 1.0f};
}

SurroundGains GetMonoSurroundGains(SurroundPosition const& inPosition)
{
	SurroundShares const shares(inPosition);
	float const x = inPosition.mX;
	return {
		.mLeft = shares.GetSide(1.0f - x, shares.mFarLeft),
		.mRight = shares.GetSide(x, shares.mFarRight),
		.mCenter = shares.GetCenter(),
		.mLeftSurround = std::cos(kHalfPi * x) * shares.mRear,
		.mRightSurround = std::sin(kHalfPi * x) * shares.mRear,
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
