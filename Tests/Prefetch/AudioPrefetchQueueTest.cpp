#include "Prefetch/AudioPrefetchQueue.h"

#include "Prefetch/AudioPrefetchModule.h"
#include "Prefetch/AudioPrefetchQueueFailure.h"
#include "Support/AssertCapture.h"
#include "Support/Engine.h"
#include "zorvcore/config/InitializerRegistrar.h"
#include "zorvcore/debug/DebugMonitor.h"
#include "zorvcore/threads/Gate.h"
#include "zorvcore/utility/HighPrecisionTime.h"

#include <sstream>

namespace SN::AudioPrefetch::AudioPrefetchQueueTest
{

using zorvcore::debug::DebugDatabase;
using zorvcore::threads::Gate;
using zorvcore::utility::HighPrecisionTime::GetCurrentTimeStamp;

constexpr char const* kMonitorName = "SN.AudioPrefetch.AudioPrefetchQueue";
constexpr char16_t const* kIdleText =
	u"Playback:\n\tRequests:\t\t\t0 / 0\n\tCancel Count:\t\t0\n\tDisk Load (%):\t\t0\n"
	u"Waveform:\n\tRequests:\t\t\t0 / 0\n\tCancel Count:\t\t0\n";
constexpr char const* kThresholdKey = "Sonaro.Prefetch.DiskOverloadThreshold";
constexpr char const* kDelayKey = "Sonaro.Prefetch.RequestProcessingDelay";

// What happened, in words with a blank after each.
class Log
{
public:
	void Add(std::string const& inWord)
	{
		std::lock_guard const lock(mMutex);
		mText += inWord + " ";
	}
	std::string Take()
	{
		std::lock_guard const lock(mMutex);
		return std::exchange(mText, {});
	}

private:
	std::mutex mMutex;
	std::string mText;
};

// A source that can be prepared only when it is given a function for that.
class TestSource final : public IAsyncAudioSource, public IPreparableAudioSource
{
public:
	using Read = std::function<void(unsigned long long, TickTime, unsigned)>;
	using Prepare = std::function<void(TickTime, unsigned)>;

	explicit TestSource(Read inRead, Prepare inPrepare = {})
		: mRead(std::move(inRead)),
		  mPrepare(std::move(inPrepare))
	{
	}

	void PrefetchAudioData(
		unsigned long long const& inTimeStamp, TickTime const& inTime, unsigned inNumSamples) override
	{
		mRead(inTimeStamp, inTime, inNumSamples);
	}
	int ReadPrefetchedAudio(TickTime const&, dsp::AudioBuffer&) override { return eNotImplemented; }
	int GetPrefetchState() override { return eNotImplemented; }
	void PrepareForPrefetch(TickTime const& inTime, unsigned inNumSamples) override
	{
		mPrepare(inTime, inNumSamples);
	}

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		using zorvcore::classref::QueryInterfaces;
		void* found = QueryInterfaces<IAsyncAudioSource>(this, inIdentifier);
		if (!found && mPrepare)
		{
			found = QueryInterfaces<IPreparableAudioSource>(this, inIdentifier);
		}
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	Read const mRead;
	Prepare const mPrepare;
};

class Notify final : public Testing::Answers<IAudioPrefetchNotify>
{
public:
	explicit Notify(std::function<void(int)> inComplete)
		: mComplete(std::move(inComplete))
	{
	}

	void Complete(int inResult) override { mComplete(inResult); }

private:
	std::function<void(int)> const mComplete;
};

// A queue whose executor the test can hold still.
class AudioPrefetchQueueTest : public testing::Test
{
protected:
	~AudioPrefetchQueueTest() override
	{
		DebugDatabase::Instance().RemoveEntry(kThresholdKey);
		DebugDatabase::Instance().RemoveEntry(kDelayKey);
		if (mQueue)
		{
			mQueue->Shutdown();
		}
	}

	static InterfaceRef<IAsyncAudioSource> MakeSource(std::function<void()> const& inRead)
	{
		return MakeObject<TestSource>([inRead](auto, auto, auto) { inRead(); });
	}

