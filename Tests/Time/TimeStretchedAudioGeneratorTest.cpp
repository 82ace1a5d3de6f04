#include "Time/Stretch/TimeStretchedAudioGenerator.h"

#include "Support/Engine.h"
#include "Support/Trials.h"

#include <numbers>

namespace SN::TimeStretchedAudioGeneratorTest
{

using dsp::stretch::omega::OmegaEngine;

class Curve final : public Answers<VX::ITimeTransform>
{
public:
	// From and to frames at 48000 Hz, with parts of them.
	explicit Curve(std::function<double(double)> inFunction)
		: mFunction(std::move(inFunction))
	{
	}

	TickTime GetTime(TickTime const& inTime) override { return At(1) * mFunction(inTime / At(1)); }

private:
	std::function<double(double)> mFunction;
};

InterfaceRef<VX::ITimeTransform> MakeCurve(std::function<double(double)> const& inFunction)
{
	return MakeObject<Curve>(inFunction);
}

InterfaceRef<VX::ITimeTransform> MakeSpeed(double inSpeed)
{
	return MakeCurve([inSpeed](double inFrame) { return inFrame * inSpeed; });
}

// Now faster, now slower, from a fifth of the speed up to twice that.
InterfaceRef<VX::ITimeTransform> MakeWave()
{
	return MakeCurve(
		[](double inFrame) { return 1.1 * inFrame + 0.9 * 3000.0 * std::sin(inFrame / 3000.0); });
}

float Music(unsigned long long inChannel, long long inFrame)
{
	auto const time = static_cast<double>(inFrame);
	double const beat = std::exp(-0.002 * static_cast<double>(((inFrame % 9000) + 9000) % 9000));
	return static_cast<float>(0.3 * std::sin(0.05 * time) +
							  0.5 * beat * std::sin((0.3 + 0.1 * static_cast<double>(inChannel)) * time));
}

struct Stretch
{
	explicit Stretch(TimeStretchSettings inSettings, Prefetcher* inPrefetcher = nullptr,
		SampleFunction const& inSource = Music, unsigned inMaxBlockSize = 256)
		: mContext(inMaxBlockSize, inPrefetcher),
		  mSource(MakeObject<FakeGenerator>(2, inSource))
	{
		inSettings.mGenerator = mSource;
		inSettings.mFrameRate = k48000Hz;
		inSettings.mRenderContext = mContext;
		EXPECT_EQ(TimeStretchedAudioGenerator::Create(inSettings, &mGenerator), kSuccess);
	}

