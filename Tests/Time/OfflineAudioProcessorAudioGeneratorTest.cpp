#include "Sonaro/GraphFactory.h"
#include "Sonaro/IProcessedAudioStream.h"
#include "Support/Engine.h"
#include "Support/Fakes.h"

#include <thread>

namespace SN::OfflineAudioProcessorAudioGeneratorTest
{

using Chunk = std::shared_ptr<dsp::AudioBuffer>;
using zorvcore::async::Future;
using zorvcore::async::Promise;
using zorvcore::config::zorv_exception;

// What becomes of a chunk: a worker fulfils the promise, breaks it or lets it go.
using Work = std::function<void(Promise<Chunk>& ioPromise, OfflineAudioReadCallback const& inRead)>;

// Does the next piece of work whenever a buffer is asked for, on a thread of its own.
class FakeStream final : public Answers<IProcessedAudioStream>
{
public:
	FakeStream(std::vector<Work> const& inWork, OfflineAudioReadCallback const& inRead)
		: mWork(inWork),
		  mRead(inRead)
	{
	}
	~FakeStream() override { Join(); }

	Future<Chunk> GetNextBuffer() override
	{
		Join();
		Promise<Chunk> promise;
		Future<Chunk> const future = promise.GetFuture();
		mWorker = std::thread([work = mWork.at(mAsked++), read = mRead,
								  promise = std::move(promise)]() mutable { work(promise, read); });
		return future;
	}

	std::size_t mAsked = 0;

private:
	void Join()
	{
		if (mWorker.joinable())
		{
			mWorker.join();
		}
	}

	std::vector<Work> const mWork;
	OfflineAudioReadCallback const mRead;
	std::thread mWorker;
};

class FakeProcess final : public Answers<IOfflineAudioProcessor>
{
public:
	explicit FakeProcess(std::vector<Work> const& inWork)
		: mWork(inWork)
	{
	}

	TickTime GetOfflineLatency() override { return kTimeZero; }
	InterfaceRef<IProcessedAudioStream> CreateProcessedStream(
		OfflineAudioReadCallback const& inCallback, unsigned inFlags, TickTime const& inDuration) override
	{
		mRead = inCallback;
		mFlags = inFlags;
		mDuration = inDuration;
		mStream = MakeObject<FakeStream>(mWork, inCallback);
		return mIsEmpty ? InterfaceRef<IProcessedAudioStream>()
						: InterfaceRef<IProcessedAudioStream>(mStream);
	}

	bool mIsEmpty = false;
	OfflineAudioReadCallback mRead;
	unsigned mFlags = 1;
	TickTime mDuration;
	InterfaceRef<FakeStream> mStream;

private:
	std::vector<Work> const mWork;
};

// Doubles inFrames samples of the source from inStart on.
Work Double(long long inStart, unsigned inFrames)
{
	return [=](Promise<Chunk>& ioPromise, OfflineAudioReadCallback const& inRead)
	{
		auto const chunk = std::make_shared<dsp::AudioBuffer>(1, inFrames);
		float* channel = chunk->GetChannel(0);
		inRead(&channel, inStart, static_cast<int>(inFrames));
		*chunk *= 2.0f;
		ioPromise.SetValue(chunk);
	};
}

// One after the other.
std::vector<Work> DoubleAll(std::vector<unsigned> const& inSizes)
{
	std::vector<Work> work;
	long long start = 0;
	for (unsigned const size : inSizes)
	{
		work.push_back(Double(start, size));
		start += size;
	}
	return work;
}

void Fail(Promise<Chunk>& ioPromise, OfflineAudioReadCallback const&)
{
	ioPromise.SetException(std::make_exception_ptr(std::runtime_error("of the process")));
}

struct Fixture
{
	explicit Fixture(std::vector<Work> const& inWork, unsigned inChannels = 1)
		: mSource(MakeObject<FakeGenerator>(inChannels)),
		  mProcess(MakeObject<FakeProcess>(inWork)),
		  mSettings{.mGenerator = mSource,
			  .mInputPanner = GraphFactory().CreateNoneAudioPanProcessorRenderer(
				  mContext.Get(), mSource->GetAudioChannelLayout()),
			  .mOutputPanner = GraphFactory().CreateNoneAudioPanProcessorRenderer(
				  mContext.Get(), VX::kAudioChannelLayout_Mono),
			  .mFrameRate = k48000Hz,
			  .mStartTime = At(5),
			  .mEndTime = At(1005),
			  .mProcessor = mProcess}
	{
	}

