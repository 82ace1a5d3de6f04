#pragma once

namespace SonaroCommand
{

// Prints that there is not enough memory, without needing any.
void ReportLostMemory();

// From now on a process that runs out of memory where nothing can be thrown, such as in a library, removes its temporary
// files, says so and ends with the exit code of a failure.
void EndInOrderWithoutMemory();

} // namespace SonaroCommand
