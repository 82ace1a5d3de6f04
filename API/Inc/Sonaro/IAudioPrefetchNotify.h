#pragma once

#include "Sonaro/Types.h"

namespace SN::AudioPrefetch
{

// Hears the end of a batch of prefetch requests, once for each batch that it was given with.
class SONARO_API IAudioPrefetchNotify : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioPrefetchNotify> kIdentifier{
		0x1c1c876d2cd262b4ull, 0xa0c38f54538e45e3ull};

	// On the prefetch thread. inResult: kSuccess when every request had its turn, zorvcore::eWaitFailed
	// when the batch was cancelled or given up because the disk was too slow.
	virtual void Complete(int inResult) = 0;

	~IAudioPrefetchNotify() override = default;
};

} // namespace SN::AudioPrefetch
