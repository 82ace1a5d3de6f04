#include "ProcessEnd.h"

#include <atomic>

namespace zorvcore::threads
{

namespace
{

// Statics of libraries go while all threads run.
struct AtEnd
{
	~AtEnd()
	{
		if (auto* const call = mCall.load(std::memory_order_acquire))
		{
			call();
		}
	}

	std::atomic<void (*)()> mCall = nullptr;
};

AtEnd sAtEnd;

} // namespace

void CallAtProcessEnd(void (*inCall)())
{
	sAtEnd.mCall.store(inCall, std::memory_order_release);
}

} // namespace zorvcore::threads
