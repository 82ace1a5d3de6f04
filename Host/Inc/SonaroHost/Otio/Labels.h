#pragma once

#include "SonaroHost/Otio/Model.h"

#include <string>
#include <string_view>

// What parts of a timeline are called in messages, reports and names of files.
namespace SonaroHost::Otio
{

// The name; without one, what it is and its number among the children around it, from 1, which ends its JSON pointer:
// "clip 3". One that is no child is called by inKind alone.
std::string MakeLabel(std::string const& inName, std::string const& inKind, std::string_view inPlace);

// A name; tracks without one are "track 2 (A)", "(V)" for one of kind Video, and nothing for other kinds.
std::string GetLabel(Track const& inTrack);
std::string GetLabel(Stack const& inStack);
std::string GetLabel(Clip const& inClip);

// "Dialogue / Scene 4": a label after those of what it stands in.
std::string AppendLabel(std::string const& inAround, std::string const& inLabel);

} // namespace SonaroHost::Otio
