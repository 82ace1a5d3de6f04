#pragma once

#include <chrono>
#include <semaphore>

namespace SonaroHost::Playback
{

// Lets one thread sleep until another one has news for it. Wake neither locks nor allocates, so that a device may call
// it.
//
// N1 gives news. N2 takes all that there is before the work, so that what comes during the work brings another round.
//
// Threads  WaitFor: one. Wake: any.
class WakeUp
{
public:
	void Wake() noexcept { mNews.release(); }

	// Returns at once when there was news since the last call.
	void WaitFor(std::chrono::milliseconds inLongest)
	{
		if (mNews.try_acquire_for(inLongest))
		{
			while (mNews.try_acquire())
			{
			}
		}
	}

private:
	std::counting_semaphore<> mNews{0};
};

} // namespace SonaroHost::Playback
