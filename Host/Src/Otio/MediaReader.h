#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/Media.h"

#include <string>

namespace SonaroHost::Otio
{

// inIsActive: whether it is the reference that the clip plays. An unusable available_range of another reference is
// noted and ignored.
MediaReference ReadMedia(Cursor const& inReference, std::string inKey, bool inIsActive);

} // namespace SonaroHost::Otio
