#include "zorvcore/debug/DebugMonitor.h"

#include <fstream>
#include <string>

namespace zorvcore::debug
{

bool IsDebuggerAttached()
{
	std::ifstream status("/proc/self/status");
	std::string key;
	while (status >> key)
	{
		if (key == "TracerPid:")
		{
			long tracer = 0;
			return status >> tracer && tracer != 0;
		}
	}
	return false;
}

} // namespace zorvcore::debug
