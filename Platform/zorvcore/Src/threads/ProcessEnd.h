#pragma once

namespace zorvcore::threads
{

// Calls a function once when the process ends in an orderly way, or before that when the library is unloaded, while the
// other threads still run. Called once in a process.
void CallAtProcessEnd(void (*inCall)());

} // namespace zorvcore::threads
