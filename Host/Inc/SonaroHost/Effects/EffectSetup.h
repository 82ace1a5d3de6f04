#pragma once

#include "SonaroHost/Automation/AutomationCurve.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// What a control is set to.
struct ControlSetting
{
	// Its symbol, or the URI of a parameter.
	std::string mSymbol;
	// The value where there are no points.
	double mValue = 0.0;
	// A course over time. Controls that are toggled or enumerated jump from point to point, whatever the points say;
	// logarithmic ones run in the logarithm of their value.
	std::vector<AutomationPoint> mPoints = {};
	// What a parameter that is a text is set to. Relative paths count from the folder of the setup's file or, without one, from
	// the current folder.
	std::optional<std::string> mText = {};
	// There is only a text, and no number.
	bool mIsText = false;
};

// How an effect is to be set up. Later ones of these go before earlier ones: the plugin's defaults, the preset, the
// state, the settings.
struct EffectSetup
{
	std::string mUri;
	// The name or the URI of a preset; empty for none.
	std::string mPreset = {};
	// A state in Turtle, as LV2 hosts save it; empty for none.
	std::string mState = {};
	std::vector<ControlSetting> mSettings = {};
	// Whether it is bypassed, 0 or 1; without a symbol. The latency stays.
	std::optional<ControlSetting> mBypass = {};
	// The file that asks for it, and the place in it as a JSON pointer, for messages; empty for none.
	std::filesystem::path mFile = {};
	std::string mPlace = {};
	// What was chosen while it was read, for messages.
	std::vector<std::string> mRemarks = {};
};

} // namespace SonaroHost::Effects
