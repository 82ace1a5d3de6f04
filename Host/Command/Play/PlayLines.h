#pragma once

#include "PlaySession.h"

#include <chrono>

namespace SonaroCommand
{

// A playback without a screen: a line a second on the standard output, or an event of JSON in a line of its own.
class PlayLines
{
public:
	PlayLines(PlaySession& ioSession, bool inAsJson)
		: mSession(ioSession),
		  mAsJson(inAsJson)
	{
	}

	// Plays until the end, or until the process is asked to end. Throws a HostError when playing fails.
	void Run();

private:
	using State = SonaroHost::Playback::PlaybackState;

	void PrintStart(State const& inState);
	void PrintPlace(State const& inState);
	void PrintEvents();
	void PrintEnd(State const& inState);
	// Whether what was played is heard to its end.
	static bool HasEnded(State const& inState);

	PlaySession& mSession;
	bool mAsJson;
};

} // namespace SonaroCommand
