#pragma once

#include <stop_token>

namespace SonaroCommand
{

// The signals that ask the process to end: interrupt, terminate, hang-up. Those that were ignored at the
// start stay so.
//
// Jobs     They are asked to stop, and clear up after themselves.
// Others   Reading, laying out and drawing partly happen in libraries that cannot be stopped. When the
//          process still lives half a second later, or is asked again, a thread of its own removes all that
//          is temporary.
// Status   In both cases the process ends by the signal itself, so that a shell sees it.
class StopSignals
{
public:
	// Called once, before there are other threads.
	static void Watch();

	// Requested by the first of the signals; where a Caller runs the command, by the caller alone.
	static std::stop_token GetToken();

	// Ends the process by that signal, or throws CommandStopped where a Caller runs the command. What was begun has been
	// cleared away.
	[[noreturn]] static void EndProcess();
};

} // namespace SonaroCommand
