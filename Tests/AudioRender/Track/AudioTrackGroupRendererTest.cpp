#include "AudioRender/Track/AudioTrackGroupRenderer.h"

#include "AudioRender/Track/CompensatingDelayOwnerMixin.h"
#include "Sonaro/AudioUtilities.h"
#include "Support/Engine.h"

namespace SN::AudioTrackGroupRendererTest
{

// Small whole numbers, so that sums of many are exact in any order.
SampleFunction Sound(std::size_t inPart)
{
	return [inPart](unsigned long long, long long inFrame)
	{ return static_cast<float>((inFrame * 11 + static_cast<long long>(inPart) * 37) % 101 - 50); };
}

constexpr float kSendGain = 0.5f;

InterfaceRef<IAudioProcessor> MakeHalfSend(Context const& inContext)
{
	return MakeSend(
		inContext, {}, ConstantParameters({kSendGain, 0.0f}), MakePanner(inContext, kPanNoneMono));
}

// A track of a sequence.
struct Part
{
	// A submix of earlier parts, of the sends of earlier parts, and of a generator of its own; or a clip.
	bool mIsMix = false;
	std::vector<std::size_t> mInputs;
	std::vector<std::size_t> mSenders;
	// How many frames it runs ahead, and how many its output waits.
	unsigned mAhead = 0;
	unsigned mWait = 0;
	bool mIsSendTaken = false;
	InterfaceRef<IAudioProcessor> mSend;
	InterfaceRef<FakeItem> mItem;
	InterfaceRef<IAudioGenerator> mTrack;
};

// A sequence at random and, sample by sample, what it should sound like.
class RandomSequence
{
public:
	RandomSequence(std::mt19937& ioRandom, InterfaceRef<IAudioRenderContext> const& inContext)
	{
		auto const below = [&](unsigned inLimit) { return static_cast<unsigned>(ioRandom() % inLimit); };
		mParts.resize(2 + below(9));
		std::deque<std::vector<DelayDependency>> waits;
		std::vector<TickTime> delays;
		std::vector<InterfaceRef<IAudioGenerator>> tracks;
		for (std::size_t i = 0; i < mParts.size(); ++i)
		{
			Part& part = mParts[i];
			part.mIsMix = i + 1 == mParts.size() || below(3) == 0;
			part.mAhead = below(300);
			part.mWait = below(50);
			for (std::size_t input = 0; part.mIsMix && input < i; ++input)
			{
				// Some feed several submixes, some none; a send has one destination.
				if (below(2) == 0)
				{
					part.mInputs.push_back(input);
				}
				if (below(3) == 0 && !mParts[input].mIsSendTaken)
				{
					mParts[input].mIsSendTaken = true;
					part.mSenders.push_back(input);
				}
			}
			MakeTrack(i, inContext);
			waits.push_back({{0, 0, 0}, {0, 0, part.mWait}});
			delays.push_back(At(part.mAhead));
			tracks.push_back(part.mTrack);
		}
		mGroup = MakeGroup(inContext, tracks, waits, delays);
	}

	// The sample that is played as the inIndex-th. inStep: 1 forward, -1 in reverse.
	float Hear(std::size_t inPart, long long inIndex, long long inFirst, int inStep) const
	{
		long long const index = inIndex - mParts[inPart].mWait;
		return index < 0 ? 0.0f : HearUndelayed(inPart, index, inFirst, inStep);
	}

