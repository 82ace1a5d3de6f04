#pragma once

#include "SonaroHost/Sequence/Description.h"

#include <memory>
#include <vector>

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// The media of sequences, by the numbers that clips have for them.
using MediaList = std::vector<std::shared_ptr<SonaroHost::Sequence::Media const>>;

// Reads what sonaro._sequence makes of sequences: dicts, nested ones before those that they stand in, which name them by
// their numbers. Gives the last one, the outermost. Throws a HostError for an effect or a layout that there is not.
std::shared_ptr<SonaroHost::Sequence::Description const> ReadSequences(
	pybind11::list const& inSequences, MediaList const& inMedia, double inSampleRate);

} // namespace SonaroPython
