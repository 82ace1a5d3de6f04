#include "Levels.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// A time beyond this, either way, is as good as this; the engine's time line is not much longer.
constexpr std::int64_t kFarSeconds = 99 * 3600;
constexpr double kMaxDecibels = 100.0;

SN::TickTime ToTicks(Ratio const& inSeconds)
{
	Ratio const clamped = std::clamp(inSeconds, Ratio(-kFarSeconds), Ratio(kFarSeconds));
	return SN::TickTime::FromTicks((clamped * Ratio(zorvmediatypes::kTicksPerSecond)).Round());
}

SN::TickTime AddOnTimeLine(SN::TickTime const& inStart, Ratio const& inSeconds)
{
	SN::TickTime const far = ToTicks(Ratio(kFarSeconds));
	return std::clamp(std::clamp(inStart, -far, far) + ToTicks(inSeconds), -far, far);
}

double ToLinear(double inGain, AutomationScale inScale)
{
	if (inScale == AutomationScale::kLinear)
	{
		return inGain;
	}
	return inGain <= kSilenceDecibels ? 0.0 : zorvcore::math::Exp10(inGain / 20.0);
}

// What is beyond every use is brought to where it can be counted with.
double LimitGain(double inGain, AutomationScale inScale)
{
	static double const sLargest = ToLinear(kMaxDecibels, AutomationScale::kDecibels);
	return inScale == AutomationScale::kLinear ? std::clamp(inGain, -sLargest, sLargest)
											   : std::clamp(inGain, kSilenceDecibels, kMaxDecibels);
}

template <class ToValue>
Sequence::NumberParameter MakeParameter(
	Curve const& inCurve, CurveTiming const& inTiming, AutomationScale inScale, ToValue const& inToValue)
{
	std::vector<AutomationPoint> points = MakePoints(inCurve, inTiming);
	for (AutomationPoint& point : points)
	{
		point.mValue = inToValue(point.mValue);
	}
	auto const first = static_cast<float>(
		ToLinear(points.empty() ? inToValue(inCurve.mConstant) : points.front().mValue, inScale));
	Sequence::NumberParameter parameter = AutomationParameter<float>::Create(first);
	if (!points.empty())
	{
		parameter->SetCurve(std::make_shared<AutomationCurve const>(std::move(points), inScale));
	}
	return parameter;
}

Curve const* ToPointer(std::optional<Curve> const& inCurve)
{
	return inCurve ? &*inCurve : nullptr;
}

bool StaysInTheMiddle(Curve const& inPan)
{
	return std::ranges::all_of(inPan.mKeyframes,
			   [](Curve::Keyframe const& inKeyframe) { return inKeyframe.mValue == 0.0; }) &&
		   (!inPan.IsConstant() || inPan.mConstant == 0.0);
}

} // namespace

std::vector<AutomationPoint> MakePoints(Curve const& inCurve, CurveTiming const& inTiming)
{
	std::vector<AutomationPoint> points;
	for (Curve::Keyframe const& keyframe : inCurve.mKeyframes)
	{
		Ratio const time = ToSeconds(keyframe.mTime);
		bool const isFraction = inCurve.mTimeUnit == Curve::TimeUnit::kFractionOfLength;
		points.push_back({AddOnTimeLine(inTiming.mStart, isFraction ? time * inTiming.mLength : time),
			keyframe.mValue, keyframe.mInterpolation});
	}
	return points;
}

Sequence::NumberParameter MakeGain(Curve const& inCurve, CurveTiming const& inTiming)
{
	AutomationScale const scale = inCurve.mScale;
	if (inCurve.IsConstant() && ToLinear(inCurve.mConstant, scale) == 1.0)
	{
		return {};
	}
	return MakeParameter(
		inCurve, inTiming, scale, [scale](double inValue) { return LimitGain(inValue, scale); });
}

Sequence::NumberParameter MakePan(Curve const& inCurve, CurveTiming const& inTiming)
{
	return MakeParameter(inCurve, inTiming, AutomationScale::kLinear,
		[](double inValue) { return std::clamp((inValue + 1.0) / 2.0, 0.0, 1.0); });
}

std::vector<Sequence::Stage> MakeFaders(Item const& inItem, CurveTiming const& inTiming)
{
	std::vector<Sequence::Stage> stages;
	auto const add = [&stages, &inTiming](std::optional<Curve> const& inGain)
	{
		auto const gain = inGain ? MakeGain(*inGain, inTiming) : Sequence::NumberParameter();
		if (gain)
		{
			stages.push_back(Sequence::Fader{gain, {}});
		}
	};
	MixSettings const& settings = inItem.GetSettings();
	add(settings.mGain ? settings.mGain : settings.mForeign.mGain);
	add(settings.mMute ? std::nullopt : settings.mForeign.mMute);
	for (Effect const& effect : inItem.mEffects)
	{
		if (effect.mIsEnabled)
		{
			add(effect.mLevels.mGain);
			add(effect.mLevels.mMute);
		}
	}
	return stages;
}

Curve const* FindPan(Item const& inItem)
{
	MixSettings const& settings = inItem.GetSettings();
	if (settings.mPan)
	{
		return &*settings.mPan;
	}
	Curve const* found = ToPointer(settings.mForeign.mPan);
	for (Effect const& effect : inItem.mEffects)
	{
		bool const isFree = !found || StaysInTheMiddle(*found);
		found = isFree && effect.mIsEnabled && effect.mLevels.mPan ? ToPointer(effect.mLevels.mPan) : found;
	}
	return found && StaysInTheMiddle(*found) ? nullptr : found;
}

} // namespace SonaroHost::Otio
