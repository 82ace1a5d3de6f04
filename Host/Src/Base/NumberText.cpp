#include "SonaroHost/Base/NumberText.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace SonaroHost
{

std::string FormatNumber(double inNumber)
{
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.6g", inNumber);
	return text.data();
}

std::string FormatAllDigits(double inNumber)
{
	std::array<char, 32> text{};
	auto const end = std::to_chars(text.data(), text.data() + text.size(), inNumber).ptr;
	return {text.data(), end};
}

} // namespace SonaroHost
