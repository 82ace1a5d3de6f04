#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/PluginEffect.h"

namespace SonaroHost::Otio
{

// The object "lv2". A wrong value is refused, and a note names an unknown key.
PluginEffect ReadPluginEffect(Cursor const& inObject);

} // namespace SonaroHost::Otio
