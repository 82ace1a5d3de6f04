#include "Http/Access.h"
#include "Http/HttpServer.h"
#include "Report/Json.h"
#include "Report/TimelineNotes.h"
#include "Routes.h"
#include "ServeSettings.h"
#include "SonaroHost/Base/HostError.h"
#include "Terminal/Console.h"
#include "Terminal/StopSignals.h"

#include <stop_token>

namespace SonaroCommand::Serve
{

namespace
{

void Announce(ServeSettings const& inSettings, int inPort)
{
	bool const isIpv6 = inSettings.mHost.find(':') != std::string::npos;
	std::string const host = isIpv6 ? "[" + inSettings.mHost + "]" : inSettings.mHost;
	std::string const address = "http://" + host + ":" + std::to_string(inPort) + "/";
	if (inSettings.mAsJson)
	{
		PrintResult(ToText({{"address", address}, {"port", inPort}}));
	}
	else if (!inSettings.mIsQuiet)
	{
		PrintResult("serving " + inSettings.mRequest.mInput.string() + " at " + address +
					(inSettings.mToken.empty() ? "" : "?token=TOKEN") + "\nCtrl-C ends it.\n");
	}
}

void WarnOfTimeline(SonaroHost::Serve::ServedTimeline const& inTimeline)
{
	WarnOfNotes(inTimeline.GetSequence().mMissing, inTimeline.GetNotes());
}

void WarnOfCache(std::filesystem::path const& inFolder, std::string const& inObstacle)
{
	if (!inObstacle.empty())
	{
		PrintWarning("waveforms are not kept in " + SonaroHost::QuotePath(inFolder) + ": " + inObstacle +
					 "; choose a folder that can be written with --cache, or make room there");
	}
}

} // namespace

int RunServer(ServeSettings const& inSettings)
{
	HttpServer server;
	Routes routes(inSettings);
	WarnOfTimeline(*routes.GetTimeline());
	WarnOfCache(inSettings.mCacheFolder, routes.FindCacheObstacle());
	int const port = server.Bind(inSettings.mHost, inSettings.mPort);
	routes.Enter(server, Access(inSettings.mToken, port));
	Announce(inSettings, port);
	std::stop_callback const stop(StopSignals::GetToken(), [&server] { server.Stop(); });
	server.Serve();
	return 0;
}

} // namespace SonaroCommand::Serve