	std::vector<Part> mParts;
	InterfaceRef<IAudioGenerator> mGroup;

private:
	float HearUndelayed(std::size_t inPart, long long inIndex, long long inFirst, int inStep) const
	{
		Part const& part = mParts[inPart];
		float sum = Sound(inPart)(0, inFirst + inStep * (inIndex + part.mAhead));
		for (std::size_t const input : part.mInputs)
		{
			sum += Hear(input, inIndex, inFirst, inStep);
		}
		for (std::size_t const sender : part.mSenders)
		{
			sum += kSendGain * HearUndelayed(sender, inIndex, inFirst, inStep);
		}
		return sum;
	}
	void MakeTrack(std::size_t inIndex, InterfaceRef<IAudioRenderContext> const& inContext)
	{
		Part& part = mParts[inIndex];
		part.mSend = MakeHalfSend(inContext);
		if (!part.mIsMix)
		{
			part.mItem = FakeItem::Make(1, 0, 50000, 0, Sound(inIndex));
			part.mTrack = MakeClipTrack(inContext, {part.mItem}, {.mProcessors = {part.mSend}});
			return;
		}
		std::vector<InterfaceRef<UnknownBase>> inputs{MakeObject<FakeGenerator>(1, Sound(inIndex))};
		for (std::size_t const input : part.mInputs)
		{
			inputs.push_back(mParts[input].mTrack);
		}
		for (std::size_t const sender : part.mSenders)
		{
			inputs.push_back(mParts[sender].mSend);
		}
		part.mTrack = MakeMixTrack(inContext, MakeInlet(inContext, inputs), {.mProcessors = {part.mSend}});
	}
};

TEST(AudioTrackGroupRenderer, NotOneSampleIsOutOfPlaceInRandomSequences)
{
	std::mt19937 random(71);
	constexpr unsigned kFrames = 400;
	for (unsigned trial = 0; trial < 200; ++trial)
	{
		ScopedContext const context(64);
		RandomSequence sequence(random, context);
		bool const reverse = trial % 2 == 1;
		for (bool const isClone : {false, true})
		{
			SCOPED_TRACE(Message() << trial << (isClone ? ", cloned" : ""));
			if (isClone)
			{
				// The same tracks, fed by each other, without waits.
				sequence.mGroup = sequence.mGroup->Clone();
				for (Part& part : sequence.mParts)
				{
					part.mWait = 0;
				}
			}
			Samples expected(1);
			for (unsigned i = 0; i < kFrames; ++i)
			{
				expected[0].push_back(sequence.Hear(
					sequence.mParts.size() - 1, i, reverse ? 1000 + kFrames - 1 : 1000, reverse ? -1 : 1));
			}
			RequestPrefetch(*sequence.mGroup, {At(1000), At(1010)});
			std::size_t calls = 1;
			BlockSizes const sizes = [&, size = RandomBlocks(trial, 64)]
			{
				++calls;
				return size();
			};
			ASSERT_TRUE(Same(Pull(*sequence.mGroup, {.mStartFrame = 1000, .mFrames = kFrames}, sizes,
								 reverse ? Direction::kReverse : Direction::kForward),
				expected));
			for (Part const& part : sequence.mParts)
			{
				// Clones share the record of their original.
				ASSERT_EQ(part.mIsMix ? calls : part.mItem->mCalls.size() / (isClone ? 2 : 1), calls)
					<< "each track is read ahead and rendered once";
			}
		}
	}
}

// A submix of its own parts, whose source keeps a record.
struct Submix
{
	explicit Submix(Context const& inContext, Processors const& inProcessors = {},
		InterfaceRef<IAudioPanProcessor> const& inPanner = {})
		: mTrack(MakeMixTrack(
			  inContext, mSource, {.mProcessors = inProcessors, .mPanner = inPanner, .mMute = mMute})),
		  mCached(mTrack)
	{
	}

	InterfaceRef<FakeGenerator> const mSource = MakeObject<FakeGenerator>(1);
	std::shared_ptr<Mute> const mMute = std::make_shared<Mute>(0);
	Generator const mTrack;
	InterfaceRef<ICachedAudioGenerator> const mCached;
};

// Two submixes; the second is the output.
struct SubmixPair
{
	SubmixPair(Context const& inContext, std::vector<TickTime> const& inDelays,
		InterfaceRef<UnknownBase> const& inOwner = {})
		: mFirst(inContext),
		  mOutput(inContext),
		  mGroup(MakeGroup(inContext, {mFirst.mTrack, mOutput.mTrack}, {}, inDelays, inOwner))
	{
	}

