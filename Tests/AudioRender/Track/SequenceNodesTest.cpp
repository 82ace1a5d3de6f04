#include "AudioRender/Core/AudioTrackRenderableItemMixin.h"
#include "AudioRender/Source/AudioGeneratorContentSpeedAdapter.h"
#include "Sonaro/DelayDependency.h"
#include "Sonaro/IAudioRecordCompletion.h"
#include "Sonaro/IAudioTransition.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Contexts.h"
#include "Support/FakeItem.h"
#include "Support/FakeParameter.h"
#include "Support/Fakes.h"
#include "Support/Panning.h"
#include "Support/SimpleGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvcore/config/Exceptions.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;
using zorvcore::classref::MakeObject;
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
	explicit Nodes(IAudioRenderContext& ioContext)
	{
		auto const context = InterfaceRef<IAudioRenderContext>::FromThis(&ioContext);
		auto const factory = SonaroFactory::CreateClassRef();
		factory->CreateAudioTrackInletRenderer(
			context, k48000Hz, {mA, mP, mB}, VX::kAudioChannelLayout_Mono, &mInlet);
		factory->CreateAudioMixTrackRenderer(
			context, k48000Hz, mA, {}, {}, {mP}, {}, VX::kAudioChannelLayout_Mono, &mSubmix);
		factory->CreateAudioTrackGroupRenderer(
			context, k48000Hz, {mA, mB}, {}, {At(30), At(10)}, VX::kAudioChannelLayout_Mono, {}, &mGroup);
		factory->CreateAudioMixRenderer(context, k48000Hz, mA, 1.0, mB, 1.0, mP, &mJoin);
		factory->CreateAudioTransitionRenderer(
			context, k48000Hz, {}, {}, mA, mB, At(0), At(0), At(0), At(100), &mTransition);
	}

	Calls mCalls;
	InterfaceRef<Listener> mA = MakeObject<Listener>('A', false, mCalls);
	InterfaceRef<Listener> mB = MakeObject<Listener>('B', false, mCalls);
	InterfaceRef<Listener> mP = MakeObject<Listener>('P', true, mCalls);
	InterfaceRef<IAudioGenerator> mInlet;
	InterfaceRef<IAudioGenerator> mSubmix;
	InterfaceRef<IAudioGenerator> mGroup;
	InterfaceRef<IAudioGenerator> mJoin;
	InterfaceRef<IAudioGenerator> mTransition;
};

// The nodes that Nodes has not, each over A, those of tracks and items with P and a panner whose control waits.
// On the track B follows A; two items would be taken for its frame alone.
struct FurtherNodes
{
	explicit FurtherNodes(Nodes const& inNodes, IAudioRenderContext& ioContext)
	{
		auto const context = InterfaceRef<IAudioRenderContext>::FromThis(&ioContext);
		auto const factory = SonaroFactory::CreateClassRef();
		auto const panner = [&]
		{
			auto const pan = MakeObject<FakeParameter>(0.5f);
			pan->mIsPending = true;
			return MakePanner(context, kPanMonoToStereo, {pan});
		};
		inNodes.mA->Init(At(0), At(100), At(0), k48000Hz);
		inNodes.mB->Init(At(1000), At(1100), At(1000), k48000Hz);
		factory->CreateAudioClipTrackRenderer(context, k48000Hz,
			{inNodes.mA, inNodes.mB, FakeItem::Make(1, 2000, 2100, 2000)}, {}, {}, {inNodes.mP}, panner(),
			VX::kAudioChannelLayout_Mono, &mTrack);
		factory->CreateAudioMixTrackRenderer(context, k48000Hz, inNodes.mA, {}, {}, {inNodes.mP}, panner(),
			VX::kAudioChannelLayout_Mono, &mSubmix);
		factory->CreateRealtimeAudioClipTrackItemRenderer(context, k48000Hz, inNodes.mA, {inNodes.mP},
			panner(), 1.0, MakeObject<ShiftTransform>(0), kTimeZero, &mItem);
		factory->CreateAudioClipRenderer(context, k48000Hz, {{inNodes.mA, {{0, 0}}}},
			VX::kAudioChannelLayout_Mono, kTimeZero, 1.0f, 1.0, &mClip);
		factory->CreateAlignToFrameRateAudioGeneratorDecorator(inNodes.mA, k48000Hz, &mAligned);
		AudioGeneratorContentSpeedAdapter::Create(inNodes.mA, 2.0, &mAdapted);
	}

	InterfaceRef<IAudioGenerator> mTrack;
	InterfaceRef<IAudioGenerator> mSubmix;
	InterfaceRef<IAudioGenerator> mItem;
	InterfaceRef<IAudioGenerator> mClip;
	InterfaceRef<IAudioGenerator> mAligned;
	InterfaceRef<IAudioGenerator> mAdapted;
};