	InterfaceRef<IAsyncAudioSource> MakeNamedSource(std::string const& inName)
	{
		return MakeSource([this, inName] { mLog.Add(inName); });
	}

	// Logs "+name" for success and "-name" for an abandoned batch.
	InterfaceRef<IAudioPrefetchNotify> MakeNotify(std::string const& inName)
	{
		return MakeObject<Notify>(
			[this, inName](int inResult)
			{
				EXPECT_NE(std::this_thread::get_id(), mTestThread);
				EXPECT_TRUE(inResult == kSuccess || inResult == zorvcore::eWaitFailed);
				mLog.Add((inResult == kSuccess ? "+" : "-") + inName);
			});
	}

	void Queue(PrefetchPriority inPriority, std::string const& inName, unsigned long long inTimeStamp = 0,
		std::size_t inRequests = 1)
	{
		std::vector<PrefetchRequest> const requests(inRequests, {0, MakeNamedSource(inName), {}, 64});
		mQueue->QueuePrefetchRequests(inPriority, requests, inTimeStamp, MakeNotify(inName));
	}

	// Lets the executor go, waits until it has done all that was queued so far, and holds it again.
	std::string Run()
	{
		mExecutor->Resume();
		Gate done(false);
		mExecutor->Queue([&] { done.Open(); });
		done.PassThrough();
		mExecutor->Pause();
		return mLog.Take();
	}

