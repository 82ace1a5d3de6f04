#include "Sonaro/GraphFactory.h"
#include "Support/Engine.h"

namespace SN::AudioContentTest
{

using SelectedCamera = zorvcore::threads::AtomicIntegral<int, 0>;

constexpr FrameRate k96000Hz{2646000};

// What the generator is asked for, and where in the block its answer begins; nothing where it is not asked.
struct Expected
{
	bool mIsAsked = true;
	TickTime mTime;
	unsigned mFirst = 0;
};

// inBound: the lowest end of a block, in ticks, whose part from 0 on is played.
Expected FromStart(TickTime const& inMapped, unsigned inFrames, long long inBound)
{
	long long const end = (inMapped + At(inFrames)).GetTicks();
	long long const ticks = k48000Hz.GetTicksPerFrame();
	// Rounded up: the frame that holds the media's start is not silent.
	return {end >= inBound, kTimeZero, static_cast<unsigned>((-inMapped.GetTicks() + ticks - 1) / ticks)};
}

// Pulls a block that was loud, and expects silence and then what the generator gives from its time on.
void ExpectBlock(
	IAudioGenerator& ioNode, FakeGenerator& ioGenerator, TickTime const& inTime, Expected const& inExpected)
{
	constexpr unsigned kFrames = 8;
	ioGenerator.mCalls.clear();
	dsp::AudioBuffer buffer = MakeBuffer(1, kFrames, 5.0f);
	ioNode.GetAudioData(inTime, buffer, false);
	std::vector<Call> calls;
	std::vector<float> samples(kFrames);
	if (inExpected.mIsAsked)
	{
		calls.push_back({"GetAudioData", inExpected.mTime, kFrames - inExpected.mFirst, false});
		long long const first = inExpected.mTime.ToFrame64(k48000Hz);
		for (unsigned i = inExpected.mFirst; i < kFrames; ++i)
		{
			samples[i] = PositionSample(0, first + i - inExpected.mFirst);
		}
	}
	EXPECT_EQ(ioGenerator.mCalls, calls);
	EXPECT_EQ(Heard(buffer), samples);
}

TEST(AudioContent, TimesAreScaledAndMovedAndKeptFromBelowZero)
{
	std::mt19937 random(11);
	for (int trial = 0; trial < 500; ++trial)
	{
		SCOPED_TRACE("trial " + std::to_string(trial));
		ScopedContext const context;
		bool const isImmediate = random() % 2 == 0;
		context->SetImmediateRender(isImmediate);
		auto const generator = MakeObject<FakeGenerator>(1u);
		FrameRate const mediaRate = random() % 2 == 0 ? k48000Hz : k96000Hz;
		bool const hasOffset = random() % 4 != 0;
		// Quarters of a frame, so that blocks end within frames and on both bounds.
		auto const anyTime = [&](int inFrames)
		{
			return At(1) * 0.25 *
				   static_cast<double>(
					   static_cast<int>(random() % static_cast<unsigned>(8 * inFrames)) - 4 * inFrames);
		};
		TickTime const offset = anyTime(20);
		TickTime const time = anyTime(10);
		TickTime const mapped = time * (mediaRate == k96000Hz ? 2.0 : 1.0) + (hasOffset ? offset : kTimeZero);
		GraphFactory const factory;
		Expected const asIs{true, mapped, 0};
		bool const isBelow = mapped < kTimeZero;

		ExpectBlock(
			*factory.CreateAudioContentRenderer({context, k48000Hz, mediaRate, generator, hasOffset, offset}),
			*generator, time, isBelow && isImmediate ? FromStart(mapped, 8, 1) : asIs);
		ExpectBlock(*factory.CreateAudioContentMulticamRenderer({context, k48000Hz, mediaRate, {generator},
						std::make_shared<SelectedCamera>(), hasOffset, offset}),
			*generator, time, isBelow ? FromStart(mapped, 8, 0) : asIs);
	}
}

TEST(AudioContent, StartsAreHandedOnAsTheyAreAndRangesMapped)
{
	ScopedContext const context;
	auto const generator = MakeObject<FakeGenerator>(2u);
	generator->mDelay = At(7);
	auto const node = GraphFactory().CreateAudioContentRenderer(
		{context, k48000Hz, k96000Hz, generator, true, At(100), At(1000)});
	node->Preroll(At(5), true);
	node->FillInitialDelay(At(5), At(1), false, false);
	node->FillInitialDelay(At(5), At(1), false, true);
	RequestPrefetch(*node, {At(10), At(20)});
	node->InitializeAudioFilters();
	EXPECT_THAT(generator->mCalls, ElementsAre(Call{"Preroll", At(5), 0, true},
									   Call{"FillInitialDelay, forced", At(5), At(1).GetTicks(), false},
									   Call{"Prefetch 0", At(120), At(20).GetTicks(), false},
									   Call{"InitializeAudioFilters", {}, 0, false}));
	EXPECT_EQ(node->GetDelay(), At(7));
	context->SetDelayCompensationDisabled(true);
	EXPECT_EQ(node->GetDelay(), kTimeZero);
	EXPECT_EQ(InterfaceRef<IAudioGeneratorPrivate>(node)->GetNumChannels(), 2u);
	EXPECT_EQ(node->Clone(), node);
}

TEST(AudioContent, ContentWithinContentStartsAtItsOwnPlace)
{
	ScopedContext const context;
	context->SetImmediateRender(true);
	auto const generator = MakeObject<FakeGenerator>(1u);
	GraphFactory const factory;
	auto const content =
		factory.CreateAudioContentRenderer({context, k48000Hz, k48000Hz, generator, true, At(-3)});
	auto const camera = std::make_shared<SelectedCamera>();
	auto const inner = factory.CreateAudioContentMulticamRenderer(
		{context, k48000Hz, k48000Hz, {content}, camera, true, At(-2)});
	auto const outer = factory.CreateAudioContentMulticamRenderer(
		{context, k48000Hz, k48000Hz, {inner}, camera, true, At(-1)});
	dsp::AudioBuffer buffer = MakeBuffer(1, 8, 5.0f);
	outer->GetAudioData(kTimeZero, buffer, false);
	EXPECT_EQ(
		Heard(buffer), (std::vector<float>{0, 0, 0, 0, 0, 0, PositionSample(0, 0), PositionSample(0, 1)}));
}

TEST(AudioContent, OneNodeStandsForAKeyAndAPairOfRates)
{
	ScopedContext const context;
	GraphFactory const factory;
	InterfaceRef<UnknownBase> const key = MakeObject<FakeGenerator>(1u);
	auto const make = [&](FrameRate const& inMediaRate, InterfaceRef<UnknownBase> const& inKey)
	{
		return factory.CreateAudioContentRenderer({.mContext = context,
			.mFrameRate = k48000Hz,
			.mMediaFrameRate = inMediaRate,
			.mGenerator = MakeObject<FakeGenerator>(1u),
			.mKey = inKey});
	};
	auto const node = make(k48000Hz, key);
	EXPECT_EQ(make(k48000Hz, key), node);
	EXPECT_NE(make(k96000Hz, key), node);
	EXPECT_NE(make(k48000Hz, {}), node);
	InterfaceRef<IAudioGenerator> none;
	EXPECT_EQ(SonaroFactory::CreateClassRef()->CreateAudioContentRenderer(
				  {}, k48000Hz, k48000Hz, node, false, kTimeZero, kTimeMax, key, &none),
		eNullPointer);
	EXPECT_THROW(factory.CreateAudioContentRenderer({context, k48000Hz, k48000Hz, {}}),
		zorvcore::config::NullPtrException);
}

// Three angles, each of which sounds at its own value, read at time 0.
class Angles
{
public:
	explicit Angles(int inSelected)
		: mSelected(std::make_shared<SelectedCamera>(inSelected))
	{
		for (int angle = 0; angle < 3; ++angle)
		{
			mAngles.push_back(MakeObject<FakeGenerator>(
				1u, [angle](unsigned long long, long long) { return static_cast<float>(angle + 1); }));
			mAngles.back()->mDelay = At(angle);
		}
	}

