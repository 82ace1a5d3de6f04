#include "PlayScreen.h"

namespace SonaroCommand
{

bool CanShowPlayScreen()
{
	return false;
}

void ShowPlayScreen(PlaySession&, std::string const&)
{
}

} // namespace SonaroCommand
