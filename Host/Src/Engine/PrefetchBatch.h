#pragma once

#include "Sonaro/IAudioPrefetchNotify.h"

#include <condition_variable>
#include <mutex>
#include <optional>

namespace SonaroHost
{

// Hears the end of one batch of prefetch requests for those who wait for it.
//
// Threads  Any.
class PrefetchBatch final : public SN::Implements<PrefetchBatch, SN::AudioPrefetch::IAudioPrefetchNotify>
{
public:
	static constexpr SN::Identifier<PrefetchBatch> kIdentifier{0x5b0e6f3c94d7a218ull, 0xe31f80c26a97d54bull};

	struct End
	{
		// False when the batch was given up.
		bool mWasRead = false;
		// The time since this object was made.
		long long mElapsedNanos = 0;
	};

	PrefetchBatch();

	// The stamp for the batch.
	unsigned long long GetTimeStamp() const { return mTimeStamp; }

	void Complete(int inResult) override;

	End Wait();

private:
	unsigned long long mTimeStamp;
	std::mutex mMutex;
	std::condition_variable mHasEnded;
	std::optional<End> mEnd;
};

} // namespace SonaroHost
