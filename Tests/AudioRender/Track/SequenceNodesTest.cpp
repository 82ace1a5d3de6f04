#include "AudioRender/Source/AudioGeneratorContentSpeedAdapter.h"
#include "Sonaro/IAudioRecordCompletion.h"
#include "Sonaro/IAudioTransition.h"
#include "Support/Engine.h"

namespace SN::SequenceNodesTest
{

using Calls = std::string;

// A source, which can be an item of a track, and, beside it, a processor: writes its letter and that of each call into one log.
class Listener final : public SimpleGenerator,
					   public IAudioProcessor,
					   public ILiveAudioParameterOwner,
					   public IAudioRecordCompletion,
					   public AudioTrackRenderableItemMixin
{
public:
	Listener(char inLetter, bool inIsProcessor, Calls& ioCalls)
		: SimpleGenerator(1),
		  mLetter(inLetter),
		  mIsProcessor(inIsProcessor),
		  mCalls(ioCalls)
	{
	}

	InterfaceRef<IAudioGenerator> Clone() override { return SimpleGenerator::Clone(); }
	InterfaceRef<IAudioProcessor> Clone(FrameRate const&, unsigned, unsigned) override
	{
		return InterfaceRef<IAudioProcessor>::FromThis(this);
	}
	bool HasHistory() override { return mHasHistory; }
	TickTime GetDelay() override { return At(40); }
	void GetAudioData(TickTime const&, dsp::AudioBuffer&, bool) override {}
	void ProcessAudioData(dsp::AudioBuffer&, TickTime const&) override {}
	void Preroll(TickTime const&, bool) override { Log('p'); }
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool inForced) override
	{
		Log(inForced ? 'F' : 'f');
	}
	void AccumulatePrefetchRequests(
		PrefetchRange const&, PrefetchType inType, PrefetchRequestAccumulator&) override
	{
		Log(static_cast<char>('0' + inType));
	}
	void Reset() override { Log('r'); }
	void InitializeAudioFilters() override { Log('i'); }
	void ShutdownAudioFilters() override { Log('s'); }
	void InitializeAudioFilter() override { Log('i'); }
	void ShutdownAudioFilter() override { Log('s'); }
	void CollectLiveParameters(LiveAudioParameterMap&) override { Log('l'); }
	void NotifyRecordComplete(InterfaceRef<UnknownBase> const&) override { Log('n'); }

	bool mHasHistory = false;

protected:
	void* QueryMap(GUID const& inIdentifier) override
	{
		using namespace zorvcore::classref;
		void* const found =
			mIsProcessor ? QueryInterfaces<ILiveAudioParameterOwner, IAudioProcessor>(this, inIdentifier)
						 : QueryInterfaces<ILiveAudioParameterOwner, IAudioRecordCompletion, IAudioGenerator,
							   IAudioGeneratorPrivate, IAudioTrackRenderableItem>(this, inIdentifier);
		return found ? found : Unknown::QueryMap(inIdentifier);
	}

private:
	void Log(char inCall) const { mCalls += {mLetter, inCall, ' '}; }

	char mLetter;
	bool mIsProcessor;
	Calls& mCalls;
};

struct Nodes
{
	// A and B are sources, P a processor.
	explicit Nodes(ScopedContext const& inContext)
		: mInlet(MakeInlet(inContext, {mA, mP, mB})),
		  mSubmix(MakeMixTrack(inContext, mA, {.mProcessors = {mP}})),
		  mGroup(MakeGroup(inContext, {mA, mB}, {}, {At(30), At(10)})),
		  mJoin(MakeJoin(inContext, mA, mB, mP))
	{
		SonaroFactory::CreateClassRef()->CreateAudioTransitionRenderer(
			inContext, k48000Hz, {}, {}, mA, mB, At(0), At(0), At(0), At(100), &mTransition);
	}

	Calls mCalls;
	InterfaceRef<Listener> mA = MakeObject<Listener>('A', false, mCalls);
	InterfaceRef<Listener> mB = MakeObject<Listener>('B', false, mCalls);
	InterfaceRef<Listener> mP = MakeObject<Listener>('P', true, mCalls);
	Generator mInlet;
	Generator mSubmix;
	Generator mGroup;
	Generator mJoin;
	Generator mTransition;
};

// Asks a node for its live parameters and then reports the end of a recording to it.
LiveAudioParameterMap CollectAndNotify(Generator const& inNode, Calls& ioCalls, Calls& outCollected)
{
	LiveAudioParameterMap parameters;
	if (InterfaceRef<ILiveAudioParameterOwner> const owner = inNode)
	{
		owner->CollectLiveParameters(parameters);
	}
	outCollected = std::exchange(ioCalls, {});
	if (InterfaceRef<IAudioRecordCompletion> const completion = inNode)
	{
		completion->NotifyRecordComplete({});
	}
	return parameters;
}

