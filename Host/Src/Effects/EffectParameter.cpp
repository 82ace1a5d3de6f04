#include "EffectParameter.h"

#include "SonaroHost/Base/HostError.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost::Effects
{

ParameterRange ParameterRange::Make(Control const& inControl, double inSampleRate)
{
	auto const scale = static_cast<float>(inControl.mCountsInRate ? inSampleRate : 1.0);
	bool const isWhole = inControl.mIsInteger || inControl.mIsToggled;
	return {inControl.mMinimum * scale, inControl.mMaximum * scale, isWhole};
}

float ParameterRange::Limit(double inValue) const
{
	double const whole = mIsInteger ? std::nearbyint(inValue) : inValue;
	return std::clamp(static_cast<float>(whole), mMinimum, mMaximum);
}

EffectParameter::EffectParameter(Control inControl, ParameterMoves inMoves, ParameterRange const& inRange)
	: mControl(std::move(inControl)),
	  mMoves(std::move(inMoves)),
	  mRange(inRange)
{
}

SN::InterfaceRef<SN::IRenderableAudioComponentParam> EffectParameter::CloneAndDetach(bool)
{
	return zorvcore::classref::MakeObject<EffectParameter>(mControl, mMoves, mRange);
}

void EffectParameter::UpdateControl(
	SN::TickTime const& inTime, VX::KeyframeCacheBase*, VX::KeyframeBase* outKeyframe)
{
	auto& keyframe = static_cast<VX::Keyframe<float>&>(*outKeyframe);
	keyframe.mTime = inTime;
	NoteMove(inTime);
	keyframe.mValue = Approach(GetTarget(inTime), inTime);
	if (keyframe.mValue != mControl->GetValue())
	{
		mControl->SetValue(keyframe.mValue);
	}
}

float EffectParameter::GetTarget(SN::TickTime const& inTime) const
{
	if (mHeld)
	{
		return mRange.Limit(static_cast<double>(*mHeld));
	}
	if (mMoves.mCurve)
	{
		return mRange.Limit(mMoves.mCurve->GetValue(inTime));
	}
	return mWasHeld ? mMoves.mLive->GetFacts().mValue : mControl->GetValue();
}

void EffectParameter::NoteMove(SN::TickTime const& inTime)
{
	std::optional<float> const held = mMoves.mLive ? mMoves.mLive->GetHeld() : std::nullopt;
	if (held != mHeld && mIsSampled)
	{
		mRampFrom = mControl->GetValue();
		mRampLeft = mMoves.mLive->GetFacts().mJumps ? SN::kTimeZero : kCurveRamp;
		mLastTime = inTime;
	}
	mHeld = held;
	mWasHeld = mWasHeld || held;
	mIsSampled = true;
}

float EffectParameter::Approach(float inTarget, SN::TickTime const& inTime)
{
	if (mRampLeft <= SN::kTimeZero)
	{
		return inTarget;
	}
	// Time may run backwards; samplings may come again.
	SN::TickTime const passed = inTime < mLastTime ? mLastTime - inTime : inTime - mLastTime;
	mLastTime = inTime;
	mRampLeft = mRampLeft - std::min(passed, mRampLeft);
	return mRampLeft > SN::kTimeZero ? Mix(inTarget) : inTarget;
}

float EffectParameter::Mix(float inTarget) const
{
	auto const left = static_cast<float>(
		static_cast<double>(mRampLeft.GetTicks()) / static_cast<double>(kCurveRamp.GetTicks()));
	if (mMoves.mLive->GetFacts().mIsLogarithmic && mRampFrom > 0.0f && inTarget > 0.0f)
	{
		return inTarget * zorvcore::math::Pow(mRampFrom / inTarget, left);
	}
	return inTarget + (mRampFrom - inTarget) * left;
}

SN::TickTime EffectParameter::GetNextInterestingTime(SN::TickTime const& inTime, VX::KeyframeCacheBase*)
{
	if (mRampLeft > SN::kTimeZero)
	{
		return inTime;
	}
	return mMoves.mCurve && !mHeld ? mMoves.mCurve->GetNextInterestingTime(inTime) : SN::kTimeMax;
}

void EffectParameter::ReplaceControl(boost::shared_ptr<VX::ParamValueBase> inControl, bool)
{
	if (!inControl || inControl->GetTypeCode() != VX::kParamTypeFloat)
	{
		Refuse("a parameter of an effect needs a control that holds a number");
	}
	mControl = boost::static_pointer_cast<VX::ParamValue<float>>(inControl);
}

} // namespace SonaroHost::Effects
