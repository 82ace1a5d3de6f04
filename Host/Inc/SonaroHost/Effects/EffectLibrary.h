#pragma once

#include "SonaroHost/Effects/EffectDescription.h"

#include <optional>
#include <string>
#include <vector>

// The LV2 plugins that are installed, in the folders of the environment variable LV2_PATH or, without it, in the usual
// ones. They are looked for once in a process, at the first question.
//
// Errors   In a build without lilv, everything but DescribeEffectLibraries throws a HostError that says so.
// Threads  Any.
namespace SonaroHost::Effects
{

// What hosts effects, with its version, as "lilv 0.24.14"; empty in a build without it.
std::string DescribeEffectLibraries();

// All plugins in the order of their names.
std::vector<EffectSummary> ListEffects();

// What could not be read so far of what is installed, as "/usr/lib/lv2/x.lv2/manifest.ttl:1:6: bad verb".
std::vector<std::string> ListUnreadable();

// Nothing for a plugin that is not installed.
std::optional<EffectDescription> FindEffect(std::string const& inUri);

// How many frames late an effect is at its defaults, at this sample rate; 0 for one that states no latency. It starts
// the plugin to ask it. Throws a HostError when that fails.
unsigned MeasureLatency(std::string const& inUri, double inSampleRate);

} // namespace SonaroHost::Effects
