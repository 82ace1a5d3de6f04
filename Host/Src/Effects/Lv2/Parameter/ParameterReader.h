#pragma once

#include "PluginParameter.h"
#include "SonaroHost/Effects/EffectDescription.h"

#include <lilv/lilv.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace SonaroHost::Effects
{

// What messages set in a plugin.
struct ParameterList
{
	// The port that takes the messages; without one, the rest is empty.
	std::optional<std::size_t> mPort = std::nullopt;
	// Numbers, and the parameter of each.
	std::vector<Control> mControls;
	std::vector<PluginParameter> mParameters;
	// Texts, and the parameter of each.
	std::vector<TextParameter> mTexts;
	std::vector<PluginParameter> mTextParameters;
};

// What a plugin lists as writable (patch:writable), in the order of the symbols. What has no type that can be set here is
// left out. Called with the lock of the World.
ParameterList ReadParameters(LilvPlugin const* inPlugin);

} // namespace SonaroHost::Effects
