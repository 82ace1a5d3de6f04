#include "ServeSettings.h"

#include "SonaroHost/Base/HostError.h"

namespace SonaroCommand::Serve
{

int RunServer(ServeSettings const&)
{
	SonaroHost::Refuse(
		"this program cannot serve: cpp-httplib was not built in with SONARO_WITH_SERVE, which "
		"needs libcpp-httplib-dev");
}

} // namespace SonaroCommand::Serve
