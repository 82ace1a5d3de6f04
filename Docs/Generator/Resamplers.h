#pragma once

#include <string>

namespace SonaroDocuments
{

// How clean the resamplers are at common rates, as a table of decibels in Markdown.
std::string DescribeResamplers();

} // namespace SonaroDocuments
