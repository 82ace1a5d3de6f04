#pragma once

#include <string>
#include <vector>

namespace SonaroCommand
{

// Lines of columns, each as wide as its widest cell, the last one open to the right; indented by two blanks. Columns
// that hold numbers and times below the first row, which may be titles, stand to the right.
std::string FormatTable(std::vector<std::vector<std::string>> const& inRows);

} // namespace SonaroCommand
