#pragma once

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// The class OpenSequence, made of what sonaro._sequence makes of dataclasses.
void AddSequence(pybind11::module_& ioModule);

} // namespace SonaroPython
