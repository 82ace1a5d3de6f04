#include "AudioRender/Source/AudioGeneratorSource.h"
#include "Sonaro/AudioPrefetch.h"
#include "Support/Answers.h"
#include "Support/Fakes.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/ResultCodes.h"
#include "zorvcore/threads/Gate.h"
#include "zorvcore/utility/HighPrecisionTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;
using AudioPrefetch::IAudioPrefetchNotify;
using zorvcore::classref::MakeObject;
using zorvcore::threads::Gate;

// Long enough that a busy machine does not turn half an interval into a whole one.
constexpr std::chrono::milliseconds kInterval(1000);
constexpr unsigned kChunk = 256;

// Keeps the result of a batch and lets a test wait for it.
class Waiter final : public Testing::Answers<IAudioPrefetchNotify>
{
public:
	void Complete(int inResult) override
	{
		mResult.store(inResult);
		mGate.Open();
	}
	int Wait()
	{
		mGate.PassThrough();
		return mResult.load();
	}

private:
	Gate mGate{false};
	std::atomic<int> mResult{0};
};

// A generator that takes its time, as from a slow disk.
InterfaceRef<AudioGeneratorSource> MakeSlowSource(std::chrono::milliseconds const& inPerChunk)
{
	auto const generator = MakeObject<FakeGenerator>(2,
		[inPerChunk](unsigned long long inChannel, long long inFrame)
		{
			if (inChannel == 0 && inFrame % kChunk == 0)
			{
				std::this_thread::sleep_for(inPerChunk);
			}
			return PositionSample(inChannel, inFrame);
		});
	return AudioGeneratorSource::Create(generator, kChunk, TickTime(16 * kChunk, k48000Hz));
}

// Asks for one chunk, wanted now, and waits for the answer.
int PrefetchChunk(AudioGeneratorSource& ioSource, long long inChunk)
{
	auto const waiter = MakeObject<Waiter>();
	AudioPrefetch::PrefetchAudio(AudioPrefetch::PlaybackPriority,
		{{AudioPrefetch::PrefetchRequest::kKindRead, InterfaceRef<Unknown>::FromThis(&ioSource),
			TickTime(inChunk * kChunk, k48000Hz), kChunk}},
		zorvcore::utility::HighPrecisionTime::GetCurrentTimeStamp(), waiter);
	return waiter->Wait();
}

bool IsHeard(AudioGeneratorSource& ioSource, long long inChunk)
{
	dsp::AudioBuffer buffer(2, kChunk);
	ioSource.ReadPrefetchedAudio(TickTime(inChunk * kChunk, k48000Hz), buffer);
	return !buffer.IsChannelSilent(0) && buffer.GetChannel(0)[7] == PositionSample(0, inChunk * kChunk + 7);
}

// A batch is measured behind its notice.
bool BecomesBehind()
{
	auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
	while (std::chrono::steady_clock::now() < deadline)
	{
		if (AudioPrefetch::WasPrefetchBehind())
		{
			return true;
		}
		std::this_thread::sleep_for(std::chrono::milliseconds(1));
	}
	return false;
}

class SlowDisk : public ::testing::Test
{
protected:
	SlowDisk()
	{
		AudioPrefetch::NotifyPrefetchIntervalChanged(
			TickTime::FromSeconds(static_cast<double>(kInterval.count()) * 1e-3));
		Forget();
	}
	~SlowDisk() override
	{
		AudioPrefetch::NotifyPrefetchIntervalChanged(kTimeZero);
		Forget();
	}

	static void Forget()
	{
		AudioPrefetch::Reset();
		AudioPrefetch::WasPrefetchBehind();
	}
};

TEST_F(SlowDisk, KeepsUpAtHalfAnInterval)
{
	auto const source = MakeSlowSource(kInterval / 2);
	for (long long chunk = 0; chunk < 2; ++chunk)
	{
		EXPECT_EQ(PrefetchChunk(*source, chunk), kSuccess);
		EXPECT_TRUE(IsHeard(*source, chunk));
	}
	EXPECT_FALSE(AudioPrefetch::WasPrefetchBehind());
}

TEST_F(SlowDisk, IsBehindAtTwoIntervalsGivesUpABatchAndRecovers)
{
	auto const slow = MakeSlowSource(2 * kInterval);
	EXPECT_EQ(PrefetchChunk(*slow, 0), kSuccess) << "what was begun is read to its end";
	EXPECT_TRUE(IsHeard(*slow, 0));
	EXPECT_TRUE(BecomesBehind());
	EXPECT_FALSE(AudioPrefetch::WasPrefetchBehind()) << "told once";

	EXPECT_EQ(PrefetchChunk(*slow, 1), zorvcore::eWaitFailed);
	EXPECT_FALSE(IsHeard(*slow, 1));
	EXPECT_TRUE(AudioPrefetch::WasPrefetchBehind()) << "a batch that is given up counts";

	// That batch was quick to give up, so the next one is read again.
	auto const quick = MakeSlowSource(std::chrono::milliseconds(0));
	EXPECT_EQ(PrefetchChunk(*quick, 0), kSuccess);
	EXPECT_TRUE(IsHeard(*quick, 0));
	EXPECT_FALSE(AudioPrefetch::WasPrefetchBehind());
}

TEST_F(SlowDisk, AtAnIntervalPerBatchTheBacklogIsGivenUp)
{
	auto const source = MakeSlowSource(kInterval);
	std::vector<InterfaceRef<Waiter>> waiters;
	for (long long chunk = 0; chunk < 4; ++chunk)
	{
		waiters.push_back(MakeObject<Waiter>());
		AudioPrefetch::PrefetchAudio(AudioPrefetch::PlaybackPriority,
			{{AudioPrefetch::PrefetchRequest::kKindRead, source, TickTime(chunk * kChunk, k48000Hz), kChunk}},
			zorvcore::utility::HighPrecisionTime::GetCurrentTimeStamp(), waiters.back());
	}
	// All were wanted at once: the second ends two intervals late, so that what comes behind it is not read.
	EXPECT_EQ(waiters[0]->Wait(), kSuccess);
	waiters[1]->Wait();
	EXPECT_EQ(waiters[2]->Wait(), zorvcore::eWaitFailed);
	EXPECT_EQ(waiters[3]->Wait(), zorvcore::eWaitFailed);
	EXPECT_TRUE(AudioPrefetch::WasPrefetchBehind());
	EXPECT_TRUE(IsHeard(*source, 0));
	EXPECT_FALSE(IsHeard(*source, 3));
}

} // namespace
} // namespace SN
