#pragma once

#include <exception>

#include <pybind11/pybind11.h>

namespace SonaroPython
{

// The exception of Python for one of the host library or of a command that was stopped, made by sonaro._errors.make() of
// the parts of its message; null for any other.
pybind11::object MakeError(std::exception_ptr const& inException);

// Has exceptions that MakeError knows raised as what it makes of them.
void AddErrors(pybind11::module_& ioModule);

} // namespace SonaroPython
