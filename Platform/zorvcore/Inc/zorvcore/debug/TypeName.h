#pragma once

#include "zorvcore/Export.h"

#include <string>
#include <typeinfo>

namespace zorvcore::debug
{

// The type's name as it stands in the source, with its namespaces: "SN::IAudioFilter".
ZORV_API std::string GetTypeName(std::type_info const& inType);

} // namespace zorvcore::debug
