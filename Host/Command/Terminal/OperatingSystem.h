#pragma once

namespace SonaroCommand
{

// What the command asks of the operating system: nothing else does so, but StopSignals.

bool IsErrorOutputTerminal();
// Whether the program reads keys from a terminal and shows its output on one.
bool AreStandardStreamsTerminal();

// Columns of the terminal that the error output goes to; 80 when it does not say.
int GetTerminalWidth();

// How many processor cores the process may use, at least 1.
unsigned CountUsableCores();

// Raises the limit of open files as far as the system allows: a timeline may have thousands of recordings.
void AllowManyFiles();

// A standard stream that is closed at the start stays one that fails, whatever is opened later: the next file would
// get its number and what is meant for the stream.
void HoldStandardStreams();

// A write beyond the limit of a file's size, or to a pipe that nobody reads any more, then fails like one to a full
// disk, instead of ending the process.
void MakeFailedWritesErrors();

} // namespace SonaroCommand
