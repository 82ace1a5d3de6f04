#pragma once

namespace SonaroCommand
{

// What the command asks of the operating system: nothing else does so.

bool IsErrorOutputTerminal();

// Columns of the terminal behind the error output; 80 when it does not tell.
int GetTerminalWidth();

// A write beyond the limit of a file's size then fails like one to a full disk, instead of ending the
// process.
void MakeFileSizeLimitAnError();

// While it lives, the signals that ask a process to end (interrupt, hang-up, terminate) are only noted,
// so that what was begun can be cleared away. Signals that were ignored before stay ignored. One at a
// time.
class InterruptGuard
{
public:
	InterruptGuard();
	~InterruptGuard();
	InterruptGuard(InterruptGuard const&) = delete;
	InterruptGuard& operator=(InterruptGuard const&) = delete;

	bool IsInterrupted() const;

	// Ends the process by the noted signal, as if it had not been caught, so that a shell sees it.
	[[noreturn]] void EndProcess();
};

} // namespace SonaroCommand
