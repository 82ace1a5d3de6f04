#include "SonaroHost/Effects/PreparedEffect.h"

#include "EffectParameter.h"
#include "Lv2/PluginFilter.h"
#include "Sonaro/AudioFilterControl.h"
#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Engine/EngineFactory.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>
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
	return 20.0 * zorvcore::math::Log10(inValue);
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

[[noreturn]] void RefuseAt(
	std::string const& inSymbol, std::string const& inReason, std::string const& inRemedy = {})
{
	throw HostError(HostError::Kind::kRequest, {{}, "/controls/" + inSymbol, inReason, inRemedy});
}

[[noreturn]] void RefuseControl(EffectDescription const& inDescription, std::string const& inSymbol)
{
	std::string known;
	auto const add = [&known](auto const& inControl)
	{ known += (known.empty() ? "" : ", ") + inControl.mSymbol; };
	std::ranges::for_each(inDescription.mControls, add);
	std::ranges::for_each(inDescription.mTexts, add);
	RefuseAt(inSymbol,
		"the plugin " + QuoteName(inDescription.mName) + " has no control " + QuoteName(inSymbol),
		known.empty() ? "it has none" : "it has " + known);
}

// By the symbol or the URI of a parameter; the size of the list where there is none.
template <class Named>
std::size_t Find(std::vector<Named> const& inList, std::string const& inSymbol)
{
	auto found = std::ranges::find(inList, inSymbol, &Named::mSymbol);
	found = found != inList.end() ? found : std::ranges::find(inList, inSymbol, &Named::mParameter);
	return static_cast<std::size_t>(found - inList.begin());
}

std::size_t FindControl(EffectDescription const& inDescription, std::string const& inSymbol)
{
	std::size_t const index = Find(inDescription.mControls, inSymbol);
	if (index == inDescription.mControls.size())
	{
		RefuseControl(inDescription, inSymbol);
	}
	return index;
}

// Nothing for a number.
std::optional<std::size_t> FindText(EffectDescription const& inDescription, std::string const& inSymbol)
{
	bool const isNumber = Find(inDescription.mControls, inSymbol) < inDescription.mControls.size();
	std::size_t const index = Find(inDescription.mTexts, inSymbol);
	return !isNumber && index < inDescription.mTexts.size() ? std::optional(index) : std::nullopt;
}

void CheckIsNumber(EffectDescription const& inDescription, ControlSetting const& inSetting)
{
	if (inSetting.mIsText)
	{
		RefuseAt(inSetting.mSymbol, "the control " + QuoteName(inSetting.mSymbol) + " of the plugin " +
										QuoteName(inDescription.mName) + " takes a number, found " +
										QuoteName(inSetting.mText.value_or(std::string())));
	}
}

// A path that a plugin may open, from whatever folder it does.
std::string MakeAbsolute(
	ControlSetting const& inSetting, EffectSetup const& inSetup, std::string const& inName)
{
	std::error_code error;
	std::filesystem::path const path =
		std::filesystem::absolute(inSetup.mFile.parent_path() / *inSetting.mText, error).lexically_normal();
	if (error || !std::filesystem::is_regular_file(path, error))
	{
		RefuseAt(inSetting.mSymbol, "the file " + QuotePath(path) + " for " + inName + " does not exist");
	}
	return path.string();
}

std::string ReadText(EffectDescription const& inDescription, std::size_t inIndex, EffectSetup const& inSetup,
	ControlSetting const& inSetting)
{
	std::string const name =
		QuoteName(inSetting.mSymbol) + " of the plugin " + QuoteName(inDescription.mName);
	bool const isPath = inDescription.mTexts[inIndex].mIsPath;
	if (!inSetting.mText || !inSetting.mPoints.empty())
	{
		RefuseAt(inSetting.mSymbol, "the control " + name + " takes " +
										(isPath ? "the path of a file" : "a text") +
										", and no number or keyframes");
	}
	return isPath ? MakeAbsolute(inSetting, inSetup, name) : *inSetting.mText;
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
		if (auto const text = FindText(inStart.mData->mDescription, setting.mSymbol))
		{
			facts->mSettings.push_back({setting.mSymbol, 0.0, 0, inStart.mTexts.at(*text)});
			continue;
		}
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

std::shared_ptr<LiveControl> MakeLiveControl(
	Control const& inControl, ParameterRange const& inRange, float inValue, bool inHasCurve, bool inEnables)
{
	return std::make_shared<LiveControl>(
		LiveControl::Facts{inControl.mSymbol, inControl.mName, inControl.mUnit, inRange.mMinimum,
			inRange.mMaximum, inValue, inRange.mIsInteger, inRange.mIsInteger || inControl.mIsEnumeration,
			inControl.mIsLogarithmic && inRange.mMinimum > 0.0f, inHasCurve, inEnables});
}

// Of the host, for an effect without one of its own.
std::shared_ptr<LiveControl> MakeLiveBypass(bool inIsBypassed, bool inHasCurve)
{
	LiveControl::Facts facts;
	facts.mSymbol = LiveControl::kBypassSymbol;
	facts.mName = "Bypass";
	facts.mValue = inIsBypassed ? 1.0f : 0.0f;
	facts.mIsWhole = true;
	facts.mJumps = true;
	facts.mHasCurve = inHasCurve;
	return std::make_shared<LiveControl>(facts);
}

} // namespace

