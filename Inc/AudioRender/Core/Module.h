#pragma once

namespace SN
{

// Starts the engine's module unless it was started before. Its library does so when it is loaded. In a static
// build this is what links the module's start, and what starts it for those who call before main. Any thread;
// not from within the start.
void EnsureModule();

} // namespace SN
