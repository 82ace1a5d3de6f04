#include "zorvcore/debug/TypeName.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace zorvcore::debug
{

std::string GetTypeName(std::type_info const& inType)
{
	int status = 0;
	std::unique_ptr<char, void (*)(void*)> const name(
		abi::__cxa_demangle(inType.name(), nullptr, nullptr, &status), &std::free);
	return name ? name.get() : inType.name();
}

} // namespace zorvcore::debug
