#pragma once

#include "SonaroHost/Sequence/Chain.h"
#include "SonaroHost/Sequence/Description.h"

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// Reads what sonaro._sequence makes of stages and curves: plain tuples and lists, times in ticks. Curves are
// (value, points, scale), points (time, value, interpolation), enumerations their numbers; None stands for what is not
// there.

SonaroHost::Sequence::NumberParameter ReadNumber(pybind11::handle const& inParameter);
SonaroHost::Sequence::SwitchParameter ReadSwitch(pybind11::handle const& inParameter);
SonaroHost::Sequence::Fade ReadFade(pybind11::handle const& inFade);

// inSampleRate, inChannels: those of what the chain belongs to. Throws a HostError for an effect that is not there or does
// not fit.
SonaroHost::Sequence::Chain ReadChain(
	pybind11::dict const& inOwner, double inSampleRate, std::size_t inChannels);

} // namespace SonaroPython
