#include "SonaroHost/Effects/PreparedEffect.h"

#include "EffectParameter.h"
#include "Lv2/PluginFilter.h"
#include "Sonaro/AudioFilterControl.h"
#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Engine/EngineFactory.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost::Effects
{

struct PreparedEffect::Plan
{
	std::shared_ptr<PluginStart const> mStart;
	// One for each control and one for the host's bypass; the curves are null where nothing moves.
	std::vector<ParameterRange> mRanges;
	std::vector<std::shared_ptr<AutomationCurve const>> mCurves;
};

namespace
{

// Brings a value into the range, and says so.
double Limit(Control const& inControl, ParameterRange const& inRange, double inValue,
	std::vector<std::string>& ioRemarks)
{
	auto const lowest = static_cast<double>(inRange.mMinimum);
	auto const highest = static_cast<double>(inRange.mMaximum);
	double const limited = std::clamp(inValue, lowest, highest);
	// Half of a step of the numbers that plugins count in is no difference.
	if (static_cast<float>(limited) != static_cast<float>(inValue))
	{
		std::string remark = QuoteName(inControl.mSymbol) + " is out of range at " + FormatNumber(inValue) +
							 "; using " + FormatNumber(limited);
		if (std::ranges::find(ioRemarks, remark) == ioRemarks.end())
		{
			ioRemarks.push_back(std::move(remark));
		}
	}
	return limited;
}

// A decibel is a scale of its own for what runs in its logarithm: only the ratio of two values counts there.
double ToDecibels(double inValue)
{
	return 20.0 * std::log10(inValue);
}

std::shared_ptr<AutomationCurve const> MakeCurve(Control const& inControl, ParameterRange const& inRange,
	std::vector<AutomationPoint> inPoints, std::vector<std::string>& ioRemarks)
{
	bool const isLogarithmic = inControl.mIsLogarithmic && inRange.mMinimum > 0.0f;
	for (AutomationPoint& point : inPoints)
	{
		double const value = Limit(inControl, inRange, point.mValue, ioRemarks);
		point.mValue = isLogarithmic ? ToDecibels(value) : value;
		if (inControl.mIsToggled || inControl.mIsEnumeration)
		{
			point.mInterpolation = Interpolation::kHold;
		}
	}
	return std::make_shared<AutomationCurve const>(
		std::move(inPoints), isLogarithmic ? AutomationScale::kDecibels : AutomationScale::kLinear);
}

[[noreturn]] void RefuseControl(EffectDescription const& inDescription, std::string const& inSymbol)
{
	std::string known;
	for (Control const& control : inDescription.mControls)
	{
		known += (known.empty() ? "" : ", ") + control.mSymbol;
	}
	Refuse("the plugin " + QuoteName(inDescription.mName) + " has no control " + QuoteName(inSymbol) +
		   (known.empty() ? "; it has none" : "; it has " + known));
}

std::size_t FindControl(EffectDescription const& inDescription, std::string const& inSymbol)
{
	auto const& controls = inDescription.mControls;
	auto const found = std::ranges::find(controls, inSymbol, &Control::mSymbol);
	if (found == controls.end())
	{
		RefuseControl(inDescription, inSymbol);
	}
	return static_cast<std::size_t>(found - controls.begin());
}

// What enables an effect as a bypass disables it.
ControlSetting Invert(ControlSetting inBypass)
{
	inBypass.mValue = 1.0 - inBypass.mValue;
	for (AutomationPoint& point : inBypass.mPoints)
	{
		point.mValue = 1.0 - point.mValue;
	}
	return inBypass;
}

double GetFirst(ControlSetting const& inSetting)
{
	return inSetting.mPoints.empty() ? inSetting.mValue : inSetting.mPoints.front().mValue;
}

std::shared_ptr<EffectFacts const> CollectFacts(
	EffectSetup const& inSetup, PluginStart const& inStart, std::vector<ParameterRange> const& inRanges)
{
	auto facts = std::make_shared<EffectFacts>();
	facts->mUri = inSetup.mUri;
	facts->mPreset = inSetup.mPreset;
	facts->mHasOwnBypass = inStart.mData->mEnabled.has_value();
	for (ControlSetting const& setting : inSetup.mSettings)
	{
		ParameterRange const& range = inRanges[FindControl(inStart.mData->mDescription, setting.mSymbol)];
		facts->mSettings.push_back(
			{setting.mSymbol, static_cast<double>(range.Limit(GetFirst(setting))), setting.mPoints.size()});
	}
	if (auto const& bypass = inSetup.mBypass)
	{
		facts->mBypass = {{}, GetFirst(*bypass), bypass->mPoints.size()};
	}
	return facts;
}

} // namespace

PreparedEffect::PreparedEffect(EffectSetup const& inSetup, double inSampleRate)
{
	auto const start = MakeStart(inSetup, inSampleRate);
	EffectDescription const& description = start->mData->mDescription;
	auto plan = std::make_shared<Plan>();
	mName = description.mName;
	plan->mCurves.resize(description.mControls.size() + 1);
	for (Control const& control : description.mControls)
	{
		plan->mRanges.push_back(ParameterRange::Make(control, inSampleRate));
	}
	plan->mRanges.push_back({0.0f, 1.0f, true});
	for (ControlSetting const& setting : inSetup.mSettings)
	{
		std::size_t const index = FindControl(description, setting.mSymbol);
		start->mValues[index] = Take(setting, description.mControls[index], index, *plan);
	}
	if (inSetup.mBypass)
	{
		TakeBypass(inSetup, *start, *plan);
	}
	mFacts = CollectFacts(inSetup, *start, plan->mRanges);
	plan->mStart = start;
	mPlan = std::move(plan);
}

float PreparedEffect::Take(
	ControlSetting const& inSetting, Control const& inControl, std::size_t inIndex, Plan& ioPlan)
{
	ParameterRange const& range = ioPlan.mRanges[inIndex];
	ioPlan.mCurves[inIndex] =
		!inSetting.mPoints.empty() ? MakeCurve(inControl, range, inSetting.mPoints, mRemarks) : nullptr;
	for (AutomationPoint const& point : inSetting.mPoints)
	{
		mJumps.push_back(point.mTime);
	}
	return range.Limit(Limit(inControl, range, GetFirst(inSetting), mRemarks));
}

void PreparedEffect::TakeBypass(EffectSetup const& inSetup, PluginStart& ioStart, Plan& ioPlan)
{
	EffectDescription const& description = ioStart.mData->mDescription;
	Control bypass;
	bypass.mSymbol = "bypass";
	bypass.mIsToggled = true;
	if (!ioStart.mData->mEnabled)
	{
		ioStart.mHasBypass = true;
		ioStart.mIsBypassed = Take(*inSetup.mBypass, bypass, description.mControls.size(), ioPlan) > 0.0f;
		return;
	}
	std::size_t const index = *ioStart.mData->mEnabled;
	Control const& enabled = description.mControls[index];
	if (std::ranges::find(inSetup.mSettings, enabled.mSymbol, &ControlSetting::mSymbol) !=
		inSetup.mSettings.end())
	{
		Refuse("a bypass and the control " + QuoteName(enabled.mSymbol) + " of the plugin " +
			   QuoteName(description.mName) + " are the same; set one of them");
	}
	ioStart.mValues[index] = Take(Invert(*inSetup.mBypass), enabled, index, ioPlan);
}

void PreparedEffect::CheckChannels(std::size_t inChannels) const
{
	ChooseChannelUse(mPlan->mStart->mData->mDescription, static_cast<unsigned>(inChannels));
}

SN::InterfaceRef<SN::IAudioProcessor> PreparedEffect::Make(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
	SN::AudioChannelLayout const& inLayout) const
{
	SN::InterfaceRef<SN::IAudioFilter> const filter = zorvcore::classref::MakeObject<PluginFilter>(
		mPlan->mStart, PluginFilter::Terms{inFrameRate.GetSamplesPerSecond(), inContext->GetMaxBlockSize(),
						   static_cast<unsigned>(inLayout.size()), inContext->IsPrefetchEnabled()});
	SN::AudioFilterSettings settings{.mContext = inContext, .mFrameRate = inFrameRate, .mFilter = filter};
	settings.mChannelLayout = inLayout;
	settings.mParams.push_back(AutomationParameter<bool>::Create(false));
	for (unsigned i = 0; i < mPlan->mRanges.size(); ++i)
	{
		settings.mParams.push_back(zorvcore::classref::MakeObject<EffectParameter>(
			EffectParameter::Control(new SN::AudioFilterControl(filter, i)), mPlan->mCurves[i],
			mPlan->mRanges[i]));
	}
	return EngineFactory().CreateAudioFilterRenderer(settings);
}

} // namespace SonaroHost::Effects