	ScopedContext mContext;
	InterfaceRef<FakeGenerator> mSource;
	InterfaceRef<IAudioGenerator> mGenerator;
};

TEST(TimeTransformToRatioConverter, GivesTheRatioOfEachBlock)
{
	struct Case
	{
		char const* mName;
		std::function<double(double)> mCurve;
		std::vector<double> mRatios;
	};
	// Blocks of one frame.
	Case const cases[] = {
		{"twice as fast", [](double in) { return 2.0 * in; }, {0.5, 0.5, 0.5}},
		{"up to double speed and back",
			[](double in)
			{
				double const places[] = {0.0, 1.0, 2.78125, 4.78125, 6.5625, 7.5625};
				return places[std::lround(in)];
			},
			{1.0, 1.0 / 1.78125, 0.5, 1.0 / 1.78125, 1.0}},
		{"a stop keeps the ratio", [](double in) { return std::min(in, 1.5) * 0.5; }, {2.0, 4.0, 4.0, 4.0}},
		{"so does a turn, until the source is passed again",
			[](double in) { return in < 2.5 ? 2.0 * in : 4.0 - 0.5 * (in - 2.0) + (in > 3.5 ? 4.0 : 0.0); },
			{0.5, 0.5, 0.5, 1.0 / 3.0}},
		{"a jump is caught up with at the highest speed",
			[](double in) { return in < 0.5 ? 0.0 : in + 24.0; }, {0.1, 0.1, 1.0 / 7.0, 1.0}},
		{"a crawl is not slower than the lowest speed", [](double in) { return in * 0.05; },
			{10.0, 10.0, 10.0}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		TimeTransformToRatioConverter converter(MakeCurve(test.mCurve), 0.1f, 10.0f);
		converter.Seek(kTimeZero);
		for (double const ratio : test.mRatios)
		{
			EXPECT_NEAR(static_cast<double>(converter.GetRatio(At(1))), ratio, 1e-5 * ratio);
		}
	}
}

TEST(TimeTransformToRatioConverter, StartsAtRatioOneAfterASeekAndOverNoTime)
{
	TimeTransformToRatioConverter converter(MakeSpeed(2.0), 0.1f, 10.0f);
	converter.Seek(At(5));
	EXPECT_EQ(converter.GetRatio(kTimeZero), 1.0f);
	EXPECT_EQ(converter.GetRatio(At(2)), 0.5f);
	converter.Seek(At(100));
	EXPECT_EQ(converter.GetRatio(-At(3)), 1.0f);
}

// What is to be heard, by an engine that is fed from all of the source at once.
class Model
{
public:
	explicit Model(TimeStretchSettings const& inSettings, unsigned inBlockSize)
		: mSettings(inSettings),
		  mConverter(inSettings.mTimeTransform, 0.1f, 10.0f)
	{
		OmegaEngine* engine = nullptr;
		float const octaves = 12.0f * std::log(10.0f) / std::log(2.0f);
		OmegaEngine::Create(&engine, 48000.0f, 2, inBlockSize, 0.0f, 0.1f, 10.0f, -octaves, octaves);
		mEngine.reset(engine);
		mEngine->Begin(48000.0f, nullptr, 0);
	}

	void Seek(TickTime const& inTime)
	{
		mConverter.Seek(inTime);
		TickTime const place = inTime > kTimeZero ? mSettings.mTimeTransform->GetTime(inTime) : kTimeZero;
		mTime = place - mSettings.mSourceOffset;
		mEngine->SetSourceRemaining(0);
	}
	Samples Play(unsigned inCount)
	{
		float const ratio = mConverter.GetRatio(At(inCount));
		mEngine->SetRatio(ratio, ratio);
		float const pitch = mSettings.mMaintainPitch ? 0.0f : 12.0f * std::log(1.0f / ratio) / std::log(2.0f);
		mEngine->SetPitch(pitch, pitch);
		unsigned const needed = mEngine->GetInputNeeded(inCount);
		dsp::AudioBuffer input(2, needed);
		FillFrom(Music, 2, mTime, k48000Hz, input);
		mTime += At(needed);
		dsp::AudioBuffer output(2, inCount);
		mEngine->Process(inCount, input.GetChannels(), output.GetChannels());
		return HeardChannels(output);
	}

private:
	TimeStretchSettings mSettings;
	TimeTransformToRatioConverter mConverter;
	std::unique_ptr<OmegaEngine, void (*)(OmegaEngine*)> mEngine{nullptr, &OmegaEngine::Destroy};
	TickTime mTime;
};

struct Way
{
	char const* mName;
	InterfaceRef<VX::ITimeTransform> mTransform;
	bool mMaintainsPitch;
	long long mOffset;
	bool mPrefetches;
};

std::vector<Way> GetWays()
{
	return {
		{"as it is", MakeSpeed(1.0), true, 0, false},
		{"faster", MakeSpeed(1.25), true, 0, false},
		{"slower, from an offset on", MakeSpeed(0.7), true, 777, false},
		{"a wave", MakeWave(), true, 0, false},
		{"a wave, read ahead", MakeWave(), true, 500, true},
		{"a wave, as a tape", MakeWave(), false, 0, false},
		{"as a tape, read ahead", MakeSpeed(1.7), false, 123, true},
	};
}

TimeStretchSettings SettingsOf(Way const& inWay)
{
	TimeStretchSettings settings;
	settings.mTimeTransform = inWay.mTransform;
	settings.mMaintainPitch = inWay.mMaintainsPitch;
	settings.mSourceEndTime = At(1000000);
	settings.mSourceOffset = At(inWay.mOffset);
	return settings;
}

// One pull into a stale buffer of three channels, of which the last one is to be silent.
Samples PullBlock(IAudioGenerator& ioGenerator, TickTime const& inTime, unsigned inCount)
{
	dsp::AudioBuffer buffer = MakeBuffer(3, 256, -7.0f);
	buffer.SetUseSize(inCount);
	ioGenerator.GetAudioData(inTime, buffer, false);
	EXPECT_EQ(buffer.GetUseSize(), inCount);
	EXPECT_TRUE(buffer.IsChannelSilent(2));
	Samples heard = HeardChannels(buffer);
	heard.pop_back();
	return heard;
}

TEST(TimeStretchedAudioGenerator, PlaysAndJumpsAsAnEngineThatIsFedWithTheWholeSource)
{
	Prefetcher prefetcher;
	for (Way const& way : GetWays())
	{
		SCOPED_TRACE(way.mName);
		TimeStretchSettings const settings = SettingsOf(way);
		Stretch stretch(settings, way.mPrefetches ? &prefetcher : nullptr);
		Model model(settings, 256);
		std::mt19937 random(11);
		// A preroll counts from the offset on, a pull does not.
		TickTime time = At(1000) + settings.mSourceOffset;
		stretch.mGenerator->Preroll(At(1000), false);
		model.Seek(time);
		for (unsigned block = 0; block < GetNumTrials(300); ++block)
		{
			if (random() % 40 == 0)
			{
				time = At(static_cast<long long>(random() % 300000) - 1000);
				model.Seek(time);
			}
			unsigned const count = random() % 256 + 1;
			ASSERT_TRUE(Same(PullBlock(*stretch.mGenerator, time, count), model.Play(count)))
				<< "block " << block;
			time += At(count);
		}
	}
}

TEST(TimeStretchedAudioGenerator, ReadsTheSourceOnceFromItsPlaceOnWithoutDrift)
{
	TimeStretchSettings settings;
	settings.mTimeTransform = MakeSpeed(1.25);
	settings.mSourceEndTime = At(100000000);
	settings.mSourceOffset = At(100);
	Stretch stretch(settings);
	stretch.mGenerator->Preroll(kTimeZero, false);
	stretch.mSource->mCalls.clear();
	long long frame = 100;
	std::mt19937 random(2);
	long long ahead = 0;
	// The offset's place along the curve, which the generator's own time leaves out.
	long long next = 125 - 100;
	for (unsigned seam = 0; seam < GetNumTrials(1000); ++seam)
	{
		unsigned const count = random() % 256 + 1;
		PullBlock(*stretch.mGenerator, At(frame), count);
		frame += count;
		for (Call const& call : stretch.mSource->mCalls)
		{
			ASSERT_EQ(call.mName, "GetAudioData");
			ASSERT_EQ(call.mTime, At(next));
			next += call.mAmount;
		}
		stretch.mSource->mCalls.clear();
		double const played = static_cast<double>(frame - 100) * 1.25;
		ahead = seam == 0 ? next - std::llround(played) : ahead;
		ASSERT_NEAR(static_cast<double>(next - ahead), played, 1.5);
	}
}

TEST(TimeStretchedAudioGenerator, ReadsAheadInThePrerollWithPrefetch)
{
	Prefetcher prefetcher;
	TimeStretchSettings settings;
	settings.mTimeTransform = MakeSpeed(2.0);
	settings.mSourceEndTime = At(3000);
	settings.mSourceOffset = At(500);
	Stretch stretch(settings, &prefetcher);
	stretch.mGenerator->Preroll(At(200), false);
	// From twice 700 up to the end, in blocks of 256, at times without the offset.
	EXPECT_EQ(stretch.mGenerator->GetDelay(), At(1600));
	std::vector<Call> calls{{"Preroll", At(200), 0, false}};
	for (long long frame = 1400; frame < 3000; frame += 256)
	{
		long long const count = std::min(256ll, 3000 - frame);
		calls.push_back({"Prefetch 0", At(frame - 500), At(count).GetTicks(), false});
		calls.push_back({"GetAudioData", At(frame - 500), count, false});
	}
	EXPECT_EQ(stretch.mSource->mCalls, calls);
	stretch.mContext->SetDelayCompensationDisabled(true);
	EXPECT_EQ(stretch.mGenerator->GetDelay(), kTimeZero);
}

TEST(TimeStretchedAudioGenerator, FillsItsDelayOnceAndInParts)
{
	TimeStretchSettings settings;
	settings.mTimeTransform = MakeSpeed(1.0);
	settings.mSourceEndTime = At(1000);
	Stretch stretch(settings);
	IAudioGenerator& generator = *stretch.mGenerator;
	generator.Preroll(kTimeZero, false);
	auto const fill = [&](long long inCount, bool inReverse, bool inForced)
	{
		stretch.mSource->mCalls.clear();
		generator.FillInitialDelay(kTimeZero, At(inCount), inReverse, inForced);
		return stretch.mSource->mCalls;
	};
	EXPECT_THAT(fill(300, false, false),
		ElementsAre(Call{"GetAudioData", At(0), 256, false}, Call{"GetAudioData", At(256), 44, false}));
	EXPECT_TRUE(fill(300, false, false).empty());
	EXPECT_THAT(fill(0, true, true),
		ElementsAre(Call{"Prefetch 0", At(44), At(256).GetTicks(), false},
			Call{"GetAudioData", At(300), 256, true}, Call{"Prefetch 0", At(-212), At(256).GetTicks(), false},
			Call{"GetAudioData", At(44), 256, true}, Call{"Prefetch 0", At(-400), At(188).GetTicks(), false},
			Call{"GetAudioData", At(-212), 188, true}));
	EXPECT_TRUE(fill(5000, false, true).empty());
}

TEST(TimeStretchedAudioGenerator, AsksForTheMappedRangeAndForWhatTheEngineStartsWith)
{
	TimeStretchSettings settings;
	settings.mTimeTransform = MakeSpeed(2.0);
	settings.mSourceEndTime = At(1000000);
	Stretch stretch(settings);
	RequestPrefetch(*stretch.mGenerator, {At(1000), At(101000)}, AsynchronousPrefetch);
	RequestPrefetch(*stretch.mGenerator, {-At(50), At(0)}, SynchronousPrefetch);
	stretch.mGenerator->Preroll(kTimeZero, false);
	long long const startup = stretch.mGenerator->GetDelay().GetTicks();
	EXPECT_GT(startup, At(2560).GetTicks());
	EXPECT_THAT(stretch.mSource->mCalls,
		ElementsAre(Call{"Prefetch 1", At(2000), At(200000).GetTicks(), false},
			Call{"Prefetch 0", kTimeZero, startup, false}, Call{"Preroll", kTimeZero, 0, false}));
}

TEST(TimeStretchedAudioGenerator, LeavesSilenceBeyondTheLargestBlockAndTheSource)
{
	TimeStretchSettings settings;
	settings.mTimeTransform = MakeSpeed(1.0);
	settings.mSourceEndTime = At(1000000);
	Stretch stretch(settings, nullptr, PositionSample);
	dsp::AudioBuffer buffer = MakeBuffer(1, 400, -7.0f);
	stretch.mGenerator->Preroll(kTimeZero, false);
	stretch.mGenerator->GetAudioData(kTimeZero, buffer, false);
	EXPECT_EQ(buffer.GetUseSize(), 400u);
	std::vector<float> const heard = Heard(buffer);
	EXPECT_EQ(heard[255], PositionSample(0, 255));
	EXPECT_TRUE(std::all_of(heard.begin() + 256, heard.end(), [](float in) { return in == 0.0f; }));
	buffer.SetUseSize(0);
	stretch.mGenerator->GetAudioData(At(400), buffer, false);
	EXPECT_EQ(buffer.GetUseSize(), 0u);
}

TEST(TimeStretchedAudioGenerator, ClonesPlayTheSameOnTheirOwn)
{
	TimeStretchSettings settings;
	settings.mTimeTransform = MakeWave();
	settings.mSourceEndTime = At(1000000);
	settings.mMaintainPitch = false;
	Stretch stretch(settings);
	stretch.mGenerator->Preroll(At(50), false);
	PullBlock(*stretch.mGenerator, At(50), 256);
	auto const clone = stretch.mGenerator->Clone();
	EXPECT_TRUE(clone->HasHistory());
	Model model(settings, 256);
	model.Seek(At(5000));
	// Without a preroll, the first pull is a jump.
	for (long long frame = 5000; frame < 8000; frame += 200)
	{
		EXPECT_TRUE(Same(PullBlock(*clone, At(frame), 200), model.Play(200)));
	}
	model.Seek(At(50));
	model.Play(256);
	EXPECT_TRUE(Same(PullBlock(*stretch.mGenerator, At(306), 100), model.Play(100)));
}

// Notices when it is pulled and asked at the same time.
class Busy final : public SimpleGenerator
{
public:
	Busy()
		: SimpleGenerator(1)
	{
	}

	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
		Enter();
	}
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		Enter();
		inBuffer.Zero();
	}
	void Reset() override { Enter(); }

