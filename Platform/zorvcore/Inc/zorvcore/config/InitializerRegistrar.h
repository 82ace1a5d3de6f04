#pragma once

#include "zorvcore/Export.h"

#include <string>

namespace zorvcore::config
{

// Registers a module's start and stop; a static object of the module. While modules are running, which
// they are from the start of the process, making one starts the module at once; its destructor stops
// the module and takes it off the list.
//
// Start    Returns whether it worked. False or an exception is reported and counts as not started: the
//          module's stop will not be called.
// Stop     Is followed by WaitForAsyncDestruction, so that nothing of the module is destroyed later on a
//          background thread. What dies there may make and destroy registrars. An exception is reported.
// Threads  Any; starts and stops run one at a time, and may themselves make further registrars.
class ZORV_API InitializerRegistrar
{
public:
	using StartFunction = bool (*)();
	using StopFunction = void (*)();

	// inFlags: reserved, 0. The functions may be null.
	InitializerRegistrar(char const* inName, unsigned inFlags, StartFunction inStart, StopFunction inStop);
	InitializerRegistrar(InitializerRegistrar const&) = delete;
	InitializerRegistrar& operator=(InitializerRegistrar const&) = delete;
	~InitializerRegistrar();

	bool IsStarted() const;

private:
	friend class ModuleList;

	void Start();
	// Whether it was running.
	bool Stop();

	std::string const mName;
	StartFunction const mStart;
	StopFunction const mStop;
	bool mStarted = false;
};

// These serve hosts and tests that stop all modules and start them again. Stopping goes in the reverse order of
// registration, starting in that order; what is started, or stopped, already stays so. Modules that register between
// the two wait for the start.
ZORV_API void StopRegisteredModules();
ZORV_API void StartRegisteredModules();

} // namespace zorvcore::config
