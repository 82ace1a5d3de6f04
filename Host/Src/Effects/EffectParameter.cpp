#include "EffectParameter.h"

#include "SonaroHost/Base/HostError.h"

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

EffectParameter::EffectParameter(
	Control inControl, std::shared_ptr<AutomationCurve const> inCurve, ParameterRange const& inRange)
	: mControl(std::move(inControl)),
	  mCurve(std::move(inCurve)),
	  mRange(inRange)
{
}

SN::InterfaceRef<SN::IRenderableAudioComponentParam> EffectParameter::CloneAndDetach(bool)
{
	return zorvcore::classref::MakeObject<EffectParameter>(mControl, mCurve, mRange);
}

void EffectParameter::UpdateControl(
	SN::TickTime const& inTime, VX::KeyframeCacheBase*, VX::KeyframeBase* outKeyframe)
{
	auto& keyframe = static_cast<VX::Keyframe<float>&>(*outKeyframe);
	keyframe.mTime = inTime;
	keyframe.mValue = mControl->GetValue();
	if (mCurve)
	{
		float const value = mRange.Limit(mCurve->GetValue(inTime));
		if (value != keyframe.mValue)
		{
			mControl->SetValue(value);
		}
		keyframe.mValue = value;
	}
}

SN::TickTime EffectParameter::GetNextInterestingTime(SN::TickTime const& inTime, VX::KeyframeCacheBase*)
{
	return mCurve ? mCurve->GetNextInterestingTime(inTime) : SN::kTimeMax;
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
