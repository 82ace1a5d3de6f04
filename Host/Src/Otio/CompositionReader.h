#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/Model.h"

#include <cstddef>
#include <vector>

namespace SonaroHost::Otio
{

// inDepth: how many compositions stand around it. What it is within decides where its tracks can go: the
// caller checks that with CheckRouting.
void ReadStack(Cursor const& inObject, std::size_t inDepth, Stack& outStack);
void ReadTrack(Cursor const& inObject, std::size_t inDepth, Track& outTrack);

// Refuses outputs and sends of the tracks among these children that name none of the submixes.
void CheckRouting(std::vector<Composable> const& inChildren, std::vector<Submix> const& inSubmixes);

} // namespace SonaroHost::Otio
