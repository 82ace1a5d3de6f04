#include "AudioRender/Source/AudioGeneratorSource.h"

#include "AudioRender/Source/PrefetchedAudioGenerator.h"
#include "Sonaro/AudioPrefetch.h"
#include "Sonaro/GeneratorPrefetch.h"
#include "Support/Engine.h"
#include "zorvcore/classref/AsyncDestruction.h"

namespace SN::AudioGeneratorSourceTest
{

// Reads into a stale buffer; what is flagged reads as 0.
Samples Read(IAsyncAudioSource& ioSource, long long inFrame, unsigned inFrames, unsigned inChannels)
{
	dsp::AudioBuffer buffer = MakeBuffer(inChannels, inFrames, 123.0f);
	EXPECT_EQ(ioSource.ReadPrefetchedAudio(At(inFrame), buffer), 0);
	return HeardChannels(buffer);
}

// Generator samples in frames for which inIsThere says so, silence elsewhere.
template <class IsThere>
Samples Expect(long long inFrame, unsigned inFrames, unsigned inChannels, IsThere&& inIsThere)
{
	Samples samples(inChannels, std::vector<float>(inFrames));
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		for (unsigned i = 0; i < inFrames; ++i)
		{
			samples[channel][i] =
				inIsThere(channel, inFrame + i) ? PositionSample(channel, inFrame + i) : 0.0f;
		}
	}
	return samples;
}

std::vector<long long> GetRenderedFrames(FakeGenerator const& inGenerator)
{
	std::vector<long long> frames;
	for (Call const& call : inGenerator.mCalls)
	{
		if (call.mName == "GetAudioData")
		{
			EXPECT_FALSE(call.mReverse);
			frames.push_back(call.mTime.ToFrame64(k48000Hz));
		}
	}
	return frames;
}

TEST(AudioGeneratorSource, ReadsBackWholeChunksAndSilenceElsewhere)
{
	// Chunks of 256 over 1000 samples; chunks 0 and 2 are prefetched.
	auto const generator = MakeObject<FakeGenerator>(2);
	auto const source = AudioGeneratorSource::Create(generator, 256, At(1000));
	source->PrefetchAudioData(5, At(-50), 1);
	source->PrefetchAudioData(5, At(600), 3);
	EXPECT_THAT(GetRenderedFrames(*generator), ElementsAre(0, 512));
	EXPECT_EQ(source->GetPrefetchState(), eNotImplemented);

	auto const isThere = [](unsigned inChannel, long long inFrame)
	{ return inChannel < 2 && inFrame >= 0 && inFrame < 1024 && (inFrame / 256) % 2 == 0; };
	struct Case
	{
		char const* mName;
		long long mFrame;
		unsigned mFrames;
		unsigned mChannels;
	};
	constexpr Case kCases[] = {
		{"inside a chunk", 10, 100, 2},
		{"across a seam into what is absent", 200, 100, 2},
		{"out of what is absent", 300, 300, 2},
		{"over all chunks and the end", 0, 2000, 2},
		{"after the end", 1024, 10, 2},
		{"far after it", 1000000, 10, 2},
		{"before the start", -10, 5, 2},
		{"across the start, which is silence as a whole", -1, 100, 2},
		{"fewer channels", 0, 600, 1},
		{"more channels", 200, 400, 5},
		{"nothing", 10, 0, 2},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_TRUE(Same(Read(*source, test.mFrame, test.mFrames, test.mChannels),
			Expect(test.mFrame, test.mFrames, test.mChannels,
				[&](unsigned inChannel, long long inFrame)
				{ return test.mFrame >= 0 && isThere(inChannel, inFrame); })));
	}
	EXPECT_EQ(GetRenderedFrames(*generator).size(), 2u) << "reading renders nothing";
}

