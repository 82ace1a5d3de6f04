#include "SvgText.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace SonaroDocuments
{

std::string Format(char const* inFormat, ...)
{
	std::array<char, 512> text{};
	va_list values;
	va_start(values, inFormat);
	std::vsnprintf(text.data(), text.size(), inFormat, values);
	va_end(values);
	return text.data();
}

} // namespace SonaroDocuments
