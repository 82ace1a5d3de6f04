#pragma once

#include "SonaroHost/Otio/MixSettings.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// An LV2 plugin that something runs through, from "lv2" in the "metadata.sonaro" of an effect, or in a file of
// effects. Whether the plugin is there, nobody has asked yet.
struct PluginEffect
{
	// A control and what it is set to.
	struct Control
	{
		std::string mSymbol;
		// In what the control counts in; its keyframes as those of a gain.
		Curve mValue;
		// In place of these.
		std::optional<std::string> mText = {};
	};

	// Not empty.
	std::string mUri;
	// A preset by name or URI, and a state in Turtle; empty for none.
	std::string mPreset;
	std::string mState;
	std::vector<Control> mControls;
	// Whether it is bypassed: 1 or 0.
	std::optional<Curve> mBypass;
	// A JSON pointer.
	std::string mPlace;
	// What was chosen of several meanings, in an effect of a file of effects.
	std::vector<std::string> mRemarks;
};

// The effects of a file with a list of such objects, or with one of them. Throws a HostError of kind kInput that names
// the file and the place.
std::vector<PluginEffect> ReadEffectFile(std::filesystem::path const& inPath);

} // namespace SonaroHost::Otio
