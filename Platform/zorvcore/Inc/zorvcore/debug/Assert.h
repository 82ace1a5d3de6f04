#pragma once

#include "zorvcore/Export.h"

#include <functional>
#include <string_view>

namespace zorvcore::debug
{

// One report of something that should not have happened.
struct AssertReport
{
	// Base name of the source file; empty with line 0 where the place is not known.
	std::string_view mFile;
	int mLine = 0;
	std::string_view mMessage;
};

// Called on the thread that reports, with no lock held. The views last for the call.
using AssertHandler = std::function<void(AssertReport const&)>;

// Reports and goes on: it calls the handler, and never aborts or throws. Any thread; allocates
// nothing itself.
ZORV_API void DoSimpleAssert(std::string_view inFile, int inLine, std::string_view inMessage) noexcept;

// Replaces the handler and returns the one before it. The default, also set by an empty function, writes
// to the error stream in debug builds and drops the text in others. A report that is under way on
// another thread may still reach the old handler.
ZORV_API AssertHandler SetAssertHandler(AssertHandler inHandler);

} // namespace zorvcore::debug