TEST(SequenceNodes, EveryCallReachesWhatItConcernsInOrder)
{
	struct Case
	{
		char const* mName;
		InterfaceRef<IAudioGenerator> Nodes::*mNode;
		// Filling in steps, filling at once, then the filters' start and end; a reset before and after a preroll.
		Calls mCalls;
	};
	Case const cases[] = {
		{"an inlet", &Nodes::mInlet, "AF BF | Ai Pi Bi As Ps Bs | Ar Pr Br | Ap Bp | Ar Pr Br "},
		{"a submix", &Nodes::mSubmix, "| Ai Pi As Ps | | Ap Pp | Ar Pr "},
		{"a group", &Nodes::mGroup, "Af Bf AF BF | Ai Bi As Bs | Ar Br | Ap Bp AF BF | Ar Br "},
		{"a join", &Nodes::mJoin, "Af Bf AF BF | Ai Bi Pi As Bs Ps | Ar Br Pr | Ap Bp Pp | Ar Br Pr "},
		{"a transition", &Nodes::mTransition, "Af Bf AF BF | Ai Bi As Bs | Ar Br | Ap Bp | Ar Br "},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher;
		ScopedContext const context(64, &prefetcher);
		Nodes nodes(context);
		IAudioGenerator& node = *(nodes.*test.mNode);
		node.FillInitialDelay(At(0), At(1), false, false);
		node.FillInitialDelay(At(0), At(1), false, true);
		nodes.mCalls += "| ";
		node.InitializeAudioFilters();
		node.ShutdownAudioFilters();
		nodes.mCalls += "| ";
		node.Reset();
		nodes.mCalls += "| ";
		node.Preroll(At(0), false);
		nodes.mCalls += "| ";
		node.Reset();
		EXPECT_EQ(nodes.mCalls, test.mCalls);
	}
}

TEST(SequenceNodes, LiveParametersRecordingsAndTypesOfPrefetchReachTheSources)
{
	Prefetcher prefetcher;
	ScopedContext const context(64, &prefetcher);
	Nodes nodes(context);
	nodes.mA->Init(At(0), At(100), At(0), k48000Hz);
	nodes.mB->Init(At(1000), At(1100), At(1000), k48000Hz);
	// With P and a panner whose control waits. On the track B follows A; two items would be taken for its frame
	// alone.
	auto const pan = MakeObject<FakeParameter>(0.5f);
	pan->mIsPending = true;
	auto const panner = [&] { return MakePanner(context, kPanMonoToStereo, {pan}); };
	Generator aligned;
	Generator adapted;
	SonaroFactory::CreateClassRef()->CreateAlignToFrameRateAudioGeneratorDecorator(
		nodes.mA, k48000Hz, &aligned);
	AudioGeneratorContentSpeedAdapter::Create(nodes.mA, 2.0, &adapted);
	struct Case
	{
		char const* mName;
		InterfaceRef<IAudioGenerator> mNode;
		Calls mLive;
		std::size_t mPannersParameters;
		Calls mRecording;
		// Of a prefetch of type T; a latent item that lies ahead is asked to be filled, and then to be played.
		Calls mPrefetch;
	};
	Case const cases[] = {
		{"a track",
			MakeClipTrack(context, {nodes.mA, nodes.mB, FakeItem::Make(1, 2000, 2100, 2000)},
				{.mProcessors = {nodes.mP}, .mPanner = panner()}),
			"Pl Al Bl ", 1, "An Bn ", "BT AT BT "},
		{"a submix", MakeMixTrack(context, nodes.mA, {.mProcessors = {nodes.mP}, .mPanner = panner()}),
			"Pl Al ", 1, "", "AT "},
		{"an item", MakeItem(context, nodes.mA, {.mProcessors = {nodes.mP}, .mPanner = panner()}), "Pl Al ",
			1, "", "AT "},
		{"a clip", MakeClip(context, {{nodes.mA, {{0, 0}}}}), "", 0, "", "AT "},
		{"a decorator", aligned, "Al ", 0, "An ", "AT "},
		{"another one", adapted, "Al ", 0, "An ", "AT "},
		{"a group", nodes.mGroup, "Al Bl ", 0, "An Bn ", "AT BT "},
		{"a join", nodes.mJoin, "Al Bl Pl ", 0, "", "AT BT "},
		{"a transition", nodes.mTransition, "Al Bl ", 0, "", "AT BT "},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		test.mNode->Preroll(At(0), false);
		nodes.mCalls.clear();
		Calls live;
		auto const parameters = CollectAndNotify(test.mNode, nodes.mCalls, live);
		EXPECT_EQ(live, test.mLive);
		EXPECT_EQ(parameters.size(), test.mPannersParameters);
		EXPECT_EQ(std::exchange(nodes.mCalls, {}), test.mRecording);
		for (PrefetchType const type :
			{SynchronousPrefetch, AsynchronousPrefetch, AsynchronousPrepareForPrefetch})
		{
			RequestPrefetch(*test.mNode, {At(0), At(2000)}, type);
			Calls expected = test.mPrefetch;
			std::replace(expected.begin(), expected.end(), 'T', static_cast<char>('0' + type));
			EXPECT_EQ(std::exchange(nodes.mCalls, {}), expected);
		}
	}
}