	std::thread::id const mTestThread = std::this_thread::get_id();
	Log mLog;
	std::shared_ptr<zorvcore::threads::AsyncThreadedExecutor> const mExecutor = []
	{
		auto executor = AudioPrefetchQueue::CreateExecutor();
		executor->Pause();
		return executor;
	}();
	std::shared_ptr<AudioPrefetchQueue> mQueue = AudioPrefetchQueue::Create(mExecutor);
};

TEST_F(AudioPrefetchQueueTest, PlaybackOvertakesAndACancelReachesItsMarker)
{
	struct Case
	{
		char const* mName;
		// P or W and a batch's name, or "!" for a cancel; p for a batch of playback without requests.
		char const* mQueued;
		char const* mDone;
	};
	Case const cases[] = {
		{"nothing", "", ""},
		{"first come first served", "Pa Pb Pc", "a +a b +b c +c "},
		{"waveforms wait", "Wa Wb Pc Pd", "c +c d +d a +a b +b "},
		{"unknown priority is no playback", "Xa Pb", "b +b a +a "},
		{"cancel", "Pa Pb P! Pc", "-a -b c +c "},
		{"cancel in vain", "P! Pa W! Wb", "a +a b +b "},
		{"cancel of a batch without requests", "pa P! pb", "-a +b "},
		{"two cancels", "Pa P! Pb P! Pc", "-a -b c +c "},
		{"cancel of playback", "Wa Pb P! Wc", "-b a +a c +c "},
		{"cancel of waveforms", "Wa Pb W! Wc", "b +b -a c +c "},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		std::istringstream words(test.mQueued);
		for (std::string word; words >> word;)
		{
			auto const priority = static_cast<PrefetchPriority>(std::map<char, int>{{'P', PlaybackPriority},
				{'p', PlaybackPriority}, {'W', WaveformPriority}, {'X', 7}}[word[0]]);
			if (word[1] == '!')
			{
				mQueue->CancelAllPendingPrefetchRequests(priority);
			}
			else
			{
				Queue(priority, word.substr(1), 0, word[0] == 'p' ? 0 : 1);
			}
		}
		EXPECT_EQ(Run(), test.mDone);
	}
}

TEST_F(AudioPrefetchQueueTest, WorkQueuedDuringARunIsDoneInItsOrder)
{
	auto const busy = MakeSource(
		[&]
		{
			mLog.Add("busy");
			Queue(WaveformPriority, "w");
			Queue(PlaybackPriority, "p");
		});
	auto const another = MakeObject<Notify>([&](int) { Queue(PlaybackPriority, "late"); });
	mQueue->QueuePrefetchRequests(
		WaveformPriority, {{0, busy, {}, 1}, {0, MakeNamedSource("rest"), {}, 1}}, 0, another);
	EXPECT_EQ(Run(), "busy rest p +p late +late w +w ");
}

TEST_F(AudioPrefetchQueueTest, ACancelEndsABatchAfterTheRequestAtHand)
{
	auto const cancels = MakeSource(
		[&]
		{
			mLog.Add("cancels");
			mQueue->CancelAllPendingPrefetchRequests(PlaybackPriority);
			// Leaves the measures alone while the cancel is under way.
			mQueue->Reset();
		});
	auto const a = MakeNamedSource("a");
	mQueue->QueuePrefetchRequests(
		PlaybackPriority, {{0, a, {}, 1}, {0, cancels, {}, 1}, {0, a, {}, 1}}, 0, MakeNotify("batch"));
	Queue(PlaybackPriority, "waiting");
	EXPECT_EQ(Run(), "a cancels -batch -waiting ");
	Queue(PlaybackPriority, "next");
	EXPECT_EQ(Run(), "next +next ");
}

TEST_F(AudioPrefetchQueueTest, ARequestReachesItsSourceOrIsSkipped)
{
	auto const note = [&](std::string const& inWord, TickTime inTime, unsigned inNumSamples)
	{ mLog.Add(inWord + " " + std::to_string(inTime.GetTicks()) + " " + std::to_string(inNumSamples)); };
	TestSource::Read const read = [&](unsigned long long inTimeStamp, TickTime inTime, unsigned inNumSamples)
	{ note("read " + std::to_string(inTimeStamp), inTime, inNumSamples); };
	TestSource::Prepare const prepare = [&](TickTime inTime, unsigned inNumSamples)
	{ note("prepare", inTime, inNumSamples); };
	auto const reads = MakeObject<TestSource>(read);
	auto const prepares = MakeObject<TestSource>(read, prepare);
	TickTime const time = TickTime::FromTicks(-5);
	struct Case
	{
		char const* mName;
		std::vector<PrefetchRequest> mRequests;
		char const* mDone;
	};
	Case const cases[] = {
		{"read", {{0, reads, time, 64}}, "read 77 -5 64 +x "},
		{"prepare", {{1, prepares, time, 64}}, "prepare -5 64 +x "},
		{"read what could prepare", {{0, prepares, time, 64}}, "read 77 -5 64 +x "},
		{"cannot prepare", {{1, reads, time, 64}}, "+x "},
		{"no source", {{0, {}, time, 64}, {1, {}, time, 64}, {0, prepares, time, 1}}, "read 77 -5 1 +x "},
		{"no such kind", {{2, reads, time, 64}, {-1, reads, time, 64}}, "+x "},
		{"no request", {}, "+x "},
	};
	// The stamp is long past; nothing is behind when an interval lasts longer than the machine.
	mQueue->NotifyPrefetchIntervalChanged(kTimeMax);
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		mQueue->Reset();
		mQueue->QueuePrefetchRequests(PlaybackPriority, test.mRequests, 77, MakeNotify("x"));
		mQueue->QueuePrefetchRequests(PlaybackPriority, {}, 77, {});
		EXPECT_EQ(Run(), test.mDone);
	}
}

TEST_F(AudioPrefetchQueueTest, TheMonitorCountsWhatIsNotFinished)
{
	Queue(WaveformPriority, "w");
	mQueue->QueuePrefetchRequests(PlaybackPriority, {{}, {9, {}, {}, 0}}, 0, {});
	Queue(PlaybackPriority, "p");
	mQueue->CancelAllPendingPrefetchRequests(PlaybackPriority);
	EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName),
		u"Playback:\n\tRequests:\t\t\t2 / 3\n\tCancel Count:\t\t1\n\tDisk Load (%):\t\t0\n"
		u"Waveform:\n\tRequests:\t\t\t1 / 1\n\tCancel Count:\t\t0\n");
	EXPECT_EQ(Run(), "-p w +w ");
	EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName), kIdleText);
	mQueue->Shutdown();
	mQueue = nullptr;
	EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName), u"");
}

