#pragma once

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// The class Cancel, and run(), which runs a command.
void AddRun(pybind11::module_& ioModule);

} // namespace SonaroPython