	std::atomic<unsigned> mCollisions{0};

private:
	void Enter()
	{
		mCollisions += mInside.exchange(true) ? 1u : 0u;
		std::this_thread::yield();
		mInside = false;
	}

	std::atomic<bool> mInside{false};
};

TEST(TimeStretchedAudioGenerator, IsUsedByOneThreadAtATime)
{
	ScopedContext const context;
	auto const busy = MakeObject<Busy>();
	InterfaceRef<IAudioGenerator> stretched;
	ASSERT_EQ(TimeStretchedAudioGenerator::Create(
				  {busy, k48000Hz, context, MakeSpeed(1.5), true, At(1000000)}, &stretched),
		kSuccess);
	RunOnThreads(3,
		[&](unsigned inThread)
		{
			dsp::AudioBuffer buffer(1, 256);
			for (unsigned i = 0; i < GetNumTrials(100); ++i)
			{
				inThread == 0   ? stretched->GetAudioData(At(256ll * i), buffer, false)
				: inThread == 1 ? (void)RequestPrefetch(*stretched, {At(i), At(i + 100)})
								: stretched->Reset();
				i % 50 == 7 && inThread == 2 ? stretched->FillInitialDelay({}, At(100), false, false)
											 : void();
			}
		});
	EXPECT_EQ(busy->mCollisions, 0u);
}

