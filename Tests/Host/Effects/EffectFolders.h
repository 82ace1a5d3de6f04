#pragma once

#include "SonaroHost/Effects/EffectLibrary.h"

#include <cstdlib>
#include <string>

namespace SonaroHost::Testing
{

// Lets this process, and programs that it starts, find the plugins of the tests beside those that are installed. To be
// called before anybody asks for a plugin.
inline void FindTestPlugins()
{
	setenv("LV2_PATH", SONARO_TEST_PLUGINS ":/usr/lib/lv2:/usr/local/lib/lv2", 1);
}

inline bool IsInstalled(std::string const& inUri)
{
	return Effects::FindEffect(inUri).has_value();
}

} // namespace SonaroHost::Testing
