#pragma once

#include <set>
#include <string>

namespace SonaroHost::Testing
{

// Expects markup without an error: elements that are closed in turn, all of those names, attributes in quotes, each
// once, no handlers and no addresses but names of XML, and ids that differ.
void ExpectMarkup(std::string const& inText, std::set<std::string> const& inElements);

} // namespace SonaroHost::Testing
