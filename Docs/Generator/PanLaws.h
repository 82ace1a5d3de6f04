#pragma once

#include <string>

namespace SonaroDocuments
{

// The gains of the panners over their controls and the power in all channels, as SVG.
std::string DrawPanLaws();

} // namespace SonaroDocuments
