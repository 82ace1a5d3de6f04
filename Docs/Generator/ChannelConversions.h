#pragma once

#include <string>

namespace SonaroDocuments
{

// The conversions between the common layouts as tables of gains, in Markdown.
std::string DescribeConversions();

} // namespace SonaroDocuments
