#pragma once

#include "ServerState.h"

#include <httplib.h>

#include <atomic>
#include <regex>
#include <string>
#include <vector>

namespace SonaroCommand::Serve
{

// The library's server on connections that keep their limits. A request has its Range as the header kRangeHeader, which no
// client can set.
class HttpServer final : public httplib::Server
{
public:
	static constexpr char const* kRangeHeader = "Sonaro-Range";

	HttpServer();

	// As the library's, for paths that match all of a pattern. Before Serve.
	void Enter(std::string const& inMethod, std::string const& inPattern, Handler inHandler);
	// What the header Allow says of a path: "GET, HEAD"; empty where there is nothing of that name.
	std::string ListMethods(std::string const& inPath) const;

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

	struct Route
	{
		std::string mMethod;
		std::regex mPattern;
	};

	ServerState mState;
	std::vector<Route> mRoutes;
};

} // namespace SonaroCommand::Serve
