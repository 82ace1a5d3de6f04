#include "EffectOptions.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/OtioSequence/EffectChain.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace SonaroCommand
{

namespace
{

using SonaroHost::Effects::ControlSetting;
using SonaroHost::Effects::EffectSetup;

// "symbol=value". What is not a number may be the text of a parameter.
ControlSetting ParseSetting(std::string const& inText)
{
	std::size_t const equals = inText.find('=');
	if (equals == std::string::npos || equals == 0)
	{
		SonaroHost::Refuse("--set: '" + inText + "' is not a setting; use symbol=value, like gain=-6");
	}
	ControlSetting setting{inText.substr(0, equals)};
	setting.mText = inText.substr(equals + 1);
	char const* const end = inText.data() + inText.size();
	auto const [rest, error] = std::from_chars(inText.data() + equals + 1, end, setting.mValue);
	setting.mIsText = error != std::errc() || rest != end;
	if (!setting.mIsText && !std::isfinite(setting.mValue))
	{
		SonaroHost::Refuse("--set: the value of '" + inText + "' is not a finite number");
	}
	return setting;
}

EffectSetup& GetLast(std::vector<EffectSetup>& ioSetups, std::string const& inOption)
{
	if (ioSetups.empty())
	{
		SonaroHost::Refuse(inOption + " applies to the effect before it; give --effect first");
	}
	return ioSetups.back();
}

} // namespace

void EffectOptions::AddOptions(CLI::App& ioParser)
{
	mParser = &ioParser;
	auto const add = [&ioParser](char const* inName, std::vector<std::string>& outValues, char const* inValue,
						 char const* inText)
	{ ioParser.add_option(inName, outValues, inText)->option_text(inValue)->allow_extra_args(false); };
	add("--effect", mEffects, "URI ...",
		"Run the whole output through this LV2 plugin; several run in their order (\"sonaro effects\" lists "
		"them)");
	add("--effect-file", mFiles, "FILE ...",
		"Run the whole output through the effects of this JSON file, which may move their controls over "
		"time");
	add("--set", mSettings, "SYMBOL=VALUE ...", "Set a control of the effect before it, like gain=-6");
	add("--preset", mPresets, "NAME ...",
		"Start the effect before it from one of its presets, by name or URI");
}

// The parser keeps the values of each option apart, and the order of all options.
std::vector<EffectSetup> EffectOptions::MakeSetups() const
{
	std::vector<EffectSetup> setups;
	std::size_t effects = 0;
	std::size_t files = 0;
	std::size_t settings = 0;
	std::size_t presets = 0;
	for (CLI::Option const* const option : mParser->parse_order())
	{
		std::string const name = option->get_name();
		if (name == "--effect")
		{
			setups.push_back({mEffects[effects++]});
		}
		else if (name == "--effect-file")
		{
			std::ranges::move(SonaroHost::Otio::ReadEffectChain(mFiles[files++]), std::back_inserter(setups));
		}
		else if (name == "--set")
		{
			GetLast(setups, name).mSettings.push_back(ParseSetting(mSettings[settings++]));
		}
		else if (name == "--preset")
		{
			GetLast(setups, name).mPreset = mPresets[presets++];
		}
	}
	return setups;
}

} // namespace SonaroCommand