// A source that takes three milliseconds, first against intervals of one, later of one hour.
class AudioPrefetchLoadTest : public AudioPrefetchQueueTest
{
protected:
	void Overload()
	{
		auto const slow = MakeSource([] { std::this_thread::sleep_for(std::chrono::milliseconds(3)); });
		mQueue->NotifyPrefetchIntervalChanged(TickTime::FromTicks(254016000));
		mQueue->QueuePrefetchRequests(
			PlaybackPriority, {{0, slow, {}, 1}}, GetCurrentTimeStamp(), MakeNotify("slow"));
		EXPECT_EQ(Run(), "+slow ");
		mQueue->NotifyPrefetchIntervalChanged(TickTime::FromSeconds(3600));
	}
};

TEST_F(AudioPrefetchLoadTest, TheStampOfAnAbandonedBatchDecidesOnTheNext)
{
	EXPECT_FALSE(mQueue->WasPrefetchBehind());
	Overload();
	EXPECT_TRUE(mQueue->WasPrefetchBehind());
	EXPECT_FALSE(mQueue->WasPrefetchBehind()) << "asking clears";
	Queue(PlaybackPriority, "unmeasured", 0);
	Queue(WaveformPriority, "measured", GetCurrentTimeStamp());
	Queue(WaveformPriority, "recovered", GetCurrentTimeStamp());
	EXPECT_EQ(Run(), "-unmeasured -measured recovered +recovered ");
	EXPECT_TRUE(mQueue->WasPrefetchBehind()) << "two were abandoned";
	EXPECT_FALSE(mQueue->WasPrefetchBehind());
}

// A slow disk shows in the age of the batches alone, so that stamps from the past stand for it: beside an interval
// of an hour, what the machine itself takes is nothing.
TEST_F(AudioPrefetchLoadTest, ABatchIsGivenUpAfterOneThatEndedMuchTooLate)
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
		{"just within the threshold", 1.09, true, false},
		{"beyond the threshold, but not behind", 1.12, true, false},
		{"given up after that one", 0, false, true},
		// From here on a disk that takes an interval for each of four batches that were wanted at once.
		{"first of a backlog", 1, true, false},
		{"second of a backlog", 2, true, true},
		{"third of a backlog", 2, false, true},
		{"fourth of a backlog", 2, false, true},
		{"given up after the backlog", 0, false, true},
		{"in time", 0, true, false},
	};
	constexpr double kIntervalNanos = 3600e9;
	mQueue->NotifyPrefetchIntervalChanged(TickTime::FromSeconds(kIntervalNanos * 1e-9));
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const age = static_cast<unsigned long long>(
			test.mIntervalsLate * kIntervalNanos /
			static_cast<double>(zorvcore::utility::HighPrecisionTime::ConvertToNanos(1)));
		Queue(PlaybackPriority, "x", GetCurrentTimeStamp() - age);
		EXPECT_EQ(Run(), test.mIsRead ? "x +x " : "-x ");
		EXPECT_EQ(mQueue->WasPrefetchBehind(), test.mIsBehind);
		EXPECT_FALSE(mQueue->WasPrefetchBehind()) << "reported once";
	}
}

TEST_F(AudioPrefetchLoadTest, ResetAndTheEndOfACancelForgetTheLoad)
{
	Overload();
	mQueue->Reset();
	EXPECT_FALSE(mQueue->WasPrefetchBehind());
	Queue(PlaybackPriority, "a");
	EXPECT_EQ(Run(), "a +a ");
	Overload();
	mQueue->CancelAllPendingPrefetchRequests(WaveformPriority);
	mQueue->Reset();
	EXPECT_TRUE(mQueue->WasPrefetchBehind()) << "a cancel under way keeps the measures";
	Queue(PlaybackPriority, "b");
	EXPECT_EQ(Run(), "-b ") << "its marker has not been reached";
	Queue(PlaybackPriority, "c");
	EXPECT_EQ(Run(), "c +c ");
}