PreparedEffect::PreparedEffect(EffectSetup const& inSetup, double inSampleRate)
{
	auto const start = MakeStart(inSetup, inSampleRate);
	EffectDescription const& description = start->mData->mDescription;
	auto plan = std::make_shared<Plan>();
	mName = description.mName;
	mRemarks = inSetup.mRemarks;
	plan->mCurves.resize(description.mControls.size() + 1);
	for (Control const& control : description.mControls)
	{
		plan->mRanges.push_back(ParameterRange::Make(control, inSampleRate));
	}
	plan->mRanges.push_back({0.0f, 1.0f, true});
	for (ControlSetting const& setting : inSetup.mSettings)
	{
		if (auto const text = FindText(description, setting.mSymbol))
		{
			start->mTexts[*text] = ReadText(description, *text, inSetup, setting);
			continue;
		}
		std::size_t const index = FindControl(description, setting.mSymbol);
		CheckIsNumber(description, setting);
		start->mIsSet[index] = true;
		start->mValues[index] = Take(setting, description.mControls[index], index, *plan);
	}
	if (inSetup.mBypass)
	{
		TakeBypass(inSetup, *start, *plan);
	}
	mFacts = CollectFacts(inSetup, *start, plan->mRanges);
	MakeLiveControls(*start, *plan);
	plan->mStart = start;
	mPlan = std::move(plan);
}

void PreparedEffect::MakeLiveControls(PluginStart const& inStart, Plan const& inPlan)
{
	std::vector<Control> const& controls = inStart.mData->mDescription.mControls;
	for (std::size_t i = 0; i < controls.size(); ++i)
	{
		bool const hasCurve = inPlan.mCurves[i] != nullptr;
		mControls.push_back(MakeLiveControl(
			controls[i], inPlan.mRanges[i], inStart.mValues[i], hasCurve, inStart.mData->mEnabled == i));
	}
	if (!inStart.mData->mEnabled)
	{
		mControls.push_back(MakeLiveBypass(inStart.mIsBypassed, inPlan.mCurves.back() != nullptr));
	}
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

std::shared_ptr<PluginStart const> PreparedEffect::ChooseStart(bool inIsLive) const
{
	bool const mayBypass = !mPlan->mStart->mData->mEnabled && (inIsLive || mControls.back()->GetHeld());
	if (mPlan->mStart->mHasBypass || !mayBypass)
	{
		return mPlan->mStart;
	}
	auto start = std::make_shared<PluginStart>(*mPlan->mStart);
	start->mHasBypass = true;
	return start;
}

SN::InterfaceRef<SN::IAudioProcessor> PreparedEffect::Make(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
	SN::AudioChannelLayout const& inLayout) const
{
	bool const isLive = inContext->IsPrefetchEnabled();
	SN::InterfaceRef<SN::IAudioFilter> const filter =
		zorvcore::classref::MakeObject<PluginFilter>(ChooseStart(isLive),
			PluginFilter::Terms{inFrameRate.GetSamplesPerSecond(), inContext->GetMaxBlockSize(),
				static_cast<unsigned>(inLayout.size()), isLive});
	SN::AudioFilterSettings settings{.mContext = inContext, .mFrameRate = inFrameRate, .mFilter = filter};
	settings.mChannelLayout = inLayout;
	settings.mParams.push_back(AutomationParameter<bool>::Create(false));
	for (unsigned i = 0; i < mPlan->mRanges.size(); ++i)
	{
		ParameterMoves moves{mPlan->mCurves[i], i < mControls.size() ? mControls[i] : nullptr};
		if (moves.mLive && !isLive)
		{
			moves.mLive = std::make_shared<LiveControl>(*moves.mLive);
		}
		settings.mParams.push_back(zorvcore::classref::MakeObject<EffectParameter>(
			EffectParameter::Control(new SN::AudioFilterControl(filter, i)), std::move(moves),
			mPlan->mRanges[i]));
	}
	return EngineFactory().CreateAudioFilterRenderer(settings);
}

} // namespace SonaroHost::Effects
