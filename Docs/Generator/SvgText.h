#pragma once

#include <string>

namespace SonaroDocuments
{

// As printf; up to 511 characters.
[[gnu::format(printf, 1, 2)]] std::string Format(char const* inFormat, ...);

} // namespace SonaroDocuments