TEST(AudioGeneratorSource, RendersWhatIsAbsentAndTouchesTheRest)
{
	auto const generator = MakeObject<FakeGenerator>(1);
	auto const source = AudioGeneratorSource::Create(generator, 100, At(450));
	source->PrefetchAudioData(0, At(150), 100);
	EXPECT_THAT(GetRenderedFrames(*generator), ElementsAre(100, 200));
	// The generator's own prefetch goes ahead of each chunk, over the chunk's range.
	EXPECT_EQ(generator->mCalls.front(), (Call{"Prefetch 0", At(100), At(100).GetTicks(), false}));
	source->PrefetchAudioData(0, At(0), 10000);
	EXPECT_THAT(GetRenderedFrames(*generator), ElementsAre(100, 200, 0, 300, 400));
	source->PrefetchAudioData(0, At(0), std::numeric_limits<unsigned>::max());
	source->PrefetchAudioData(0, At(500), 10);
	EXPECT_EQ(GetRenderedFrames(*generator).size(), 5u);

	source->Discard();
	EXPECT_EQ(Read(*source, 0, 1, 1)[0][0], 0.0f);
	source->PrefetchAudioData(0, At(0), 1);
	EXPECT_EQ(GetRenderedFrames(*generator).size(), 6u);
	EXPECT_EQ(Read(*source, 99, 1, 1)[0][0], PositionSample(0, 99));

	// Nothing to read: no chunks.
	for (auto const& [chunk, duration] : {std::pair(0u, 100), std::pair(100u, 0), std::pair(100u, -5)})
	{
		auto const empty = AudioGeneratorSource::Create(generator, chunk, At(duration));
		empty->PrefetchAudioData(0, At(0), 100);
		EXPECT_EQ(Read(*empty, 0, 3, 1)[0], std::vector<float>(3, 0.0f));
	}
	EXPECT_THROW(AudioGeneratorSource::Create({}, 100, At(100)), zorvcore::config::NullPtrException);
}

TEST(AudioGeneratorSource, ChunksAreCountedInSinglePrecision)
{
	// One sample more than 4097 chunks, which is the same float as 4097 chunks.
	auto const generator = MakeObject<FakeGenerator>(1);
	auto const source = AudioGeneratorSource::Create(generator, 4096, At(4096 * 4097 + 1));
	source->PrefetchAudioData(0, At(4096 * 4097), 1);
	EXPECT_TRUE(generator->mCalls.empty());
	source->PrefetchAudioData(0, At(4096 * 4097 - 1), 1);
	EXPECT_EQ(GetRenderedFrames(*generator).size(), 1u);
}

float SlowSample(unsigned long long inChannel, long long inFrame)
{
	std::this_thread::yield();
	return PositionSample(inChannel, inFrame);
}

TEST(AudioGeneratorSource, AChunkIsRenderedOnceWhoeverAsks)
{
	auto const generator = MakeObject<FakeGenerator>(1, &SlowSample);
	auto const source = AudioGeneratorSource::Create(generator, 16, At(16 * 64));
	std::atomic<unsigned> ready{0};
	RunOnThreads(4,
		[&](unsigned)
		{
			for (++ready; ready < 4;)
			{
				std::this_thread::yield();
			}
			source->PrefetchAudioData(0, At(0), 16 * 64);
		});
	EXPECT_EQ(GetRenderedFrames(*generator).size(), 64u);
}

TEST(AudioGeneratorSource, PurgedChunksAreSilenceUntilTheyAreRenderedAgain)
{
	auto const manager = VX::GetMediaManager();
	auto const budget = manager->GetByteBudget();
	// What other tests have released may not be gone yet.
	zorvcore::classref::WaitForAsyncDestruction();
	auto const before = manager->GetByteCount();
	auto const generator = MakeObject<FakeGenerator>(2);
	{
		auto const source = AudioGeneratorSource::Create(generator, 64, At(256));
		// Two chunks of two channels fit.
		manager->SetByteBudget(before + 2 * 64 * 2 * sizeof(float));
		source->PrefetchAudioData(0, At(0), 256);
		auto const lateOnes = [](unsigned, long long inFrame) { return inFrame >= 128; };
		EXPECT_TRUE(Same(Read(*source, 0, 256, 2), Expect(0, 256, 2, lateOnes)));
		EXPECT_EQ(manager->GetByteCount(), before + 2 * 64 * 2 * sizeof(float));
		manager->SetByteBudget(budget);
		source->PrefetchAudioData(0, At(0), 256);
		auto const all = [](unsigned, long long) { return true; };
		EXPECT_TRUE(Same(Read(*source, 0, 256, 2), Expect(0, 256, 2, all)));
	}
	zorvcore::classref::WaitForAsyncDestruction();
	EXPECT_EQ(manager->GetByteCount(), before) << "a source that is gone leaves nothing";
}

