#include "SonaroHost/Base/NumberText.h"

#include <array>
#include <cstdio>

namespace SonaroHost
{

std::string FormatNumber(double inNumber)
{
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.6g", inNumber);
	return text.data();
}

} // namespace SonaroHost
