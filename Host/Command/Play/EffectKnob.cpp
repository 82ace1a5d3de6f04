#include "EffectKnob.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace SonaroCommand
{

namespace
{

using SonaroHost::LiveControl;

constexpr float kStepsOfRange = 50.0f;

float GetValue(LiveControl const& inControl)
{
	return inControl.GetHeld().value_or(inControl.GetFacts().mValue);
}

float FindStep(LiveControl::Facts const& inFacts, float inValue)
{
	if (inFacts.mJumps)
	{
		return 1.0f;
	}
	float const range = inFacts.mMaximum - inFacts.mMinimum;
	return (std::isfinite(range) ? range : std::max(std::fabs(inValue), 1.0f)) / kStepsOfRange;
}

float Turned(LiveControl::Facts const& inFacts, float inValue, bool inUp)
{
	if (inFacts.mIsLogarithmic && inValue > 0.0f)
	{
		float const factor = zorvcore::math::Pow(inFacts.mMaximum / inFacts.mMinimum, 1.0f / kStepsOfRange);
		return inUp ? inValue * factor : inValue / factor;
	}
	float const step = FindStep(inFacts, inValue);
	return inUp ? inValue + step : inValue - step;
}

std::string FormatValue(float inValue)
{
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.4g", static_cast<double>(inValue));
	return text.data();
}

} // namespace

std::vector<EffectKnob::Choice> EffectKnob::List() const
{
	std::vector<Choice> choices;
	for (SonaroHost::Playback::LiveEffect const& effect : mEffects.List())
	{
		for (std::size_t control = 0; control < effect.mControls.size(); ++control)
		{
			choices.push_back({effect, control});
		}
	}
	return choices;
}

void EffectKnob::Choose(bool inNext)
{
	std::size_t const count = List().size();
	if (count > 0)
	{
		std::size_t const before = mIndex < count ? mIndex : 0;
		std::size_t const next = (before + (inNext ? 1 : count - 1)) % count;
		mIndex = mIsChosen ? next : 0;
		mIsChosen = true;
	}
}

void EffectKnob::Turn(bool inUp)
{
	auto const choices = List();
	if (mIsChosen && mIndex < choices.size())
	{
		Choice const& choice = choices[mIndex];
		LiveControl const& control = choice.GetControl();
		mEffects.Hold(
			choice.mEffect.mId, choice.GetSymbol(), Turned(control.GetFacts(), GetValue(control), inUp));
	}
}

void EffectKnob::Release()
{
	auto const choices = List();
	if (mIsChosen && mIndex < choices.size())
	{
		mEffects.Release(choices[mIndex].mEffect.mId, choices[mIndex].GetSymbol());
	}
}

void EffectKnob::ToggleBypass()
{
	auto const choices = List();
	if (mIsChosen && mIndex < choices.size() && choices[mIndex].mEffect.FindBypass())
	{
		SonaroHost::Playback::LiveEffect const& effect = choices[mIndex].mEffect;
		mEffects.SetBypass(effect.mId, !effect.IsBypassed());
	}
}

std::string EffectKnob::Describe() const
{
	auto const choices = List();
	if (choices.empty())
	{
		return "no effect has controls";
	}
	if (!mIsChosen || mIndex >= choices.size())
	{
		return "choose a control of an effect with e";
	}
	Choice const& choice = choices[mIndex];
	LiveControl const& control = choice.GetControl();
	LiveControl::Facts const& facts = control.GetFacts();
	std::string const value =
		facts.mHasCurve && !control.GetHeld() ? "by its curve" : FormatValue(GetValue(control));
	std::string const unit = facts.mUnit.empty() ? "" : " " + facts.mUnit;
	return choice.mEffect.mName + " of " + choice.mEffect.mPlace +
		   (choice.mEffect.IsBypassed() ? ", bypassed: " : ": ") + facts.mName + " " + value + unit +
		   (control.GetHeld() ? ", held" : "");
}

} // namespace SonaroCommand
