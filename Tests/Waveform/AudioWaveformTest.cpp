#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "Sonaro/AudioWaveformRequest.h"
#include "Support/Common.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvcore/config/InitializerRegistrar.h"
#include "zorvcore/messaging/Stations.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/Gate.h"

#include <cctype>
#include <tuple>

namespace SN::AudioWaveformTest
{

using namespace AudioWaveformQueue;
using testing::_;
using testing::Return;
using zorvcore::classref::MakeObject;
using zorvcore::threads::Gate;
using Buffer = InterfaceRef<IAudioWaveformBuffer>;
using GateRef = std::shared_ptr<Gate>;
using Transform = InterfaceRef<VX::ITimeTransform>;
using Time = TickTime const&;
using Interval = unsigned long long;

// Before any test has cleared the queue.
bool const sAbortedAtStart = IsAborted();
TickTime const k1 = TickTime::FromTicks(1), k2 = TickTime::FromTicks(2);

// All that a host brings along: a generator, its source and a transform.
struct Host : IAudioWaveformGenerator, IAsyncAudioSource, VX::ITimeTransform
{
	MOCK_METHOD(int, GetWaveformInfo, (TickTime&, TickTime&, unsigned long long&), (override));
	MOCK_METHOD(int, GenerateWaveform, (Time, Time, Interval, Buffer, bool, bool), (override));
	MOCK_METHOD(int, GenerateWaveform, (Time, Time, Interval, Buffer, GateRef, bool, bool), (override));
	MOCK_METHOD(int, GenerateWaveform, (Time, Time, Transform const&, Interval, Buffer, bool, GateRef, bool),
		(override));
	MOCK_METHOD(InterfaceRef<IAudioWaveformGenerator>, GetSelfReference, (), (override));
	MOCK_METHOD(void, PrefetchAudioData, (unsigned long long const&, Time, unsigned), (override));
	MOCK_METHOD(int, ReadPrefetchedAudio, (Time, dsp::AudioBuffer&), (override));
	MOCK_METHOD(int, GetPrefetchState, (), (override));
	MOCK_METHOD(TickTime, GetTime, (Time), (override));

