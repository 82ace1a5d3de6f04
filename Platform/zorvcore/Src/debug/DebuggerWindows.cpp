#include "zorvcore/debug/DebugMonitor.h"

#include <windows.h>

namespace zorvcore::debug
{

bool IsDebuggerAttached()
{
	return IsDebuggerPresent() != 0;
}

} // namespace zorvcore::debug
