#include "AudioRender/Source/AudioGeneratorSource.h"
#include "Sonaro/AudioPrefetch.h"
#include "Support/Answers.h"
#include "Support/Fakes.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/ResultCodes.h"
#include "zorvcore/debug/DebugDatabase.h"
#include "zorvcore/threads/Gate.h"
#include "zorvcore/utility/HighPrecisionTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;
using AudioPrefetch::IAudioPrefetchNotify;
using zorvcore::classref::MakeObject;
using zorvcore::debug::DebugDatabase;
using zorvcore::threads::Gate;
namespace Clock = zorvcore::utility::HighPrecisionTime;

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

// The service of the process, asked for audio once an hour. A slow disk shows in the age of the batches
// alone, so that stamps from the past stand for it: beside hours, what the machine itself takes is nothing.
class SlowDisk : public ::testing::Test
{
protected:
	static constexpr double kIntervalNanos = 3600e9;
	static constexpr char const* kThreshold = "Sonaro.Prefetch.DiskOverloadThreshold";

	SlowDisk()
	{
		AudioPrefetch::NotifyPrefetchIntervalChanged(TickTime::FromSeconds(kIntervalNanos * 1e-9));
		Forget();
	}
	~SlowDisk() override
	{
		DebugDatabase::Instance().RemoveEntry(kThreshold);
		AudioPrefetch::NotifyPrefetchIntervalChanged(kTimeZero);
		Forget();
	}

	static void Forget()
	{
		AudioPrefetch::Reset();
		AudioPrefetch::WasPrefetchBehind();
	}

	// Prefetches one chunk that was wanted so many intervals ago, and waits for the answer.
	int PrefetchChunk(long long inChunk, double inIntervalsAgo) const
	{
		auto const age = static_cast<unsigned long long>(
			inIntervalsAgo * kIntervalNanos / static_cast<double>(Clock::ConvertToNanos(1)));
		return Prefetch({{AudioPrefetch::PrefetchRequest::kKindRead, mSource,
							TickTime(inChunk * kChunk, k48000Hz), kChunk}},
			Clock::GetCurrentTimeStamp() - age);
	}

	// A batch is measured after its notice, but before the next batch begins: here one that is neither given
	// up nor measured.
	static bool IsBehindOnceMeasured()
	{
		DebugDatabase::Instance().SetEntry(kThreshold, "2147483647");
		EXPECT_EQ(Prefetch({}, 0), kSuccess);
		DebugDatabase::Instance().RemoveEntry(kThreshold);
		return AudioPrefetch::WasPrefetchBehind();
	}

	bool IsHeard(long long inChunk) const
	{
		dsp::AudioBuffer buffer(2, kChunk);
		mSource->ReadPrefetchedAudio(TickTime(inChunk * kChunk, k48000Hz), buffer);
		return !buffer.IsChannelSilent(0) &&
			   buffer.GetChannel(0)[7] == PositionSample(0, inChunk * kChunk + 7);
	}

private:
	static int Prefetch(
		std::vector<AudioPrefetch::PrefetchRequest> const& inRequests, unsigned long long inTimeStamp)
	{
		auto const waiter = MakeObject<Waiter>();
		AudioPrefetch::PrefetchAudio(AudioPrefetch::PlaybackPriority, inRequests, inTimeStamp, waiter);
		return waiter->Wait();
	}

	InterfaceRef<AudioGeneratorSource> const mSource =
		AudioGeneratorSource::Create(MakeObject<FakeGenerator>(2u), kChunk, TickTime(16 * kChunk, k48000Hz));
};

TEST_F(SlowDisk, ABatchIsGivenUpAfterOneThatEndedMuchTooLate)
{
	struct Case
	{
		char const* mName;
		double mIntervalsLate;
		bool mIsRead;
		bool mIsBehind;
	};
	Case const cases[] = {
		{"half an interval late", 0.5, true, false},
		{"half an interval late again", 0.5, true, false},
		{"two intervals late: what was begun is read to its end", 2, true, true},
		{"given up, which counts as behind", 0, false, true},
		{"read again, since that one was quick to give up", 0, true, false},
		// From here on a disk that takes an interval for each of four batches that were wanted at once.
		{"first of a backlog", 1, true, false},
		{"second of a backlog", 2, true, true},
		{"third of a backlog", 2, false, true},
		{"fourth of a backlog", 2, false, true},
		{"given up after the backlog", 0, false, true},
		{"in time", 0, true, false},
	};
	long long chunk = 0;
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(PrefetchChunk(chunk, test.mIntervalsLate), test.mIsRead ? kSuccess : zorvcore::eWaitFailed);
		EXPECT_EQ(IsHeard(chunk), test.mIsRead);
		EXPECT_EQ(IsBehindOnceMeasured(), test.mIsBehind);
		EXPECT_FALSE(AudioPrefetch::WasPrefetchBehind()) << "reported once";
		++chunk;
	}
}

} // namespace
} // namespace SN
