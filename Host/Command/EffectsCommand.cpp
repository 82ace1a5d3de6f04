#include "Command.h"

#include "Report/Json.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Effects/EffectLibrary.h"
#include "Terminal/Console.h"
#include "Terminal/TextTable.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;
using namespace SonaroHost::Effects;

// The rate at which latencies and ranges are shown.
constexpr int kShownRate = 48000;

bool Contains(std::string const& inText, std::string const& inWord)
{
	return ToLower(inText).find(ToLower(inWord)) != std::string::npos;
}

// "2 in, 2 out".
std::string DescribePorts(EffectSummary const& inEffect)
{
	return std::to_string(inEffect.mInputs) + " in, " + std::to_string(inEffect.mOutputs) + " out";
}

std::string DescribeNumber(double inNumber)
{
	return std::isfinite(inNumber) ? FormatNumber(inNumber) : "any";
}

double Scale(Control const& inControl, float inValue)
{
	return static_cast<double>(inValue) * (inControl.mCountsInRate ? kShownRate : 1);
}

// "toggled", "whole numbers, logarithmic"; what is special about the values of a control.
std::string DescribeKind(Control const& inControl)
{
	std::string text;
	auto const add = [&text](bool inIs, char const* inWord)
	{
		if (inIs)
		{
			text += (text.empty() ? "" : ", ") + std::string(inWord);
		}
	};
	add(inControl.mIsToggled, "toggled");
	add(inControl.mIsEnumeration, "enumerated");
	add(inControl.mIsInteger, "whole numbers");
	add(inControl.mIsLogarithmic, "logarithmic");
	return text;
}

std::string DescribeControls(EffectDescription const& inEffect)
{
	std::vector<std::vector<std::string>> rows{{"symbol", "default", "from", "to", "unit", "name"}};
	for (Control const& control : inEffect.mControls)
	{
		std::string const kind = DescribeKind(control);
		rows.push_back(
			{control.mSymbol, control.mHasDefault ? DescribeNumber(Scale(control, control.mDefault)) : "",
				DescribeNumber(Scale(control, control.mMinimum)),
				DescribeNumber(Scale(control, control.mMaximum)), control.mUnit,
				control.mName + (kind.empty() ? "" : " (" + kind + ")")});
		for (ScalePoint const& point : control.mScalePoints)
		{
			rows.push_back(
				{"", FormatNumber(static_cast<double>(point.mValue)), "", "", "", "= " + point.mLabel});
		}
	}
	for (TextParameter const& text : inEffect.mTexts)
	{
		rows.push_back(
			{text.mSymbol, "", "", "", "", text.mName + (text.mIsPath ? " (path of a file)" : " (text)")});
	}
	return rows.size() > 1 ? "Controls\n" + FormatTable(rows) : "";
}

std::string DescribePresets(EffectDescription const& inEffect)
{
	std::string text = inEffect.mPresets.empty() ? "" : "Presets\n";
	for (Preset const& preset : inEffect.mPresets)
	{
		text += "  " + (preset.mName.empty() ? preset.mUri : preset.mName) + "\n";
	}
	return text;
}

unsigned FindLatency(EffectDescription const& inEffect)
{
	return inEffect.mReportsLatency && inEffect.mWhyUnusable.empty()
			   ? MeasureLatency(inEffect.mUri, kShownRate)
			   : 0;
}

std::string DescribeForPeople(EffectDescription const& inEffect)
{
	std::string text;
	auto const add = [&text](std::string inName, std::string const& inValue)
	{
		inName.resize(10, ' ');
		text += inValue.empty() ? "" : inName + inValue + "\n";
	};
	add("Name", inEffect.mName);
	add("URI", inEffect.mUri);
	add("Class", inEffect.mClass);
	add("Author", inEffect.mAuthor);
	add("Channels", DescribePorts(inEffect));
	add("Latency", FormatCount(FindLatency(inEffect), "sample") + " at the defaults and 48000 Hz");
	for (std::string const& feature : inEffect.mRequiredFeatures)
	{
		add("Requires", feature);
	}
	add("Unusable", inEffect.mWhyUnusable);
	return MakePrintableLines(text + DescribeControls(inEffect) + DescribePresets(inEffect));
}

// What is not finite becomes null.
Json DescribeControl(Control const& inControl)
{
	Json json{{"symbol", inControl.mSymbol}, {"name", inControl.mName}, {"unit", inControl.mUnit},
		{"default", inControl.mHasDefault ? Json(Scale(inControl, inControl.mDefault)) : Json()},
		{"minimum", Scale(inControl, inControl.mMinimum)}, {"maximum", Scale(inControl, inControl.mMaximum)},
		{"isToggled", inControl.mIsToggled}, {"isEnumerated", inControl.mIsEnumeration},
		{"isInteger", inControl.mIsInteger}, {"isLogarithmic", inControl.mIsLogarithmic},
		{"scalePoints", Json::array()}};
	json["parameter"] = inControl.mParameter.empty() ? Json() : Json(inControl.mParameter);
	for (ScalePoint const& point : inControl.mScalePoints)
	{
		json["scalePoints"].push_back({{"value", point.mValue}, {"label", point.mLabel}});
	}
	return json;
}

Json Summarize(EffectSummary const& inEffect)
{
	Json json{{"uri", inEffect.mUri}, {"name", inEffect.mName}, {"class", inEffect.mClass},
		{"author", inEffect.mAuthor}, {"inputs", inEffect.mInputs}, {"outputs", inEffect.mOutputs}};
	json["whyUnusable"] = inEffect.mWhyUnusable.empty() ? Json() : Json(inEffect.mWhyUnusable);
	return json;
}

