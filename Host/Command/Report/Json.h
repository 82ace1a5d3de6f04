#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace SonaroCommand
{

// Keys in the order in which they were set.
using Json = nlohmann::ordered_json;

// Bytes of file names that are no UTF-8 are replaced.
inline std::string ToText(Json const& inJson)
{
	return inJson.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace SonaroCommand