	void* QueryMap(GUID const& inIdentifier) override
	{
		return zorvcore::classref::QueryInterfaces<IAudioWaveformGenerator, IAsyncAudioSource,
			VX::ITimeTransform, Unknown>(this, inIdentifier);
	}
};

// A request whose generator runs inRun.
InterfaceRef<AudioWaveformRequest> MakeRequest(std::function<void()> const& inRun)
{
	auto const host = MakeObject<Host>();
	EXPECT_CALL(*host, GenerateWaveform(_, _, _, _, _, _, _, _)).WillOnce(testing::DoAll(inRun, Return(0)));
	return AudioWaveformRequest::CreateAudioWaveformRequest(
		{.mGenerator = host, .mStartTime = k1, .mEndTime = k2, .mSampleInterval = 3});
}

TEST(AudioWaveformBuffer, StartsPendingAndCompletesWhetherCancelledOrNot)
{
	auto const buffer = CreateAudioWaveformBuffer();
	EXPECT_EQ(CreateAudioWaveformBuffer()->GetBufferId(), buffer->GetBufferId() + 1);
	EXPECT_EQ(buffer->GetNumChannels() + buffer->GetNumSamples() + buffer->GetSampleCount(), 0u);
	buffer->GetChannels() = {{1, 2, 3}, {4}};
	buffer->SetSampleCount(0x500000007);
	EXPECT_EQ(std::tuple(buffer->GetNumChannels(), buffer->GetNumSamples(), buffer->GetSampleCount()),
		std::tuple(2u, 3u, 7u));
	EXPECT_TRUE(buffer->GetSecondHostFlag() && !buffer->GetHostFlag());
	EXPECT_TRUE(buffer->IsPending() && !buffer->IsComplete());
	buffer->SetComplete();
	EXPECT_TRUE(buffer->IsPending() && buffer->IsComplete());
	buffer->Cancel();
	EXPECT_TRUE(!buffer->IsPending() && buffer->GetPending()->Get() == 0 && buffer->IsComplete());
}

TEST(AudioWaveformBuffer, DisposesOfItsOwnStationsAndNoOther)
{
	using namespace zorvcore::messaging;
	// What is set in turn: "o" for an own station, "n" for the caller's.
	for (std::string const steps : {"o", "n", "oo", "on", "no", "nn", "oono"})
	{
		SCOPED_TRACE(steps);
		StationID const named = RegisterUniqueStation();
		StationID current;
		auto buffer = CreateAudioWaveformBuffer();
		for (char const step : steps)
		{
			StationID const before = std::exchange(current, {});
			buffer->SetStationID(step == 'n' ? named : StationID());
			current = buffer->GetStationID();
			EXPECT_EQ(current == named, step == 'n');
			EXPECT_TRUE(IsStationRegistered(current) && IsStationRegistered(named));
			EXPECT_EQ(IsStationRegistered(before), before == named);
		}
		buffer.Reset();
		EXPECT_EQ(IsStationRegistered(current), current == named);
		DisposeStation(named);
	}
}

TEST(AudioWaveformBuffer, ColumnsCanBeReadWhileTheyCome)
{
	constexpr unsigned kColumns = 20000;
	auto const buffer = CreateAudioWaveformBuffer();
	auto const write = [&]
	{
		std::vector<float>& channel = buffer->GetChannels().emplace_back(3 * kColumns);
		for (unsigned i = 0; i < kColumns; buffer->SetSampleCount(++i))
		{
			channel[3 * i + 2] = static_cast<float>(i + 1);
		}
	};
	MakeRequest(write)->Complete(kSuccess);
	for (unsigned read = 0, count = 0; read < kColumns; count = buffer->GetSampleCount())
	{
		for (; read < count; ++read)
		{
			ASSERT_EQ(buffer->GetChannels()[0][3 * read + 2], static_cast<float>(read + 1));
		}
	}
	Clear();
}

TEST(AudioWaveformQueue, IsAbortedFromClearToTheNextQueueAndForgetsPauses)
{
	EXPECT_FALSE(sAbortedAtStart);
	std::map<int, std::function<void()>> const calls{{'G', GetQueue}, {'C', Clear}, {'S', Shutdown},
		{'P', [] { Pause(true); }}, {'R', [] { Pause(false); }}};
	// Get, Clear, Shutdown, Pause, Resume, in this order; in upper case when it ends aborted.
	for (std::string const steps : {"C", "CC", "SS", "cg", "CP", "cpg", "cgp", "GCR", "GPC", "gpcg", "gssg"})
	{
		SCOPED_TRACE(steps);
		for (char const step : steps)
		{
			calls.at(std::toupper(step))();
		}
		EXPECT_EQ(IsAborted(), steps[0] < 'a');
		Clear();
		Gate ran(false);
		MakeRequest([&] { ran.Open(); })->Complete(kSuccess);
		ran.PassThrough();
		EXPECT_FALSE(IsAborted());
		auto const old = GetQueue();
		Clear();
		EXPECT_FALSE(old->Queue([] { FAIL(); }));
	}
}

TEST(AudioWaveformQueue, APauseHoldsRequestsUntilItEndsOrTheQueueIsCleared)
{
	for (int round = 0; round < 300; ++round)
	{
		bool const clears = round % 2 == 1;
		std::atomic<bool> lifted = false;
		auto const queue = GetQueue();
		Pause(true);
		MakeRequest([&] { EXPECT_TRUE(lifted && IsAborted() == clears); })->Complete(kSuccess);
		std::this_thread::yield();
		lifted = true;
		clears ? Clear() : Pause(false);
		queue->Stop();
		Clear();
	}
}

TEST(AudioWaveformQueue, AJobMayClearTheQueueItRunsOn)
{
	for (bool const clearsHereToo : {false, true})
	{
		SCOPED_TRACE(clearsHereToo);
		Gate queued(false);
		std::atomic<int> aborted = 0;
		MakeRequest([&] { queued.PassThrough(), Clear(), aborted += IsAborted(); })->Complete(kSuccess);
		MakeRequest([&] { aborted += IsAborted(); })->Complete(kSuccess);
		auto const old = GetQueue();
		queued.Open();
		clearsHereToo ? Clear() : void();
		old->Stop();
		EXPECT_EQ(aborted, 2);
		EXPECT_NE(GetQueue(), old);
		Clear();
	}
}

TEST(AudioWaveformQueue, AClearedJobKnowsItEvenWhenTheNextQueueIsThere)
{
	Gate running(false), next(false);
	std::vector<bool> seen;
	auto const note = [&] { seen.insert(seen.end(), {IsJobAborted(), IsAborted()}); };
	MakeRequest([&] { note(), running.Open(), next.PassThrough(), note(); })->Complete(kSuccess);
	MakeRequest(note)->Complete(kSuccess);
	running.PassThrough();
	std::thread clearing(Clear);
	while (!IsAborted())
	{
		std::this_thread::yield();
	}
	EXPECT_TRUE(IsJobAborted()) << "on other threads";
	GetQueue();
	EXPECT_FALSE(IsJobAborted()) << "on other threads";
	next.Open();
	clearing.join();
	MakeRequest(note)->Complete(kSuccess);
	GetQueue()->Stop();
	EXPECT_EQ(seen, (std::vector<bool>{false, false, true, false, true, false, false, false}));
	Clear();
}

// What a request is made of.
struct AudioWaveformRequestTest : testing::Test
{
	InterfaceRef<Host> const mHost = MakeObject<Host>();
	Transform const mTransform = MakeObject<Host>();
	Buffer const mBuffer = CreateAudioWaveformBuffer();
	GateRef const mGate = std::make_shared<Gate>(true);
};

TEST_F(AudioWaveformRequestTest, GoesFromThePrefetchToTheWaveformThreadEvenIfGivenUp)
{
	using namespace AudioPrefetch;
	// The disk load that another test may have left.
	Reset();
	for (bool const cancelled : {false, true})
	{
		SCOPED_TRACE(cancelled);
		Gate reading(false), cancelling(false), processed(false);
		std::thread::id readThread, processThread;
		auto const read = [&]
		{ readThread = std::this_thread::get_id(), reading.Open(), cancelling.PassThrough(); };
		auto const process = [&] { processThread = std::this_thread::get_id(); };
		auto const last = MakeRequest([&] { processed.Open(); });
		testing::InSequence const inOrder;
		EXPECT_CALL(*mHost, PrefetchAudioData(0, k1, 8)).WillOnce(read);
		EXPECT_CALL(*mHost, PrefetchAudioData(0, k2, 9)).Times(cancelled ? 0 : 1);
		EXPECT_CALL(*mHost, GenerateWaveform(k1, k2, mTransform, 3, mBuffer, false, mGate, cancelled))
			.WillOnce(testing::DoAll(process, Return(0)));
		PrefetchAudio(WaveformPriority, {{0, mHost, k1, 8}, {0, mHost, k2, 9}}, 0,
			AudioWaveformRequest::CreateAudioWaveformRequest(
				mHost, k1, k2, mTransform, 3, mBuffer, mGate, cancelled));
		PrefetchAudio(WaveformPriority, {}, 0, last);
		reading.PassThrough();
		cancelled ? CancelAllPendingPrefetchRequests(WaveformPriority) : void();
		cancelling.Open();
		processed.PassThrough();
		EXPECT_NE(readThread, processThread);
		Clear();
	}
	// The prefetch thread may hold its last request a moment longer than the test runs.
	zorvcore::config::StopRegisteredModules();
	zorvcore::config::StartRegisteredModules();
}

TEST_F(AudioWaveformRequestTest, IsDoneBeforeTheModuleHasStopped)
{
	for (int round = 0; round < 50; ++round)
	{
		std::atomic<bool> done = false;
		AudioPrefetch::PrefetchAudio(
			AudioPrefetch::WaveformPriority, {}, 0, MakeRequest([&] { done = true; }));
		zorvcore::config::StopRegisteredModules();
		EXPECT_TRUE(done && IsAborted());
		zorvcore::config::StartRegisteredModules();
	}
}

TEST_F(AudioWaveformRequestTest, EqualsWhatWouldWriteTheSame)
{
	auto const make = [](AudioWaveformRequestSettings const& inSettings)
	{ return AudioWaveformRequest::CreateAudioWaveformRequest(inSettings); };
	auto const plain = make({mHost, k1, k2, {}, 3, mBuffer, mGate, false});
	EXPECT_EQ(*plain, *make({mHost, k1, k2, mTransform, 3, mBuffer, mGate, true}));
	EXPECT_NE(*plain, *make({MakeObject<Host>(), k1, k2, {}, 3, mBuffer, mGate, false}));
	EXPECT_NE(*plain, *make({mHost, k2, k2, {}, 3, mBuffer, mGate, false}));
	EXPECT_NE(*plain, *make({mHost, k1, k1, {}, 3, mBuffer, mGate, false}));
	EXPECT_NE(*plain, *make({mHost, k1, k2, {}, 4, mBuffer, mGate, false}));
	EXPECT_NE(*plain, *make({mHost, k1, k2, {}, 3, {}, mGate, false}));
	EXPECT_NE(*plain, *make({mHost, k1, k2, {}, 3, mBuffer, {}, false}));
	EXPECT_THROW(
		make({{}, k1, k2, {}, 3, mBuffer, mGate, false})->Process(), zorvcore::config::NullPtrException);
}

TEST_F(AudioWaveformRequestTest, AnOffsetShiftsBothTimesAndHandsOnTheRest)
{
	auto const shifted = CreateAudioWaveformGeneratorOffsetDecorator(mHost, TickTime::FromTicks(10));
	TickTime const k11 = TickTime::FromTicks(11), k12 = TickTime::FromTicks(12);
	for (bool const on : {false, true})
	{
		EXPECT_CALL(*mHost, GenerateWaveform(k11, k12, 3, mBuffer, on, !on)).WillOnce(Return(2));
		EXPECT_CALL(*mHost, GenerateWaveform(k11, k12, 3, mBuffer, mGate, on, !on)).WillOnce(Return(3));
		EXPECT_CALL(*mHost, GenerateWaveform(k11, k12, mTransform, 3, mBuffer, on, mGate, !on))
			.WillOnce(Return(4));
		EXPECT_EQ(shifted->GenerateWaveform(k1, k2, 3, mBuffer, on, !on), 2);
		EXPECT_EQ(shifted->GenerateWaveform(k1, k2, 3, mBuffer, mGate, on, !on), 3);
		EXPECT_EQ(shifted->GenerateWaveform(k1, k2, mTransform, 3, mBuffer, on, mGate, !on), 4);
	}
	TickTime a, b;
	unsigned long long n = 0;
	EXPECT_CALL(*mHost, GetWaveformInfo(testing::Ref(a), testing::Ref(b), testing::Ref(n)))
		.WillOnce(Return(1));
	EXPECT_EQ(shifted->GetWaveformInfo(a, b, n), 1);
}

} // namespace SN::AudioWaveformTest
