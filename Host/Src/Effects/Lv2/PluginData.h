#pragma once

#include "Parameter/PluginParameter.h"
#include "SonaroHost/Effects/EffectDescription.h"

#include <lilv/lilv.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// One port of a plugin, to a host that has to connect it.
struct Port
{
	enum class Kind
	{
		kAudioIn,
		kAudioOut,
		kControlIn,
		kControlOut,
		// Control voltages, at the rate of samples.
		kVoltageIn,
		kVoltageOut,
		kAtomIn,
		kAtomOut,
		// What this host cannot connect.
		kOther,
	};
	enum class Role
	{
		kNone,
		// The plugin states its latency here.
		kLatency,
		// 1 while it is rendered faster or slower than it is heard.
		kFreeWheeling,
		// The plugin's own bypass: 0 while it is on.
		kEnabled,
	};

	Kind mKind = Kind::kOther;
	Role mRole = Role::kNone;
	// It may stay unconnected.
	bool mIsOptional = false;
	bool mIsSideChain = false;
	float mDefault = 0.0f;
	// The bytes that an atom port needs at least.
	std::size_t mBytes = 0;
	// Index of its control in the description, for those that are set.
	std::optional<std::size_t> mControl = std::nullopt;
	std::string mSymbol = {};
};

// What is known of an installed plugin before any instance of it is made.
struct PluginData
{
	LilvPlugin const* mPlugin = nullptr;
	EffectDescription mDescription;
	// In the order of their indices.
	std::vector<Port> mPorts;
	// One for each control and for each text of the description.
	std::vector<PluginParameter> mParameters;
	std::vector<PluginParameter> mTexts;
	// The port that takes messages; absent for a plugin without such parameters.
	std::optional<std::size_t> mParameterPort = std::nullopt;
	// Index of the control that is the plugin's own bypass, 0 while it is on.
	std::optional<std::size_t> mEnabled = std::nullopt;
	// It runs in blocks of one length only.
	bool mNeedsFixedBlocks = false;
	// It has to begin with the state that comes with it.
	bool mLoadsDefaultState = false;
};

// Null for a plugin that is not installed.
std::shared_ptr<PluginData const> ReadPlugin(std::string const& inUri);

} // namespace SonaroHost::Effects
