#pragma once

#include "PluginData.h"
#include "SonaroHost/Effects/EffectSetup.h"

#include <lilv/lilv.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Effects
{

// What every instance of one effect of a chain begins with.
struct PluginStart
{
	std::shared_ptr<PluginData const> mData;
	// One for each control of the description.
	std::vector<float> mValues;
	// Whether a parameter among them was set by a setting.
	std::vector<bool> mIsSet;
	// By the index of the text in the description.
	std::map<std::size_t, std::string> mTexts;
	// In their order.
	std::vector<std::shared_ptr<LilvState const>> mStates;
	// Whether it begins bypassed by the host, and whether it is ever to be.
	bool mIsBypassed = false;
	bool mHasBypass = false;
	// The largest latency in frames that an instance has stated so far, which the next ones count with.
	std::shared_ptr<std::atomic<unsigned>> mFoundLatency = std::make_shared<std::atomic<unsigned>>(0);
};

// The defaults, and over them what the plugin itself begins with, the preset and the state of a setup, without its
// settings. Throws a HostError of the kind kRequest for a plugin or a preset that is not there, a plugin that cannot be
// used, and a state that cannot be read.
std::shared_ptr<PluginStart> MakeStart(EffectSetup const& inSetup, double inSampleRate);

} // namespace SonaroHost::Effects
