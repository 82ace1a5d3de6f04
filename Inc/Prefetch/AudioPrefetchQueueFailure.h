#pragma once

#include "zorvcore/config/Exceptions.h"

namespace SN::AudioPrefetch
{

// The prefetch queue has no executor to run on.
class ZORV_API AudioPrefetchQueueFailure : public zorvcore::config::zorv_exception
{
public:
	AudioPrefetchQueueFailure(char const* inFile, int inLine)
		: zorv_exception(inFile, inLine, zorvcore::eUnspecifiedFailure,
			  "CreateAsyncThreadedExecutor failed in KTL::AudioPrefetchQueue")
	{
	}
};

} // namespace SN::AudioPrefetch