struct Chain
{
	explicit Chain(double inSpeed, InterfaceRef<IAudioRenderContext> const& inPrefetchContext,
		InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate = k48000Hz,
		unsigned inChannels = 2)
		: mSource(MakeObject<FakeGenerator>(inChannels)),
		  mResult(SonaroFactory::CreateClassRef()->CreateTimeStretchedAudioGenerator(mSource, inFrameRate,
			  inSpeed, inPrefetchContext, inContext, MakeSpeed(1.0), true, At(100000), At(300), At(5000),
			  false, &mGenerator))
	{
	}

	// The names of the nodes from the first one on.
	std::vector<std::u16string> GetNames() const
	{
		std::vector<std::u16string> names;
		for (InterfaceRef<IAudioRenderGraphNodeInfo> node(mGenerator); node;
			 node = InterfaceRef<IAudioRenderGraphNodeInfo>(node->GetInputNodes().at(0)))
		{
			names.push_back(node->GetNodeName());
		}
		return names;
	}

	InterfaceRef<FakeGenerator> mSource;
	InterfaceRef<IAudioGenerator> mGenerator;
	int mResult;
};

TEST(TimeStretchedAudioGenerator, ComesFromTheFactoryAsAChain)
{
	ScopedContext const context;
	Chain const plain(1.0, context, context);
	ASSERT_EQ(plain.mResult, kSuccess);
	EXPECT_THAT(plain.GetNames(), ElementsAre(u"PrefetchedAudioGenerator", u"TimeStretchedAudioGenerator"));
	// Ends at frame 5120 of the time that begins with the offset.
	plain.mGenerator->Preroll(kTimeZero, false);
	Samples const played = Pull(*plain.mGenerator, {0, 5000, 2}, BlocksOf(256));
	for (long long frame = 0; frame < 5000; ++frame)
	{
		ASSERT_EQ(played[1][static_cast<std::size_t>(frame)], frame < 4820 ? PositionSample(1, frame) : 0.0f)
			<< frame;
	}
	Chain const fast(2.0, context, context);
	ASSERT_EQ(fast.mResult, kSuccess);
	EXPECT_THAT(fast.GetNames(),
		ElementsAre(u"PrefetchedAudioGenerator", u"TimeStretchedAudioGenerator", u"AudioGeneratorDecorator"));
	EXPECT_EQ(InterfaceRef<IAudioGeneratorPrivate>(fast.mGenerator)->GetGeneratorFrameRate(), k48000Hz * 2.0);

	EXPECT_EQ(Chain(1.0, {}, context).mResult, eNullPointer);
	EXPECT_EQ(Chain(1.0, context, {}).mResult, eNullPointer);
	EXPECT_EQ(Chain(1.0, context, context, FrameRate()).mResult, eInvalidArgument);
	EXPECT_EQ(Chain(1.0, context, context, k48000Hz, 0).mResult, eInvalidArgument);
	InterfaceRef<IAudioGenerator> none;
	EXPECT_THROW(TimeStretchedAudioGenerator::Create({plain.mSource, k48000Hz, context}, &none),
		zorvcore::config::NullPtrException);
	EXPECT_FALSE(none);
}

} // namespace SN::TimeStretchedAudioGeneratorTest
