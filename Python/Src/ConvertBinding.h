#pragma once

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// What makes samples of samples: resample and stretch.
void AddConversions(pybind11::module_& ioModule);

} // namespace SonaroPython
