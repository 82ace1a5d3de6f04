#pragma once

#include "zorvcore/Export.h"

namespace zorvaudiofilters
{

// The version of this library, "major.minor.patch": of the filter data that it carries for the engine.
ZORV_API char const* GetVersion();

} // namespace zorvaudiofilters
