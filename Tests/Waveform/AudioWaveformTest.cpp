#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "Sonaro/AudioWaveformRequest.h"
#include "Vexilon/ITimeTransform.h"
#include "zorvcore/config/InitializerRegistrar.h"
#include "zorvcore/messaging/Stations.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/Gate.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cctype>
#include <functional>
#include <map>
#include <string>
#include <thread>

namespace SN
{
namespace
{

using namespace AudioWaveformQueue;
using testing::_;
using zorvcore::classref::MakeObject;
using zorvcore::threads::Gate;
using BufferRef = InterfaceRef<IAudioWaveformBuffer>;
using GateRef = std::shared_ptr<Gate>;
using Transform = InterfaceRef<VX::ITimeTransform> const&;
using Time = TickTime const&;
using Interval = unsigned long long;

// Before any test has cleared the queue.
bool const sAbortedAtStart = IsAborted();

TickTime const k1 = TickTime::FromTicks(1), k2 = TickTime::FromTicks(2);

// All that a host brings along: a generator, its source and a transform.
struct Host : IAudioWaveformGenerator, IAsyncAudioSource, VX::ITimeTransform
{
	MOCK_METHOD(int, GetWaveformInfo, (TickTime&, TickTime&, unsigned long long&), (override));
	MOCK_METHOD(int, GenerateWaveform, (Time, Time, Interval, BufferRef, bool, bool), (override));
	MOCK_METHOD(int, GenerateWaveform, (Time, Time, Interval, BufferRef, GateRef, bool, bool), (override));
	MOCK_METHOD(
		int, GenerateWaveform, (Time, Time, Transform, Interval, BufferRef, bool, GateRef, bool), (override));
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
	EXPECT_CALL(*host, GenerateWaveform(_, _, _, _, _, _, _, _))
		.WillOnce(testing::DoAll(inRun, testing::Return(0)));
	return AudioWaveformRequest::CreateAudioWaveformRequest(host, k1, k2, {}, 3, {}, {}, false);
}

TEST(AudioWaveformBuffer, StartsPendingAndCompletesWhetherCancelledOrNot)
{
	auto const buffer = CreateAudioWaveformBuffer();
	EXPECT_EQ(CreateAudioWaveformBuffer()->GetBufferId(), buffer->GetBufferId() + 1);
	EXPECT_EQ(buffer->GetSelfReference(), buffer);
	EXPECT_TRUE(!buffer->GetHostFlag() && buffer->GetSecondHostFlag());
	EXPECT_EQ(buffer->GetNumChannels() + buffer->GetNumSamples() + buffer->GetSampleCount(), 0u);
	buffer->GetChannels() = {{1, 2, 3}, {4}};
	EXPECT_TRUE(buffer->GetNumChannels() == 2 && buffer->GetNumSamples() == 3);
	buffer->SetSampleCount(0x500000007);
	EXPECT_EQ(buffer->GetSampleCount(), 7u);
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
		auto buffer = CreateAudioWaveformBuffer();
		for (char const step : steps)
		{
			StationID const before = buffer->GetStationID();
			buffer->SetStationID(step == 'n' ? named : StationID());
			EXPECT_EQ(buffer->GetStationID() == named, step == 'n');
			EXPECT_TRUE(IsStationRegistered(buffer->GetStationID()) && IsStationRegistered(named));
			EXPECT_EQ(IsStationRegistered(before), before == named);
		}
		StationID const last = buffer->GetStationID();
		buffer.Reset();
		EXPECT_EQ(IsStationRegistered(last), last == named);
		DisposeStation(named);
	}
}

TEST(AudioWaveformBuffer, ColumnsCanBeReadWhileTheyCome)
{
	constexpr unsigned kColumns = 20000;
	auto const buffer = CreateAudioWaveformBuffer();
	auto const write = [&]
	{
		buffer->GetChannels().assign(1, std::vector<float>(3 * kColumns));
		for (unsigned i = 0; i < kColumns; buffer->SetSampleCount(++i))
		{
			buffer->GetChannels()[0][3 * i + 2] = static_cast<float>(i + 1);
		}
		buffer->SetComplete();
	};
	MakeRequest(write)->Complete(kSuccess);
	unsigned wrong = 0;
	for (unsigned read = 0, count = 0; read < kColumns; count = buffer->GetSampleCount())
	{
		for (; read < count; ++read)
		{
			wrong += buffer->GetChannels()[0][3 * read + 2] != static_cast<float>(read + 1);
		}
	}
	EXPECT_EQ(wrong, 0u);
	Clear();
}

TEST(AudioWaveformQueue, IsAbortedFromClearToTheNextQueueAndForgetsPauses)
{
	EXPECT_FALSE(sAbortedAtStart);
	// Get, Clear, Shutdown, Pause, Resume, in this order; in upper case when it ends aborted.
	for (std::string const steps : {"C", "CC", "SS", "cg", "CP", "cpg", "cgp", "GCR", "GPC", "gpcg", "gssg"})
	{
		SCOPED_TRACE(steps);
		for (char const step : steps)
		{
			std::map<int, std::function<void()>> const calls{{'G', GetQueue}, {'C', Clear}, {'S', Shutdown},
				{'P', [] { Pause(true); }}, {'R', [] { Pause(false); }}};
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
		GetQueue();
		Pause(true);
		MakeRequest([&] { EXPECT_TRUE(lifted && IsAborted() == clears); })->Complete(kSuccess);
		std::this_thread::yield();
		lifted = true;
		clears ? Clear() : Pause(false);
		GetQueue()->Stop();
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

TEST(AudioWaveformRequest, GoesFromThePrefetchToTheWaveformThreadEvenIfGivenUp)
{
	using namespace AudioPrefetch;
	for (bool const cancelled : {false, true})
	{
		SCOPED_TRACE(cancelled);
		// Starts aborted, which the request ends.
		Clear();
		Gate reading(false), cancelling(false), processed(false);
		std::thread::id prefetchThread, waveformThread;
		auto const host = MakeObject<Host>(), transform = MakeObject<Host>();
		auto const buffer = CreateAudioWaveformBuffer();
		auto const gate = std::make_shared<Gate>(true);
		auto const read = [&]
		{
			prefetchThread = std::this_thread::get_id();
			reading.Open();
			cancelling.PassThrough();
		};
		auto const process = [&]
		{
			waveformThread = std::this_thread::get_id();
			processed.Open();
			return kSuccess;
		};
		EXPECT_CALL(*host, PrefetchAudioData(0, k1, 8)).WillOnce(read);
		EXPECT_CALL(*host, PrefetchAudioData(0, k2, 9)).Times(cancelled ? 0 : 1);
		EXPECT_CALL(*host, GenerateWaveform(k1, k2, Transform(transform), 3, buffer, false, gate, cancelled))
			.WillOnce(process);
		PrefetchAudio(WaveformPriority, {{0, host, k1, 8}, {0, host, k2, 9}}, 0,
			AudioWaveformRequest::CreateAudioWaveformRequest(
				host, k1, k2, transform, 3, buffer, gate, cancelled));
		reading.PassThrough();
		cancelled ? CancelAllPendingPrefetchRequests(WaveformPriority) : void();
		cancelling.Open();
		processed.PassThrough();
		EXPECT_FALSE(IsAborted());
		EXPECT_NE(prefetchThread, waveformThread);
		Clear();
	}
}

TEST(AudioWaveformRequest, IsDoneBeforeTheModuleHasStopped)
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

TEST(AudioWaveformRequest, EqualsWhatWouldWriteTheSame)
{
	InterfaceRef<IAudioWaveformGenerator> const host = MakeObject<Host>(), other = MakeObject<Host>();
	auto const buffer = CreateAudioWaveformBuffer();
	auto const gate = std::make_shared<Gate>(true);
	auto const make = AudioWaveformRequest::CreateAudioWaveformRequest;
	auto const plain = make(host, k1, k2, {}, 3, buffer, gate, false);
	EXPECT_EQ(*plain, *make(host, k1, k2, {}, 3, buffer, gate, false));
	EXPECT_EQ(*plain, *make(host, k1, k2, host, 3, buffer, gate, true));
	EXPECT_NE(*plain, *make(other, k1, k2, {}, 3, buffer, gate, false));
	EXPECT_NE(*plain, *make(host, k2, k2, {}, 3, buffer, gate, false));
	EXPECT_NE(*plain, *make(host, k1, k1, {}, 3, buffer, gate, false));
	EXPECT_NE(*plain, *make(host, k1, k2, {}, 4, buffer, gate, false));
	EXPECT_NE(*plain, *make(host, k1, k2, {}, 3, {}, gate, false));
	EXPECT_NE(*plain, *make(host, k1, k2, {}, 3, buffer, {}, false));
	EXPECT_THROW(make({}, k1, k2, {}, 3, buffer, gate, false)->Process(), zorvcore::config::NullPtrException);
}

TEST(AudioWaveformGeneratorOffsetDecorator, ShiftsBothTimesAndHandsOnTheRest)
{
	auto const host = MakeObject<Host>(), transform = MakeObject<Host>();
	auto const shifted = CreateAudioWaveformGeneratorOffsetDecorator(host, TickTime::FromTicks(10));
	EXPECT_EQ(shifted->GetSelfReference(), shifted);
	auto const buffer = CreateAudioWaveformBuffer();
	auto const gate = std::make_shared<Gate>(true);
	TickTime const k11 = TickTime::FromTicks(11), k12 = TickTime::FromTicks(12);
	for (bool const on : {false, true})
	{
		using testing::Return;
		EXPECT_CALL(*host, GenerateWaveform(k11, k12, 3, buffer, on, !on)).WillOnce(Return(2));
		EXPECT_CALL(*host, GenerateWaveform(k11, k12, 3, buffer, gate, on, !on)).WillOnce(Return(3));
		EXPECT_CALL(*host, GenerateWaveform(k11, k12, Transform(transform), 3, buffer, on, gate, !on))
			.WillOnce(Return(4));
		EXPECT_EQ(shifted->GenerateWaveform(k1, k2, 3, buffer, on, !on), 2);
		EXPECT_EQ(shifted->GenerateWaveform(k1, k2, 3, buffer, gate, on, !on), 3);
		EXPECT_EQ(shifted->GenerateWaveform(k1, k2, transform, 3, buffer, on, gate, !on), 4);
	}
	TickTime start, end;
	unsigned long long channels = 0;
	EXPECT_CALL(*host, GetWaveformInfo(testing::Ref(start), testing::Ref(end), testing::Ref(channels)))
		.WillOnce(testing::Return(1));
	EXPECT_EQ(shifted->GetWaveformInfo(start, end, channels), 1);
}

} // namespace
} // namespace SN
