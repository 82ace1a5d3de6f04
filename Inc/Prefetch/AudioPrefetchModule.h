#pragma once

// The life of the prefetch service, which is that of the engine's module. Not while the other is called.
namespace SN::AudioPrefetch
{

// Throws when the service cannot be made. No effect while it runs.
void Startup();

// Gives up what is queued, waits until everybody concerned was notified, and ends the thread. No effect
// while the service does not run.
void Shutdown();

} // namespace SN::AudioPrefetch
