#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

// What reports say of an effect.
struct EffectFacts
{
	// What a control was set to.
	struct Setting
	{
		std::string mSymbol;
		// The value, or the first one of a curve; within its range.
		double mValue = 0.0;
		// How many points the curve has; 0 without one.
		std::size_t mPoints = 0;
		// In place of a value.
		std::optional<std::string> mText = {};
	};

	std::string mUri;
	// By name or URI; empty for none.
	std::string mPreset;
	// What was set, in the order in which it was.
	std::vector<Setting> mSettings;
	// Absent where nothing was said of a bypass.
	std::optional<Setting> mBypass;
	// Whether a bypass is the effect's own work.
	bool mHasOwnBypass = false;
};

} // namespace SonaroHost
