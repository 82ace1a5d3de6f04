#pragma once

#include <string>

namespace SonaroCommand
{

// What this build of the program can do, for people or, as JSON, for machines.
std::string ListFeaturesForPeople();
std::string ListFeaturesForMachines();

} // namespace SonaroCommand
