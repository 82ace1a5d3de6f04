#pragma once

#include "PlaySession.h"

namespace SonaroCommand
{

// Whether a screen was built in, and the program has a terminal for it.
bool CanShowPlayScreen();

// Shows a playback on the terminal, where keys control it, until q or until the process is asked to end. False, and
// nothing is done, on a terminal of an unknown kind.
bool ShowPlayScreen(PlaySession& ioSession, std::string const& inTitle);

} // namespace SonaroCommand
