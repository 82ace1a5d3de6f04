#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Binaural/SofaEars.h"

// What stands in for Binaural/Sofa where libmysofa was not built in.
namespace SonaroHost
{

std::shared_ptr<Ears const> ReadSofaEars(std::filesystem::path const& inPath)
{
	RefuseFile(inPath, "cannot be read, since this program reads no SOFA files",
		"build it with SONARO_WITH_SOFA, which needs libmysofa-dev and libeigen3-dev");
}

std::string DescribeSofaLibrary()
{
	return {};
}

} // namespace SonaroHost
