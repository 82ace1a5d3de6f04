#include "zorvcore/utility/MachineException.h"

#include "zorvcore/debug/Assert.h"

#include <cstdio>

namespace zorvcore::utility::exceptions
{

int InternalHiddenFilterWindowsSEHException(
	unsigned inCode, bool inReport, char const* inFile, int inLine, char const* inText) noexcept
{
	if (inReport)
	{
		char message[256];
		std::snprintf(message, sizeof(message), "Machine exception 0x%08X in %s", inCode, inText);
		debug::DoSimpleAssert(inFile, inLine, message);
	}
	return kExceptionHandled;
}

} // namespace zorvcore::utility::exceptions