// A source that records what it is asked to read, whoever asks.
class RecordingSource final : public Answers<IAsyncAudioSource>
{
public:
	void PrefetchAudioData(
		unsigned long long const& inTimeStamp, TickTime const& inTime, unsigned inNumSamples) override
	{
		mReads.push_back({inTimeStamp, static_cast<unsigned long long>(inTime.GetTicks()), inNumSamples});
	}
	int ReadPrefetchedAudio(TickTime const&, dsp::AudioBuffer&) override { return kSuccess; }
	int GetPrefetchState() override { return kSuccess; }

	std::vector<std::array<long long unsigned, 3>> mReads;
};

TEST(GeneratorPrefetch, SynchronousRequestsAreReadInOrderOnTheCallersThread)
{
	auto const first = MakeObject<RecordingSource>();
	ProcessSynchronousPrefetchRequests({{first, At(3), 30}, {first, At(1), 10}}, 77);
	EXPECT_THAT(first->mReads,
		ElementsAre(std::array{77ull, 3 * 5292000ull, 30ull}, std::array{77ull, 1 * 5292000ull, 10ull}));
	EXPECT_THROW(ProcessSynchronousPrefetchRequests({{{}, At(0), 1}}, 0), zorvcore::config::NullPtrException);
	EXPECT_THROW(PrefetchFromAudioGenerator({}, {At(0), At(1)}, SynchronousPrefetch, 0),
		zorvcore::config::NullPtrException);

	auto const generator = MakeObject<FakeGenerator>(1);
	for (PrefetchType const type :
		{SynchronousPrefetch, AsynchronousPrefetch, AsynchronousPrepareForPrefetch})
	{
		PrefetchFromAudioGenerator(generator, {At(0), At(1)}, type, 0);
		EXPECT_EQ(generator->mCalls.back().mName, "Prefetch " + std::to_string(type));
	}
}

TEST(PrefetchedAudioGenerator, TurnsRangesIntoRequestsOfItsOwn)
{
	// Time 0 lies 100 frames into a generator of 1000.
	struct Case
	{
		char const* mName;
		long long mStart;
		long long mEnd;
		long long mExpectedFrame;
		unsigned mExpectedSamples;
	};
	constexpr Case kCases[] = {
		{"inside", 50, 150, 150, 100 + 256},
		{"a start before the generator's", -300, -100, 0, 200 + 256},
		{"across the end", 850, 1000, 950, 50 + 256},
		{"after the end", 2000, 2100, 2100, 256},
		{"empty", 10, 10, 110, 256},
		{"upside down", 20, 10, 120, 256},
	};
	ScopedContext const context(256);
	auto const generator = MakeObject<FakeGenerator>(2);
	InterfaceRef<IAudioGenerator> prefetched;
	ASSERT_EQ(PrefetchedAudioGenerator::Create(generator, context, At(100), At(1000), prefetched), 0);
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		auto const requests =
			RequestPrefetch(*prefetched, {At(test.mStart), At(test.mEnd)}, AsynchronousPrefetch)
				.mAsynchronous;
		ASSERT_EQ(requests.size(), 1u);
		EXPECT_EQ(requests[0].time, At(test.mExpectedFrame));
		EXPECT_EQ(requests[0].numSamples, test.mExpectedSamples);
		EXPECT_TRUE(InterfaceRef<AudioGeneratorSource>(requests[0].source).IsValid());
	}
	EXPECT_TRUE(generator->mCalls.empty()) << "the generator is not asked";
	EXPECT_EQ(PrefetchedAudioGenerator::Create(generator, {}, At(0), At(1), prefetched), eNullPointer);
}

