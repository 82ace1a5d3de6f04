#pragma once

#include "zorvcore/Export.h"

namespace zorvcore::utility::exceptions
{

// The answer of an exception filter that says: handled, go on after the guarded code.
constexpr int kExceptionHandled = 1;

// Turns a machine exception caught in foreign code into a handled event and returns kExceptionHandled.
//
// inCode    the machine's code of the exception
// inReport  whether to report it through DoSimpleAssert
// inText    names the guarded operation
ZORV_API int InternalHiddenFilterWindowsSEHException(
	unsigned inCode, bool inReport, char const* inFile, int inLine, char const* inText) noexcept;

} // namespace zorvcore::utility::exceptions
