#pragma once

#include "Sonaro/Nonblocking.h"

namespace SN
{

// The laws that turn a position into gains, in single precision throughout. Linear gains; no state. Any
// thread. A position that is not a number gives gains that are none either.

struct StereoGains
{
	float mLeft = 1.0f;
	float mRight = 1.0f;
};

// The gains of one signal between two loudspeakers: equal power. inPan: 0 left, 0.5 middle, 1 right;
// with x = (pi / 2) * pan the gains are cos x and sin x.
StereoGains GetEqualPowerGains(float inPan) SONARO_NONBLOCKING;

// The gains of signals that have a side already: the side that is panned to keeps its level, the other one falls with
// the sine of its share, and both are 1 in the middle.
StereoGains GetSideKeepingGains(float inPan) SONARO_NONBLOCKING;

struct SurroundPosition
{
	// 0 left, 1 right.
	float mX = 0.0f;
	// 0 front, 1 rear.
	float mY = 0.0f;
	// The share, from 0 to 1, that the centre channel takes from left and right.
	float mCenter = 0.0f;
};

struct SurroundGains
{
	float mLeft = 0.0f;
	float mRight = 0.0f;
	float mCenter = 0.0f;
	float mLeftSurround = 0.0f;
	float mRightSurround = 0.0f;
};

// The gains of one signal in the field: pairs of equal power in front and in the rear.
SurroundGains GetMonoSurroundGains(SurroundPosition const& inPosition) SONARO_NONBLOCKING;

// The gains of a left and a right signal, each on its side of the field: pairs that keep their side.
SurroundGains GetStereoSurroundGains(SurroundPosition const& inPosition) SONARO_NONBLOCKING;

} // namespace SN