TEST(SequenceNodes, DelaysAndHistoriesComeFromTheSources)
{
	ScopedContext const context(64);
	context.Nest();
	Nodes const nodes(context);
	EXPECT_EQ(nodes.mGroup->GetDelay(), At(70)) << "what a track runs ahead, and its own";
	EXPECT_EQ(nodes.mInlet->GetDelay(), kTimeZero);
	dsp::AudioBuffer buffer(1, 4);
	EXPECT_THROW(nodes.mInlet->GetAudioData(At(0), buffer, false), zorvcore::config::NullPtrException)
		<< "a processor without a cache has nothing to be heard";
	auto const histories = [&]
	{
		std::vector<bool> result;
		for (auto const& node : {nodes.mInlet, nodes.mSubmix, nodes.mGroup, nodes.mJoin, nodes.mTransition})
		{
			result.push_back(node->HasHistory());
		}
		return result;
	};
	EXPECT_EQ(histories(), (std::vector<bool>{false, false, false, false, false}));
	nodes.mP->mHasHistory = true;
	EXPECT_EQ(histories(), (std::vector<bool>{true, true, false, false, false}));
	nodes.mP->mHasHistory = false;
	nodes.mA->mHasHistory = true;
	EXPECT_EQ(histories(), (std::vector<bool>{true, true, true, true, true}));
}

TEST(SequenceNodes, ClonesStandWhereTheirOriginalsStand)
{
	ScopedContext const context;
	Nodes const nodes(context);
	for (auto const& node : {nodes.mJoin, nodes.mTransition})
	{
		InterfaceRef<IAudioTrackRenderableItem>(node)->Init(At(20), At(30), At(5), k48000Hz);
		InterfaceRef<IAudioTrackRenderableItem> const clone(node->Clone());
		EXPECT_EQ(clone->GetStartTime(), At(20));
		EXPECT_EQ(clone->GetEndTime(), At(30));
		EXPECT_EQ(clone->GetTrackItemStartTime(), At(5));
	}
}

TEST(SequenceNodes, AJoinSamplesItsParametersAtTheStartOfEachRequest)
{
	ScopedContext const context(64);
	auto const fader = MakeFader(context,
		{MakeObject<FakeParameter>([](TickTime const& inTime) { return inTime < At(64) ? 1.0f : 0.0f; }),
			MakeObject<FakeParameter>(0.0f)});
	auto const source = MakeObject<FakeGenerator>(1);
	auto const join = MakeJoin(context, source, source, fader);
	dsp::AudioBuffer buffer(1, 200);
	join->GetAudioData(At(60), buffer, false);
	EXPECT_EQ(buffer.GetChannel(0)[199], PositionSample(0, 60 + 7)) << "the same time and gain in each pass";
	join->GetAudioData(At(64), buffer, false);
	EXPECT_NE(buffer.GetChannel(0)[199], PositionSample(0, 64 + 7));
}

TEST(SequenceNodes, OnlyPlaybackAtTheTopFollowsTheHostsMuteAndFillsDelays)
{
	for (bool const isPlayback : {false, true})
	{
		for (bool const isNested : {false, true})
		{
			SCOPED_TRACE(Message() << isPlayback << isNested);
			Prefetcher prefetcher;
			ScopedContext const context(1024, isPlayback ? &prefetcher : nullptr);
			context.Nest(isNested ? 1 : 0);
			auto const mute = std::make_shared<Mute>(0);
			auto const submix = MakeMixTrack(context, MakeObject<FakeGenerator>(1), {.mMute = mute});
			mute->Set(1);
			float const last = PullWhole(*submix, {.mFrames = 1000})[0][999];
			EXPECT_EQ(last, isPlayback && !isNested ? 0.0f : PositionSample(0, 999));
			if (isPlayback)
			{
				Nodes const nodes(context);
				nodes.mGroup->Preroll(At(0), false);
				EXPECT_EQ(nodes.mCalls, isNested ? "Ap Bp " : "Ap Bp AF BF ");
			}
		}
	}
}

} // namespace SN::SequenceNodesTest