	Generator Make(Context const& inContext) const
	{
		return GraphFactory().CreateAudioContentMulticamRenderer({inContext, k48000Hz, k48000Hz,
			{mAngles.begin(), mAngles.end()}, mSelected, true, At(100), At(1100)});
	}

	std::vector<InterfaceRef<FakeGenerator>> mAngles;
	std::shared_ptr<SelectedCamera> mSelected;
};

float HearOne(IAudioGenerator& ioNode)
{
	dsp::AudioBuffer buffer = MakeBuffer(1, 4, 9.0f);
	ioNode.GetAudioData(kTimeZero, buffer, false);
	return Heard(buffer)[3];
}

TEST(AudioContentMulticam, TheHostSwitchesAnglesOfAPlaybackAtTheTopLevelAlone)
{
	Prefetcher prefetcher;
	struct Case
	{
		char const* mName;
		bool mIsPlayback;
		unsigned mDepth;
		bool mIsClone;
		float mAfterwards;
	};
	Case const cases[] = {{"a playback", true, 0, false, 3.0f}, {"a nest of it", true, 1, false, 2.0f},
		{"an export", false, 0, false, 2.0f}, {"a clone", true, 0, true, 2.0f}};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context(256, test.mIsPlayback ? &prefetcher : nullptr);
		context.Nest(test.mDepth);
		Angles const angles(1);
		Generator const original = angles.Make(context);
		Generator const node = test.mIsClone ? original->Clone() : original;
		EXPECT_EQ(HearOne(*node), 2.0f);
		angles.mSelected->Set(2);
		EXPECT_EQ(HearOne(*node), test.mAfterwards);
	}
}

