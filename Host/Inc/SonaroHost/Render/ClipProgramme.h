#pragma once

#include "SonaroHost/Effects/PreparedEffect.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Render/ProgrammePlan.h"

#include <vector>

namespace SonaroHost
{

// The clips of a plan as the items of one track, silence between them. A clip that later ones cover stands there in
// pieces. The programme reads the plan's sources. inEffects: what the whole runs through.
Programme MakeProgramme(
	ProgrammePlan const& inPlan, std::vector<Effects::PreparedEffect> const& inEffects = {});

} // namespace SonaroHost