TEST_F(AudioPrefetchLoadTest, TheDebugDatabaseMovesThresholdAndDelay)
{
	DebugDatabase::Instance().SetEntry(kThresholdKey, "2147483647");
	Overload();
	Queue(PlaybackPriority, "a");
	EXPECT_EQ(Run(), "a +a ");
	DebugDatabase::Instance().RemoveEntry(kThresholdKey);
	Queue(PlaybackPriority, "b");
	EXPECT_EQ(Run(), "-b ");
	mQueue->Reset();

	DebugDatabase::Instance().SetEntry(kDelayKey, "2");
	auto const start = std::chrono::steady_clock::now();
	Queue(PlaybackPriority, "a");
	Queue(PlaybackPriority, "b");
	EXPECT_EQ(Run(), "a +a b +b ");
	EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4));
	// What is skipped does not wait, or this would end in years.
	DebugDatabase::Instance().SetEntry(kDelayKey, "2147483647");
	mQueue->QueuePrefetchRequests(PlaybackPriority, {{}, {3, MakeNamedSource("s"), {}, 1}}, 0, {});
	Run();
	Queue(PlaybackPriority, "c");
	mQueue->CancelAllPendingPrefetchRequests(PlaybackPriority);
	EXPECT_EQ(Run(), "-c ");
}

TEST_F(AudioPrefetchQueueTest, WhatThrowsKeepsNothingElseFromBeingServed)
{
	auto const throws = MakeSource([] { throw std::runtime_error("no disk"); });
	auto const notifyThrows = MakeObject<Notify>([](int) { throw std::runtime_error("no listener"); });
	for (bool const isShutDown : {false, true})
	{
		SCOPED_TRACE(isShutDown ? "during the shutdown" : "while it runs");
		AssertCapture const reports;
		mQueue->QueuePrefetchRequests(PlaybackPriority,
			{{0, throws, {}, 1}, {0, MakeNamedSource("after"), {}, 1}}, 0, MakeNotify("throws"));
		mQueue->QueuePrefetchRequests(WaveformPriority, {}, 0, notifyThrows);
		Queue(WaveformPriority, "waits");
		if (isShutDown)
		{
			mQueue->Shutdown();
			EXPECT_EQ(mLog.Take(), "-throws -waits ");
		}
		else
		{
			EXPECT_EQ(Run(), "-throws waits +waits ");
		}
		EXPECT_THAT(reports.GetMessages(),
			::testing::ElementsAre(::testing::HasSubstr(isShutDown ? "no listener" : "no disk")));
		EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName), kIdleText);
	}
}

TEST_F(AudioPrefetchQueueTest, ShutdownNotifiesEveryBatchOnThePrefetchThread)
{
	Queue(WaveformPriority, "a");
	Queue(PlaybackPriority, "b");
	Queue(WaveformPriority, "c");
	mQueue->Shutdown();
	EXPECT_EQ(mLog.Take(), "-b -a -c ");
}

TEST_F(AudioPrefetchQueueTest, ALateTriggerFindsNoQueue)
{
	Queue(PlaybackPriority, "a");
	mQueue = nullptr;
	EXPECT_EQ(Run(), "");
}

TEST_F(AudioPrefetchQueueTest, NeedsAnExecutor)
{
	try
	{
		AudioPrefetchQueue::Create(nullptr);
		FAIL();
	}
	catch (AudioPrefetchQueueFailure const& failure)
	{
		EXPECT_STREQ(failure.what(), "CreateAsyncThreadedExecutor failed in KTL::AudioPrefetchQueue");
	}
}

