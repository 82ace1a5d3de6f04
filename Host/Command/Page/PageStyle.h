#pragma once

#include <string>

namespace SonaroCommand::Page
{

// The style sheet of pages: light and dark by the reader's choice, for any width, and for paper. It refers to nothing
// outside.
std::string GetPageStyle();

} // namespace SonaroCommand::Page
