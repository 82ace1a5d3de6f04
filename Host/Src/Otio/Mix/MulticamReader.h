#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/Model.h"

#include <memory>

namespace SonaroHost::Otio
{

// The cuts in the order of time, whatever their order in the file; a note reports two at one time.
std::shared_ptr<MulticamSettings const> ReadMulticam(Cursor const& inValue);

// Refuses an angle that a stack's children do not have; a note reports a name that several have.
void CheckAngles(Cursor const& inStack, Stack const& inRead);

} // namespace SonaroHost::Otio
