#pragma once

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// What measures samples: the classes LoudnessMeter and PeakGatherer, and columns of sound files.
void AddMeasures(pybind11::module_& ioModule);

} // namespace SonaroPython