TEST(PrefetchedAudioGenerator, WithoutPrefetchEveryPullFindsItsSamples)
{
	ScopedContext const context(64);
	auto const make = [&]() -> InterfaceRef<IAudioGenerator>
	{
		InterfaceRef<IAudioGenerator> prefetched;
		PrefetchedAudioGenerator::Create(MakeObject<FakeGenerator>(2), context, At(100), At(900), prefetched);
		return prefetched;
	};
	ExpectAnySplitEqualsWhole(make, {.mStartFrame = 3, .mFrames = 300, .mChannels = 2}, 400);
	auto const prefetched = make();
	for (auto const& one : {prefetched, prefetched->Clone()})
	{
		Samples const got = PullWhole(*one, {.mStartFrame = 700, .mFrames = 300, .mChannels = 2});
		// 14 chunks of 64 reach to 896 + 64 of the generator.
		EXPECT_TRUE(
			Same(got, Expect(800, 300, 2, [](unsigned, long long inFrame) { return inFrame < 960; })));
		EXPECT_TRUE(one->HasHistory());
	}
}

TEST(PrefetchedAudioGenerator, InPlaybackItReadsWhatWasRenderedAndAPrerollStartsClean)
{
	Prefetcher prefetcher;
	ScopedContext const context(64, &prefetcher);
	auto const generator = MakeObject<FakeGenerator>(1);
	InterfaceRef<IAudioGenerator> prefetched;
	PrefetchedAudioGenerator::Create(generator, context, At(0), At(1000), prefetched);
	PullRange const range{.mStartFrame = 0, .mFrames = 100};
	EXPECT_EQ(PullWhole(*prefetched, range)[0], std::vector<float>(100, 0.0f));
	PrefetchFromAudioGenerator(prefetched, {At(0), At(100)}, SynchronousPrefetch, 0);
	auto const all = [](unsigned, long long) { return true; };
	EXPECT_TRUE(Same(PullWhole(*prefetched, range), Expect(0, 100, 1, all)));
	EXPECT_TRUE(Same(PullWhole(*prefetched, range, Direction::kReverse), Reversed(Expect(0, 100, 1, all))));
	auto const clone = prefetched->Clone();
	EXPECT_EQ(PullWhole(*clone, range)[0], std::vector<float>(100, 0.0f)) << "a clone shares no cache";
	prefetched->Preroll(At(5), true);
	EXPECT_EQ(generator->mCalls.back(), (Call{"Preroll", At(5), 0, true}));
	EXPECT_EQ(PullWhole(*prefetched, range)[0], std::vector<float>(100, 0.0f));
}

TEST(PrefetchedAudioGenerator, NobodyComesBetweenTheSamplesOfAChunk)
{
	Prefetcher prefetcher;
	ScopedContext const context(64, &prefetcher);
	std::vector<Call> const* calls = nullptr;
	std::size_t callsAtStart = 0;
	std::atomic<unsigned> disturbed{0};
	std::atomic<unsigned> rendered{0};
	auto const generator = MakeObject<FakeGenerator>(1,
		[&](unsigned long long inChannel, long long inFrame)
		{
			callsAtStart = inFrame % 64 == 0 ? calls->size() : callsAtStart;
			disturbed += calls->size() == callsAtStart ? 0 : 1;
			++rendered;
			return SlowSample(inChannel, inFrame);
		});
	calls = &generator->mCalls;
	generator->mCalls.reserve(100000);
	InterfaceRef<IAudioGenerator> prefetched;
	PrefetchedAudioGenerator::Create(generator, context, At(0), At(64 * 10), prefetched);
	std::atomic<bool> done{false};
	std::thread reader(
		[&]
		{
			while (!done)
			{
				PrefetchFromAudioGenerator(prefetched, {At(0), At(640)}, SynchronousPrefetch, 0);
			}
		});
	for (int i = 0; i < 50; ++i)
	{
		unsigned const before = rendered;
		prefetched->Preroll(At(0), false);
		while (rendered == before)
		{
			std::this_thread::yield();
		}
		// Else the next preroll comes amid a chunk.
		if (i % 4 == 0)
		{
			prefetched->Reset();
		}
		else if (i % 4 == 2)
		{
			prefetched->FillInitialDelay(At(0), At(1), false, true);
		}
	}
	done = true;
	reader.join();
	EXPECT_EQ(disturbed, 0u);
}

} // namespace SN::AudioGeneratorSourceTest
