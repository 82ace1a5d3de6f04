#pragma once

#include "SonaroHost/Binaural/Ears.h"

#include <filesystem>
#include <memory>
#include <string>

namespace SonaroHost
{

// Reads the ears of a listener from a SOFA file (AES69) of the convention SimpleFreeFieldHRIR and fits filters of a sound
// field to them, which takes about a second. Throws a HostError for a file that cannot be read, that has another
// convention or that holds no usable measurements, and where SOFA files were not built in.
// Threads: any.
std::shared_ptr<Ears const> ReadSofaEars(std::filesystem::path const& inPath);

// The library that reads SOFA files, with its version; empty where none was built in.
std::string DescribeSofaLibrary();

} // namespace SonaroHost