	Generator Make(bool inWithPreroll = true) const
	{
		auto const generator = GraphFactory().CreateOfflineAudioProcessorAudioGenerator(mSettings);
		if (inWithPreroll)
		{
			generator->Preroll(kTimeZero, false);
		}
		return generator;
	}

	ScopedContext mContext;
	InterfaceRef<FakeGenerator> mSource;
	InterfaceRef<FakeProcess> mProcess;
	OfflineAudioProcessorSettings mSettings;
};

// What a block from inFrame on has, in raw samples, none of which is flagged.
std::vector<float> PullRaw(Generator const& inGenerator, long long inFrame, unsigned inFrames)
{
	dsp::AudioBuffer buffer = MakeStaleBuffer(1, inFrames);
	inGenerator->GetAudioData(At(inFrame), buffer, false);
	EXPECT_FALSE(buffer.IsChannelSilent(0));
	return {buffer.GetChannel(0), buffer.GetChannel(0) + inFrames};
}

// From inFrame on, with silence from inEnd on.
std::vector<float> Doubled(long long inFrame, unsigned inFrames, long long inEnd = 1000000)
{
	std::vector<float> samples(inFrames);
	for (unsigned i = 0; i < inFrames; ++i)
	{
		samples[i] = inFrame + i < inEnd ? 2.0f * PositionSample(0, inFrame + i) : 0.0f;
	}
	return samples;
}

TEST(OfflineAudioProcessorAudioGenerator, CutsChunksIntoBlocks)
{
	Fixture const fixture(DoubleAll({100, 100, 100}));
	auto const generator = fixture.Make();
	EXPECT_EQ(PullRaw(generator, 0, 64), Doubled(0, 64));
	EXPECT_EQ(fixture.mProcess->mStream->mAsked, 1u);
	EXPECT_EQ(PullRaw(generator, 64, 64), Doubled(64, 64));
	EXPECT_EQ(fixture.mProcess->mStream->mAsked, 2u);
	EXPECT_EQ(PullRaw(generator, 128, 172), Doubled(128, 172));
	EXPECT_EQ(fixture.mProcess->mStream->mAsked, 3u);
	EXPECT_EQ(fixture.mProcess->mFlags, 0u);
	EXPECT_EQ(fixture.mProcess->mDuration, At(1000));
}

TEST(OfflineAudioProcessorAudioGenerator, AnySplitEqualsWhole)
{
	std::mt19937 random(66);
	for (int trial = 0; trial < 20; ++trial)
	{
		std::vector<unsigned> sizes(40);
		std::generate(sizes.begin(), sizes.end(), [&] { return 25 + random() % 100; });
		Fixture const fixture(DoubleAll(sizes));
		auto const generator = fixture.Make();
		for (long long frame = 0; frame < 900;)
		{
			auto const count = static_cast<unsigned>(1 + random() % 100);
			ASSERT_EQ(PullRaw(generator, frame, count), Doubled(frame, count)) << trial << ", " << frame;
			frame += count;
		}
	}
}

TEST(OfflineAudioProcessorAudioGenerator, IsSilentAfterAFailure)
{
	auto const letGo = [](Promise<Chunk>&, OfflineAudioReadCallback const&) {};
	auto const cancel = [](Promise<Chunk>& io, OfflineAudioReadCallback const&) { io.Cancel(); };
	auto const giveNothing = [](Promise<Chunk>& io, OfflineAudioReadCallback const&)
	{ io.SetValue(Chunk()); };
	for (Work const& failure : {Work(&Fail), Work(letGo), Work(cancel), Work(giveNothing)})
	{
		Fixture const fixture({Double(0, 100), failure, Double(100, 100)});
		auto const generator = fixture.Make();
		EXPECT_EQ(PullRaw(generator, 0, 128), Doubled(0, 128, 100));
		EXPECT_EQ(PullRaw(generator, 128, 64), std::vector<float>(64, 0.0f));
		EXPECT_EQ(fixture.mProcess->mStream->mAsked, 2u);
		generator->Preroll(kTimeZero, false);
		EXPECT_EQ(PullRaw(generator, 0, 64), Doubled(0, 64)) << "a new stream";
	}
	Fixture const fixture({Double(0, 100)});
	EXPECT_EQ(PullRaw(fixture.Make(false), 0, 64), std::vector<float>(64, 0.0f));
	fixture.mProcess->mIsEmpty = true;
	EXPECT_EQ(PullRaw(fixture.Make(), 0, 64), std::vector<float>(64, 0.0f));

	auto const succeed = [](Promise<Chunk>& io, OfflineAudioReadCallback const&)
	{ io.SetException(std::make_exception_ptr(zorv_exception("", 0, kSuccess, "no failure"))); };
	EXPECT_THROW(PullRaw(Fixture({succeed}).Make(), 0, 64), zorv_exception);
}

TEST(OfflineAudioProcessorAudioGenerator, JumpsGoForwardOnly)
{
	Fixture const fixture(DoubleAll({100, 100, 100, 100}));
	auto const generator = fixture.Make();
	EXPECT_EQ(PullRaw(generator, 250, 20), Doubled(250, 20)) << "what lies between is skipped";
	auto expected = Doubled(190, 20);
	std::fill_n(expected.begin(), 10, 0.0f);
	EXPECT_EQ(PullRaw(generator, 190, 20), expected) << "what has passed is silent";
	generator->Preroll(At(7), true);
	EXPECT_EQ(fixture.mSource->mCalls.back(), (Call{"Preroll", At(7), 0, true}));
	EXPECT_EQ(PullRaw(generator, 0, 20), Doubled(0, 20)) << "a new stream begins at 0";
}

TEST(OfflineAudioProcessorAudioGenerator, TheProcessReadsOneChannelInPieces)
{
	Fixture fixture({}, 2);
	auto const generator = fixture.Make();
	fixture.mSource->mCalls.clear();
	std::vector<float> samples(5000, 9.0f);
	float* channel = samples.data();
	fixture.mProcess->mRead(&channel, 10, 0);
	fixture.mProcess->mRead(&channel, 10, -1);
	EXPECT_TRUE(fixture.mSource->mCalls.empty());
	EXPECT_EQ(samples, std::vector<float>(5000, 9.0f));
	fixture.mProcess->mRead(&channel, 10, 5000);
	EXPECT_THAT(fixture.mSource->mCalls,
		ElementsAre(Call{"GetAudioData", At(10), 2048, false}, Call{"GetAudioData", At(2058), 2048, false},
			Call{"GetAudioData", At(4106), 904, false}));
	EXPECT_EQ(samples[0], PositionSample(0, 10));
	EXPECT_EQ(samples[4999], PositionSample(0, 5009));

	// The first one of what the panner makes, of a source with silence in it.
	AudioChannelLayout const& stereo = VX::kAudioChannelLayout_Stereo;
	fixture.mSettings.mInputPanner = GraphFactory().CreateChannelMixerAudioPanProcessorRenderer(
		stereo, stereo, {{0.0f, 1.0f}, {1.0f, 0.0f}});
	auto const swapped = fixture.Make();
	fixture.mProcess->mRead(&channel, 0, 100);
	EXPECT_EQ(samples[99], PositionSample(1, 99));
	fixture.mSettings.mGenerator = MakeSilence(stereo);
	auto const silent = fixture.Make();
	fixture.mProcess->mRead(&channel, 0, 100);
	EXPECT_EQ(samples[99], 0.0f);
	fixture.mSettings.mInputPanner =
		GraphFactory().CreateNoneAudioPanProcessorRenderer(fixture.mContext.Get(), stereo);
	auto const unpanned = fixture.Make();
	samples[99] = 9.0f;
	fixture.mProcess->mRead(&channel, 0, 100);
	EXPECT_EQ(samples[99], 0.0f);
}

TEST(OfflineAudioProcessorAudioGenerator, TheResultIsPanned)
{
	Fixture fixture({Double(0, 100)});
	fixture.mSettings.mOutputPanner = GraphFactory().CreateChannelMixerAudioPanProcessorRenderer(
		VX::kAudioChannelLayout_Mono, VX::kAudioChannelLayout_Stereo, {{0.5f, 0.25f}});
	auto const generator = fixture.Make();
	dsp::AudioBuffer buffer = MakeStaleBuffer(2, 32);
	generator->GetAudioData(At(8), buffer, false);
	EXPECT_EQ(buffer.GetChannel(0)[31], PositionSample(0, 39));
	EXPECT_EQ(buffer.GetChannel(1)[31], 0.5f * PositionSample(0, 39));
}

TEST(OfflineAudioProcessorAudioGenerator, HasNoClonesAndStartsTheSourcesEffects)
{
	Fixture const fixture({});
	auto const generator = fixture.Make(false);
	EXPECT_FALSE(generator->Clone());
	generator->InitializeAudioFilters();
	generator->ShutdownAudioFilters();
	EXPECT_THAT(fixture.mSource->mCalls, ElementsAre(Call{"InitializeAudioFilters", {}, 0, false},
											 Call{"ShutdownAudioFilters", {}, 0, false}));
}

} // namespace SN::OfflineAudioProcessorAudioGeneratorTest
