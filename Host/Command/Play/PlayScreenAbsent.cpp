#include "PlayScreen.h"

namespace SonaroCommand
{

bool CanShowPlayScreen()
{
	return false;
}

bool ShowPlayScreen(PlaySession&, std::string const&)
{
	return false;
}

} // namespace SonaroCommand
