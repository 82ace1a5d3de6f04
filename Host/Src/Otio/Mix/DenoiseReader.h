#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/DenoiseEffect.h"

namespace SonaroHost::Otio
{

// The object "denoise". A wrong value is refused, and a note names an unknown key.
DenoiseEffect ReadDenoiseEffect(Cursor const& inObject);

} // namespace SonaroHost::Otio
