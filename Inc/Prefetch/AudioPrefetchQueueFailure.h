#pragma once

#include "zorvcore/config/Exceptions.h"

namespace SN::AudioPrefetch
{

// The prefetch queue has no executor to run on.
class ZORV_API AudioPrefetchQueueFailure : public zorvcore::config::zorv_exception
{
public:
	AudioPrefetchQueueFailure(char const* inFile, int inLine);
	AudioPrefetchQueueFailure(AudioPrefetchQueueFailure const&) noexcept;
	AudioPrefetchQueueFailure& operator=(AudioPrefetchQueueFailure const&) noexcept;
	~AudioPrefetchQueueFailure() override;
};

} // namespace SN::AudioPrefetch