	Submix const mFirst;
	Submix const mOutput;
	Generator const mGroup;
};

TEST(AudioTrackGroupRenderer, TracksRunAheadAndWrapInALoop)
{
	struct Case
	{
		char const* mName;
		long long mTime;
		bool mReverse;
		bool mLoops;
		bool mIsNested;
		// The times of a track 30 ahead and of the output, 10 ahead; the loop goes from 100 to 200.
		long long mTrack;
		long long mOutput;
	};
	constexpr Case kCases[] = {
		{"forward", 195, false, false, false, 225, 205},
		{"in reverse", 150, true, false, false, 120, 140},
		{"in a loop", 169, false, true, false, 199, 179},
		{"at its end", 170, false, true, false, 100, 180},
		{"over its end, but the output", 195, false, true, false, 125, 205},
		{"nested there is no loop", 195, false, true, true, 225, 205},
		{"in a loop in reverse, ahead is later", 171, true, true, false, 201, 161},
		{"before its start in reverse", 70, true, true, false, 200, 60},
		{"just within it", 71, true, true, false, 101, 61},
		{"nested in reverse", 70, true, true, true, 40, 60},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher{At(100), At(200), test.mLoops ? 1u : 0u, test.mReverse ? 1u : 0u};
		ScopedContext const context(256, &prefetcher);
		context.Nest(test.mIsNested ? 1 : 0);
		SubmixPair const pair(context, {At(30), At(10)});
		dsp::AudioBuffer buffer(1, 5);
		pair.mGroup->GetAudioData(At(test.mTime), buffer, test.mReverse);
		EXPECT_THAT(pair.mFirst.mSource->mCalls,
			ElementsAre(Call{"GetAudioData", At(test.mTrack), 5, test.mReverse}));
		EXPECT_THAT(pair.mOutput.mSource->mCalls,
			ElementsAre(Call{"GetAudioData", At(test.mOutput), 5, test.mReverse}));
	}
}

TEST(AudioTrackGroupRenderer, OnlyANestedGroupOutsideOfPlaybackWarmsUp)
{
	std::string const prefetch = "Prefetch " + std::to_string(SynchronousPrefetch);
	for (bool const isNested : {false, true})
	{
		for (bool const isPlayback : {false, true})
		{
			Prefetcher prefetcher;
			ScopedContext const context(64, isPlayback ? &prefetcher : nullptr);
			context.Nest(isNested ? 1 : 0);
			// A short list of delays: the output has none.
			SubmixPair const pair(context, {At(100)});
			EXPECT_EQ(pair.mGroup->GetDelay(), At(100));
			pair.mGroup->Preroll(At(500), true);
			std::vector<Call> calls{{"Preroll", At(500), 0, true}};
			if (isNested && !isPlayback)
			{
				calls.push_back({prefetch, At(500), At(64).GetTicks(), false});
				calls.push_back({"GetAudioData", At(500), 64, false});
				calls.push_back({prefetch, At(564), At(36).GetTicks(), false});
				calls.push_back({"GetAudioData", At(564), 36, false});
			}
			EXPECT_EQ(pair.mFirst.mSource->mCalls, calls) << isNested << isPlayback;
			EXPECT_EQ(pair.mOutput.mSource->mCalls.back().mTime, At(calls.size() > 1 ? 464 : 500));
		}
	}
}

TEST(AudioTrackGroupRenderer, InstancesBeyondTheLimitAreSilent)
{
	for (bool const hasHistory : {false, true})
	{
		ScopedContext const context;
		InterfaceRef<UnknownBase> const owner(MakeObject<FakeParameter>(0.0f));
		InterfaceRef<IAudioGenerator> instance;
		auto const clone = [&]
		{
			return SonaroFactory::CreateClassRef()->CreateAudioTrackGroupRendererViaCloning(
				context, k48000Hz, owner, &instance);
		};
		EXPECT_EQ(clone(), -1) << "there is nothing yet";
		SubmixPair const pair(context, {}, owner);
		pair.mFirst.mSource->mHasHistory = hasHistory;
		std::set<InterfaceRef<IAudioGenerator>> instances{pair.mGroup};
		std::set<InterfaceRef<UnknownBase>> tracks;
		for (unsigned i = 2; i <= 201; ++i)
		{
			ASSERT_EQ(clone(), kSuccess);
			instances.insert(instance);
			for (auto const& track : InterfaceRef<IAudioRenderGraphNodeInfo>(instance)->GetInputNodes())
			{
				tracks.insert(track);
			}
			bool const isHeard = PullWhole(*instance, {.mFrames = 1})[0][0] != 0.0f;
			ASSERT_EQ(isHeard, !hasHistory || i <= GetMaxNestableSequenceInstances()) << i;
		}
		EXPECT_EQ(instances.size(), hasHistory ? 201u : 1u);
		EXPECT_EQ(tracks.size(), hasHistory ? 2 * 199u : 2u) << "each clone has tracks of its own";
		context.Nest();
		EXPECT_EQ(clone(), -1) << "built on another level";
	}
}

TEST(AudioMixTrackRenderer, WhileMutedProcessorsRunOnSilence)
{
	Prefetcher prefetcher;
	ScopedContext const context(500, &prefetcher);
	auto const meter = MakeObject<FakeProcessor>(1.0f);
	Submix const submix(context, {meter});
	submix.mSource->mDelay = At(30);
	EXPECT_EQ(submix.mTrack->GetDelay(), kTimeZero) << "whatever the source's is";
	submix.mTrack->Preroll(At(0), false);
	submix.mTrack->Preroll(At(-100), false);
	submix.mTrack->FillInitialDelay(At(0), At(50), false, true);
	EXPECT_THAT(submix.mSource->mCalls, ElementsAre(Call{"Preroll", At(0), 0, false}));
	submix.mMute->Set(1);
	submix.mCached->GenerateAudio(500, At(0), false);
	EXPECT_EQ(TakeCached(submix.mTrack, 1, 500)[0][240], PositionSample(0, 240) * 0.5f) << "a fade of 10 ms";
	submix.mSource->mCalls.clear();
	meter->mCalls.clear();
	EXPECT_EQ(PullWhole(*submix.mTrack, {.mStartFrame = 500, .mFrames = 500})[0], std::vector<float>(500));
	EXPECT_TRUE(submix.mSource->mCalls.empty());
	EXPECT_THAT(meter->mCalls, ElementsAre(Call{"ProcessAudioData", At(500), 500, false}));
	submix.mTrack->Reset();
	EXPECT_EQ(TakeCached(submix.mTrack, 1, 500)[0][0], 0.0f) << "a reset empties the cache";
}

TEST(AudioMixTrackRenderer, ItsPanWidensTheCacheAndItsSendsSkipTheirDelaysInBlocks)
{
	ScopedContext const context(8);
	auto const send = MakeHalfSend(context);
	Submix const submix(context, {send}, MakePanner(context, kPanMonoToStereo, ConstantParameters({1.0f})));
	InterfaceRef<CompensatingDelayOwnerMixin>(submix.mTrack)->SetDelays({{0, 0, 3}, {0, 0, 2}});
	submix.mTrack->Preroll(At(0), false);
	for (bool const reverse : {false, true})
	{
		submix.mCached->GenerateAudio(8, At(50), reverse);
		EXPECT_EQ(TakeCached(submix.mTrack, 2, 8)[1][2], PositionSample(0, reverse ? 57 : 50))
			<< "2 frames late";
		EXPECT_EQ(TakeCached(send, 1, 8)[0][3], kSendGain * PositionSample(0, reverse ? 54 : 50));
	}
}

TEST(Tracks, EachOfTwoSendsHasAWaitOfItsOwn)
{
	for (bool const isMix : {false, true})
	{
		SCOPED_TRACE(isMix ? "of a mix" : "of clips");
		ScopedContext const context(64);
		Processors const sends{MakeHalfSend(context), MakeHalfSend(context)};
		auto const track =
			isMix ? MakeMixTrack(context, MakeObject<FakeGenerator>(1), {.mProcessors = sends})
				  : MakeClipTrack(context, {FakeItem::Make(1, 0, 1000, 0)}, {.mProcessors = sends});
		constexpr std::uint32_t kWaits[] = {3, 10};
		InterfaceRef<CompensatingDelayOwnerMixin>(track)->SetDelays({{0, 0, 3}, {0, 0, 10}, {0, 0, 0}});
		track->Preroll(At(0), false);
		PullWhole(*track, {.mFrames = 40});
		for (unsigned send = 0; send < 2; ++send)
		{
			auto const sent = TakeCached(sends[send], 1, 40)[0];
			EXPECT_EQ(sent[kWaits[send] - 1], 0.0f) << send;
			EXPECT_EQ(sent[kWaits[send]], kSendGain * PositionSample(0, 0)) << send;
			EXPECT_EQ(sent[39], kSendGain * PositionSample(0, 39 - kWaits[send])) << send;
		}
	}
}

} // namespace SN::AudioTrackGroupRendererTest
