#pragma once

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// The class OpenTimeline, of which samples are read.
void AddTimeline(pybind11::module_& ioModule);

} // namespace SonaroPython
