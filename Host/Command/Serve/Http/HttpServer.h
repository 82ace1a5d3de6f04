#pragma once

#include "ServerState.h"

#include <httplib.h>

#include <atomic>
#include <string>

namespace SonaroCommand::Serve
{

// The library's server on connections that keep their limits. A request has its Range as the header kRangeHeader, which no
// client can set.
class HttpServer final : public httplib::Server
{
public:
	static constexpr char const* kRangeHeader = "Sonaro-Range";

	HttpServer();

	// Returns the port; inPort 0 for any that is free. Throws a HostError.
	int Bind(std::string const& inHost, int inPort);
	// Serves until Stop, and returns once all connections have ended.
	void Serve();
	// Answers what comes over a socket until it ends, and closes it. Any thread.
	void ServeConnection(socket_t inSocket);
	// Any thread.
	void Stop();
	std::atomic<bool> const& IsEnding() const { return mState.mIsEnding; }

private:
	bool process_and_close_socket(socket_t inSocket) override
	{
		ServeConnection(inSocket);
		return true;
	}

	ServerState mState;
};

} // namespace SonaroCommand::Serve
