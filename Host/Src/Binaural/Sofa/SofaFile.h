#pragma once

#include "EarMeasurements.h"

#include <filesystem>

namespace SonaroHost
{

// Reads a SOFA file of the convention SimpleFreeFieldHRIR by libmysofa. Throws a HostError for one that cannot be read,
// that has another convention, or whose values are out of range.
EarMeasurements ReadSofaFile(std::filesystem::path const& inPath);

} // namespace SonaroHost
