#pragma once

#include <atomic>

namespace SonaroCommand::Serve
{

// What all connections of a server heed.
// Threads: any.
struct ServerState
{
	// All waits end soon.
	std::atomic<bool> mIsEnding = false;
	// Clients wait for a connection, so that the slow ones are dropped earlier.
	std::atomic<bool> mIsCrowded = false;
};

} // namespace SonaroCommand::Serve
