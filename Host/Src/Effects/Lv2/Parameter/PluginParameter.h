#pragma once

#include <lv2/urid/urid.h>

namespace SonaroHost::Effects
{

// A parameter that messages set (patch:Set), to a host that sends them; a control that is a port has zeros.
struct PluginParameter
{
	LV2_URID mProperty = 0;
	// The type of its values: a number, a boolean, a text, a URI or a path of the LV2 atoms.
	LV2_URID mType = 0;
};

} // namespace SonaroHost::Effects