std::string DescribeForMachines(EffectDescription const& inEffect)
{
	Json json = Summarize(inEffect);
	json["latencySamples"] = FindLatency(inEffect);
	json["requiredFeatures"] = inEffect.mRequiredFeatures;
	json["controls"] = Json::array();
	for (Control const& control : inEffect.mControls)
	{
		json["controls"].push_back(DescribeControl(control));
	}
	json["texts"] = Json::array();
	for (TextParameter const& text : inEffect.mTexts)
	{
		json["texts"].push_back({{"symbol", text.mSymbol}, {"name", text.mName},
			{"parameter", text.mParameter}, {"isPath", text.mIsPath}});
	}
	json["presets"] = Json::array();
	for (Preset const& preset : inEffect.mPresets)
	{
		json["presets"].push_back({{"name", preset.mName}, {"uri", preset.mUri}});
	}
	return ToText(json);
}

class EffectsCommand final : public Command
{
public:
	explicit EffectsCommand(CLI::App& ioProgram)
		: Command(ioProgram, "effects", "List the LV2 plugins that are installed, or show one of them")
	{
		Add("WHAT", mWords, "...",
			"The URI of a plugin to show, or words that the name, author or URI of each listed plugin "
			"contains");
		Add("--class", mClass, "NAME", "List only plugins whose class contains this, such as reverb");
		AddFlag("--all", mListsAll, "Also list plugins that cannot be used as effects, such as instruments");
		AddFlag("--json", mAsJson, "Print the result as JSON");
		GetParser().footer("Examples:\n"
						   "  sonaro effects\n"
						   "  sonaro effects --class reverb\n"
						   "  sonaro effects http://lv2plug.in/plugins/eg-amp");
	}

	std::string DescribeInputs() const override { return "effects accepts URIs and words"; }

	int Run() override
	{
		// A word with a colon may be a URI or a part of some.
		bool const mayBeUri = mWords.size() == 1 && mWords.front().find(':') != std::string::npos;
		if (mayBeUri && FindEffect(mWords.front()))
		{
			return Show(mWords.front());
		}
		std::vector<EffectSummary> effects = SonaroHost::Effects::ListEffects();
		auto const isInUri = [this](EffectSummary const& inEffect)
		{ return Contains(inEffect.mUri, mWords.front()); };
		if (mayBeUri && std::ranges::none_of(effects, isInUri))
		{
			return Show(mWords.front());
		}
		WarnOfUnreadable();
		CheckClass(effects);
		std::erase_if(effects, [this](EffectSummary const& inEffect) { return !IsWanted(inEffect); });
		PrintResult(mAsJson ? ListForMachines(effects) : ListForPeople(effects));
		return kExitSuccess;
	}

private:
	int Show(std::string const& inUri)
	{
		auto const effect = FindEffect(inUri);
		WarnOfUnreadable();
		if (!effect)
		{
			Refuse("the plugin " + QuoteName(inUri) +
				   " is not installed; \"sonaro effects\" lists those that are");
		}
		PrintResult(mAsJson ? DescribeForMachines(*effect) : DescribeForPeople(*effect));
		return kExitSuccess;
	}

	static void WarnOfUnreadable()
	{
		for (std::string const& problem : ListUnreadable())
		{
			PrintWarning("a part of the installed plugins cannot be read: " + MakePrintable(problem) +
						 "; reinstall or remove it");
		}
	}

	// Refuses a class that no plugin has.
	void CheckClass(std::vector<EffectSummary> const& inEffects) const
	{
		std::set<std::string> classes;
		for (EffectSummary const& effect : inEffects)
		{
			classes.insert(effect.mClass);
		}
		auto const isWanted = [this](std::string const& inClass) { return Contains(inClass, mClass); };
		if (classes.empty() || std::ranges::any_of(classes, isWanted))
		{
			return;
		}
		std::string list;
		for (std::string const& name : classes)
		{
			list += (list.empty() ? "" : ", ") + name;
		}
		Refuse("--class: no plugin's class contains " + QuoteName(mClass) +
			   "; there are: " + MakePrintable(list));
	}

	bool IsWanted(EffectSummary const& inEffect) const
	{
		auto const isIn = [&inEffect](std::string const& inWord)
		{
			return Contains(inEffect.mName, inWord) || Contains(inEffect.mAuthor, inWord) ||
				   Contains(inEffect.mUri, inWord);
		};
		return (mListsAll || inEffect.mWhyUnusable.empty()) && Contains(inEffect.mClass, mClass) &&
			   std::ranges::all_of(mWords, isIn);
	}

	static std::string ListForPeople(std::vector<EffectSummary> const& inEffects)
	{
		if (inEffects.empty())
		{
			return "no plugins found\n";
		}
		std::vector<std::vector<std::string>> rows;
		rows.reserve(inEffects.size());
		for (EffectSummary const& effect : inEffects)
		{
			rows.push_back({effect.mName, effect.mClass, DescribePorts(effect),
				effect.mUri +
					(effect.mWhyUnusable.empty() ? "" : " (unusable: " + effect.mWhyUnusable + ")")});
		}
		return MakePrintableLines(FormatTable(rows));
	}

	static std::string ListForMachines(std::vector<EffectSummary> const& inEffects)
	{
		Json list = Json::array();
		for (EffectSummary const& effect : inEffects)
		{
			list.push_back(Summarize(effect));
		}
		return ToText(list);
	}

	std::vector<std::string> mWords;
	std::string mClass;
	bool mListsAll = false;
	bool mAsJson = false;
};

} // namespace

std::unique_ptr<Command> MakeEffectsCommand(CLI::App& ioProgram)
{
	return std::make_unique<EffectsCommand>(ioProgram);
}

} // namespace SonaroCommand
