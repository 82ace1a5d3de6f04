#pragma once

#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Render/ProgrammePlan.h"

namespace SonaroHost
{

// The clips of a plan as the items of one track, silence between them. A clip that later ones cover stands there in
// pieces. The programme reads the plan's sources.
Programme MakeProgramme(ProgrammePlan const& inPlan);

} // namespace SonaroHost