TEST(AudioContentMulticam, AnIndexWithoutAnAngleIsSilent)
{
	ScopedContext const context;
	for (int const index : {-1, 3})
	{
		Angles const angles(index);
		Generator const node = angles.Make(context);
		EXPECT_EQ(HearOne(*node), 0.0f);
		RequestPrefetch(*node, {At(0), At(10)});
		for (auto const& angle : angles.mAngles)
		{
			EXPECT_TRUE(angle->mCalls.empty());
		}
	}
}

TEST(AudioContentMulticam, OtherAnglesAreReadAheadInTheBackground)
{
	ScopedContext const context;
	context->SetMulticamOption(true);
	Angles const angles(1);
	Generator const node = angles.Make(context);
	RequestPrefetch(*node, {At(10), At(20)}, SynchronousPrefetch);
	for (int angle = 0; angle < 3; ++angle)
	{
		// To the end of the media, not to that of the request.
		EXPECT_THAT(angles.mAngles[static_cast<std::size_t>(angle)]->mCalls,
			ElementsAre(Call{angle == 1 ? "Prefetch 0" : "Prefetch 1", At(110), At(1000).GetTicks(), false}));
	}

	// The latency of them all is known once they were prerolled.
	EXPECT_EQ(node->GetDelay(), kTimeZero);
	node->Preroll(At(3), false);
	EXPECT_EQ(node->GetDelay(), At(2));
	context->SetDelayCompensationDisabled(true);
	EXPECT_EQ(node->GetDelay(), kTimeZero);
	EXPECT_FALSE(node->HasHistory());
	angles.mAngles[2]->mHasHistory = true;
	EXPECT_TRUE(node->HasHistory());

	EXPECT_THROW(GraphFactory().CreateAudioContentMulticamRenderer({context, k48000Hz, k48000Hz}),
		zorvcore::config::NullPtrException);
}

} // namespace SN::AudioContentTest
