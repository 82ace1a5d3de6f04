#pragma once

#include "SonaroHost/Render/Programme.h"

namespace SonaroHost
{

// Throws a HostError when one of the programme's media stopped being decoded, or, where the programme refuses it, was
// found damaged.
void CheckMedia(Programme const& inProgramme);
// The same of the media that one graph reads.
void CheckMedia(Programme const& inProgramme, GraphMedia const& inMedia);

} // namespace SonaroHost
