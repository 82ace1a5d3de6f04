#pragma once

#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <string>

namespace SonaroHost::Otio
{

// TimelineSequence::mWhySilent of a sequence whose rows are complete. inStack: the timeline's.
std::string FindWhySilent(Stack const& inStack, TimelineSequence const& inSequence);

} // namespace SonaroHost::Otio