TEST_F(AudioPrefetchQueueTest, EveryBatchOfRacingThreadsIsNotifiedOnce)
{
	constexpr unsigned kThreads = 4;
	constexpr std::size_t kBatches = 500;
	std::vector<std::atomic<int>> notified(kThreads * kBatches);
	std::atomic<int> abandoned = 0;
	std::atomic<int> reads = 0;
	auto const source = MakeSource([&] { ++reads; });
	auto const race = [&](unsigned inThread)
	{
		for (std::size_t i = 0; i < kBatches; ++i)
		{
			auto const priority = i % 3 == 0 ? PlaybackPriority : WaveformPriority;
			auto const notify = MakeObject<Notify>(
				[&, index = inThread * kBatches + i](int inResult)
				{
					++notified[index];
					abandoned += inResult == kSuccess ? 0 : 1;
				});
			mQueue->QueuePrefetchRequests(priority, {{0, source, {}, 1}}, 0, notify);
			if (i % 16 == inThread)
			{
				mQueue->CancelAllPendingPrefetchRequests(priority);
			}
			mQueue->Reset();
		}
	};
	mExecutor->Resume();
	Testing::RunOnThreads(kThreads, race);
	mQueue->Shutdown();
	EXPECT_TRUE(
		std::all_of(notified.begin(), notified.end(), [](auto const& inCount) { return inCount == 1; }));
	EXPECT_EQ(static_cast<std::size_t>(reads + abandoned), kThreads * kBatches);
	EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName), kIdleText);
}

TEST_F(AudioPrefetchQueueTest, WhatIsTakenWhileItShutsDownIsNotifiedOnceAndTheRestRefused)
{
	constexpr int kRounds = 300;
	for (int round = 0; round < kRounds; ++round)
	{
		auto const queue = AudioPrefetchQueue::Create();
		std::atomic<int> taken = 0;
		std::atomic<int> notified = 0;
		// Asks for more at each notification, as a player does.
		std::function<bool()> ask = [&]
		{
			auto const notify = MakeObject<Notify>(
				[&](int)
				{
					++notified;
					ask();
				});
			bool const isTaken = queue->QueuePrefetchRequests(PlaybackPriority, {}, 0, notify);
			taken += isTaken ? 1 : 0;
			return isTaken;
		};
		std::thread caller(
			[&]
			{
				for (int count = 0; count < 100 && ask(); ++count)
				{
				}
			});
		queue->Shutdown();
		caller.join();
		ASSERT_EQ(notified, taken) << "round " << round;
		ASSERT_FALSE(ask());
		ASSERT_FALSE(queue->CancelAllPendingPrefetchRequests(PlaybackPriority));
	}
}

TEST_F(AudioPrefetchQueueTest, TheMonitorOutlivesTheEndOfAFormerQueueAndAFailedCreation)
{
	auto const next = AudioPrefetchQueue::Create();
	mQueue->Shutdown();
	mQueue = nullptr;
	EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName), kIdleText);
	EXPECT_THROW(AudioPrefetchQueue::Create(nullptr), AudioPrefetchQueueFailure);
	EXPECT_EQ(zorvcore::debug::GetDebugMonitorText(kMonitorName), kIdleText);
	next->Shutdown();
}

// The service of the process, which the engine's module has started.
TEST(AudioPrefetch, StartsAndStopsAThousandTimesWithWorkWaiting)
{
	std::atomic<int> notified = 0;
	auto const notify = MakeObject<Notify>([&](int) { ++notified; });
	for (int i = 0; i < 1000; ++i)
	{
		PrefetchAudio(WaveformPriority, {}, GetCurrentTimeStamp(), notify);
		Startup();
		Shutdown();
		ASSERT_EQ(notified, i + 1);
		Shutdown();
		Startup();
	}
}

TEST(AudioPrefetch, RunsWhileTheModuleDoes)
{
	zorvcore::config::StopRegisteredModules();
	EXPECT_THROW(PrefetchAudio(PlaybackPriority, {}, 0, {}), zorvcore::config::NullPtrException);
	EXPECT_THROW(CancelAllPendingPrefetchRequests(WaveformPriority), zorvcore::config::NullPtrException);
	NotifyPrefetchIntervalChanged(TickTime::FromSeconds(1));
	Reset();
	EXPECT_FALSE(WasPrefetchBehind());
	zorvcore::config::StartRegisteredModules();
	Gate done(false);
	PrefetchAudio(PlaybackPriority, {}, 1, MakeObject<Notify>([&](int) { done.Open(); }));
	done.PassThrough();
	CancelAllPendingPrefetchRequests(PlaybackPriority);
}

} // namespace SN::AudioPrefetch::AudioPrefetchQueueTest
