#include "SonaroHost/Engine/EngineFactory.h"

#include "SonaroHost/Base/HostError.h"

#include <array>
#include <cstdio>
#include <string>

namespace SonaroHost
{

void CheckEngineResult(int inResult, char const* inWhat)
{
	if (!SN::ResultSucceeded(inResult))
	{
		std::array<char, 16> code{};
		std::snprintf(code.data(), code.size(), "0x%08X", static_cast<unsigned>(inResult));
		throw HostError(HostError::Kind::kEngine,
			std::string("the render engine could not create ") + inWhat + " (result " + code.data() + ")");
	}
}

} // namespace SonaroHost