TEST(SequenceNodes, EveryCallReachesWhatItConcernsInOrder)
{
	struct Case
	{
		char const* mName;
		InterfaceRef<IAudioGenerator> Nodes::*mNode;
		// Filling in steps, filling at once, then the filters' start and end, the parameters, the end of a
		// recording; a reset before and after a preroll.
		Calls mCalls;
	};
	Case const cases[] = {
		{"an inlet", &Nodes::mInlet, "AF BF | Ai Pi Bi As Ps Bs | | Ar Pr Br | Ap Bp | Ar Pr Br "},
		{"a submix", &Nodes::mSubmix, "| Ai Pi As Ps | Pl Al | | Ap Pp | Ar Pr "},
		{"a group", &Nodes::mGroup, "Af Bf AF BF | Ai Bi As Bs | Al Bl An Bn | Ar Br | Ap Bp AF BF | Ar Br "},
		{"a join", &Nodes::mJoin,
			"Af Bf AF BF | Ai Bi Pi As Bs Ps | Al Bl Pl | Ar Br Pr | Ap Bp Pp | Ar Br Pr "},
		{"a transition", &Nodes::mTransition, "Af Bf AF BF | Ai Bi As Bs | Al Bl | Ar Br | Ap Bp | Ar Br "},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher;
		ScopedContext const context(64, &prefetcher);
		Nodes nodes(*context.Get());
		IAudioGenerator& node = *(nodes.*test.mNode);
		node.FillInitialDelay(At(0), At(1), false, false);
		node.FillInitialDelay(At(0), At(1), false, true);
		nodes.mCalls += "| ";
		node.InitializeAudioFilters();
		node.ShutdownAudioFilters();
		nodes.mCalls += "| ";
		LiveAudioParameterMap parameters;
		if (InterfaceRef<ILiveAudioParameterOwner> const owner = nodes.*test.mNode)
		{
			owner->CollectLiveParameters(parameters);
		}
		if (InterfaceRef<IAudioRecordCompletion> const completion = nodes.*test.mNode)
		{
			completion->NotifyRecordComplete({});
		}
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
	Nodes nodes(*context.Get());
	FurtherNodes const further(nodes, *context.Get());
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
		{"a track", further.mTrack, "Pl Al Bl ", 1, "An Bn ", "BT AT BT "},
		{"a submix", further.mSubmix, "Pl Al ", 1, "", "AT "},
		{"an item", further.mItem, "Pl Al ", 1, "", "AT "},
		{"a clip", further.mClip, "", 0, "", "AT "},
		{"a decorator", further.mAligned, "Al ", 0, "An ", "AT "},
		{"another one", further.mAdapted, "Al ", 0, "An ", "AT "},
		{"a group", nodes.mGroup, "Al Bl ", 0, "An Bn ", "AT BT "},
		{"a join", nodes.mJoin, "Al Bl Pl ", 0, "", "AT BT "},
		{"a transition", nodes.mTransition, "Al Bl ", 0, "", "AT BT "},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		test.mNode->Preroll(At(0), false);
		nodes.mCalls.clear();
		LiveAudioParameterMap parameters;
		if (InterfaceRef<ILiveAudioParameterOwner> const owner = test.mNode)
		{
			owner->CollectLiveParameters(parameters);
		}
		EXPECT_EQ(std::exchange(nodes.mCalls, {}), test.mLive);
		EXPECT_EQ(parameters.size(), test.mPannersParameters);
		if (InterfaceRef<IAudioRecordCompletion> const completion = test.mNode)
		{
			completion->NotifyRecordComplete({});
		}
		EXPECT_EQ(std::exchange(nodes.mCalls, {}), test.mRecording);
		for (PrefetchType const type :
			{SynchronousPrefetch, AsynchronousPrefetch, AsynchronousPrepareForPrefetch})
		{
			PrefetchRequestAccumulator accumulator(
				PrefetchRequestAccumulator::ExtendCapacity, nullptr, nullptr);
			test.mNode->AccumulatePrefetchRequests({At(0), At(2000)}, type, accumulator);
			Calls expected = test.mPrefetch;
			std::replace(expected.begin(), expected.end(), 'T', static_cast<char>('0' + type));
			EXPECT_EQ(std::exchange(nodes.mCalls, {}), expected);
		}
	}
}

TEST(SequenceNodes, DelaysAndHistoriesComeFromBehind)
{
	ScopedContext const context(64);
	context->PushNestingLevel();
	Nodes const nodes(*context.Get());
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
	Nodes const nodes(*context.Get());
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
	auto const factory = SonaroFactory::CreateClassRef();
	InterfaceRef<IAudioProcessor> fader;
	factory->CreateAudioFaderRenderer(context.Get(), k48000Hz,
		{MakeObject<FakeParameter>([](TickTime const& inTime) { return inTime < At(64) ? 1.0f : 0.0f; }),
			MakeObject<FakeParameter>(0.0f)},
		&fader);
	auto const source = MakeObject<FakeGenerator>(1);
	InterfaceRef<IAudioGenerator> join;
	factory->CreateAudioMixRenderer(context.Get(), k48000Hz, source, 1.0, source, 1.0, fader, &join);
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
			SCOPED_TRACE(testing::Message() << isPlayback << isNested);
			Prefetcher prefetcher;
			ScopedContext const context(1024, isPlayback ? &prefetcher : nullptr);
			if (isNested)
			{
				context->PushNestingLevel();
			}
			auto const mute = std::make_shared<zorvcore::threads::AtomicIntegral<int>>(0);
			InterfaceRef<IAudioGenerator> submix;
			SonaroFactory::CreateClassRef()->CreateAudioMixTrackRenderer(context.Get(), k48000Hz,
				MakeObject<FakeGenerator>(1), {}, mute, {}, {}, VX::kAudioChannelLayout_Mono, &submix);
			mute->Set(1);
			float const last = PullWhole(*submix, {.mFrames = 1000})[0][999];
			EXPECT_EQ(last, isPlayback && !isNested ? 0.0f : PositionSample(0, 999));
			if (isPlayback)
			{
				Nodes const nodes(*context.Get());
				nodes.mGroup->Preroll(At(0), false);
				EXPECT_EQ(nodes.mCalls, isNested ? "Ap Bp " : "Ap Bp AF BF ");
			}
		}
	}
}

} // namespace
} // namespace SN
