#include "Prefetch/AudioPrefetchQueueFailure.h"

namespace SN::AudioPrefetch
{

AudioPrefetchQueueFailure::AudioPrefetchQueueFailure(char const* inFile, int inLine)
	: zorv_exception(inFile, inLine, zorvcore::eUnspecifiedFailure,
		  "CreateAsyncThreadedExecutor failed in KTL::AudioPrefetchQueue")
{
}

AudioPrefetchQueueFailure::AudioPrefetchQueueFailure(AudioPrefetchQueueFailure const&) noexcept = default;
AudioPrefetchQueueFailure& AudioPrefetchQueueFailure::operator=(
	AudioPrefetchQueueFailure const&) noexcept = default;
AudioPrefetchQueueFailure::~AudioPrefetchQueueFailure() = default;

} // namespace SN::AudioPrefetch
