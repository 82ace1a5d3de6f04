#pragma once

#include "SonaroHost/Files/Temporary.h"

#include <filesystem>
#include <list>

namespace SonaroHost
{

// A folder for outputs, made with the folders above it where there is none. At the end, those that it made and that are
// still empty are gone again.
class OutputFolder
{
public:
	// Throws a HostError when it cannot be made.
	explicit OutputFolder(std::filesystem::path const& inPath);
	OutputFolder(OutputFolder const&) = delete;
	OutputFolder& operator=(OutputFolder const&) = delete;

private:
	// The innermost comes first, in the order of removal.
	std::list<Temporary> mMade;
};

} // namespace SonaroHost
