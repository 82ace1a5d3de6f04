#pragma once

#include "SonaroHost/Serve/ServedTimeline.h"

#include <filesystem>
#include <string>

namespace SonaroCommand::Serve
{

// What "sonaro serve" was asked for.
struct ServeSettings
{
	SonaroHost::Serve::ServeRequest mRequest;
	std::string mHost = "127.0.0.1";
	// 0 for any that is free.
	int mPort = 0;
	// Empty for none.
	std::string mToken;
	// Where peaks are kept.
	std::filesystem::path mCacheFolder;
	bool mIsQuiet = false;
	bool mAsJson = false;
};

// Serves until the process is asked to end. Throws a HostError; where no server was built in, one that says what brings
// it.
int RunServer(ServeSettings const& inSettings);

} // namespace SonaroCommand::Serve
