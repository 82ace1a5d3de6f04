#include "AudioRender/Track/AudioClipTrackRenderer.h"

#include "Sonaro/AudioTrackRenderableItems.h"
#include "Support/Engine.h"

namespace SN::AudioClipTrackRendererTest
{

// A track under construction.
struct TrackParts : TrackSettings
{
	TrackParts() { mMute = std::make_shared<Mute>(0); }
	// A clip from frame 0 on, with silence before and after.
	explicit TrackParts(long long inClipEnd, SampleFunction const& inFunction = PositionSample)
		: TrackParts()
	{
		AddSilence(-100, 0);
		Add(0, inClipEnd, 0, inFunction);
		AddSilence(inClipEnd, inClipEnd + 5000);
	}

	// From inStart to inEnd, with time 0 of its own at inOrigin.
	InterfaceRef<FakeItem> Add(long long inStart, long long inEnd, long long inOrigin,
		SampleFunction const& inFunction = PositionSample)
	{
		mFakes.push_back(FakeItem::Make(1, inStart, inEnd, inOrigin, inFunction));
		mItems.push_back(mFakes.back());
		return mFakes.back();
	}
	void AddSilence(long long inStart, long long inEnd)
	{
		mItems.push_back(CreateSilentAudioTrackRenderableItem(At(inStart), At(inEnd), k48000Hz));
	}
	Generator Make(ScopedContext const& inContext) const { return MakeClipTrack(inContext, mItems, *this); }

	AudioTrackRenderableItemList mItems;
	std::vector<InterfaceRef<FakeItem>> mFakes;
};

// A list of items that meet, with gaps, cuts within clips and clips of one sample, and what each frame of
// the sequence should hold.
TrackParts MakeRandomTrack(std::mt19937& ioRandom, long long inEnd, std::vector<float>& outExpected)
{
	TrackParts parts;
	parts.AddSilence(-1000, 0);
	for (long long start = 0; start < inEnd;)
	{
		long long const length = 1 + (ioRandom() % 3 == 0 ? ioRandom() % 3 : ioRandom() % 400);
		long long const end = std::min(start + length, inEnd);
		bool const isGap = ioRandom() % 4 == 0;
		long long const origin = start - static_cast<long long>(ioRandom() % 1000);
		if (isGap)
		{
			parts.AddSilence(start, end);
		}
		else
		{
			parts.Add(start, end, origin)->mRecordsCalls = false;
		}
		for (long long frame = start; frame < end; ++frame)
		{
			outExpected.push_back(isGap ? 0.0f : PositionSample(0, frame - origin));
		}
		start = end;
	}
	parts.AddSilence(inEnd, inEnd + 100000);
	return parts;
}

TEST(AudioClipTrackRenderer, NotOneSampleIsOutOfPlaceInRandomTracks)
{
	std::mt19937 random(51);
	for (unsigned trial = 0; trial < 1000; ++trial)
	{
		SCOPED_TRACE(trial);
		ScopedContext const context(512);
		std::vector<float> expected;
		unsigned const frames = 1 + static_cast<unsigned>(random()) % 2000;
		TrackParts const parts = MakeRandomTrack(random, frames, expected);
		auto const track = parts.Make(context);
		bool const reverse = trial % 2 == 1;
		Samples whole{expected};
		ASSERT_TRUE(Same(Pull(*track, {.mFrames = frames}, RandomBlocks(trial, 512),
							 reverse ? Direction::kReverse : Direction::kForward),
			reverse ? Reversed(whole) : whole));
		// And anywhere, as the playhead is thrown about.
		for (unsigned jump = 0; jump < 5; ++jump)
		{
			unsigned const first = static_cast<unsigned>(random()) % frames;
			unsigned const count = 1 + static_cast<unsigned>(random()) % (std::min(frames - first, 512u));
			ASSERT_TRUE(Same(PullWhole(*track, {.mStartFrame = first, .mFrames = count}),
				{{expected.begin() + first, expected.begin() + first + count}}));
		}
	}
}

TEST(AudioClipTrackRenderer, CutsARequestAtItemsAndRunsProcessorsOnce)
{
	ScopedContext const context(512);
	TrackParts parts;
	parts.AddSilence(-100, 0);
	auto const first = parts.Add(0, 100, -7);
	auto const second = parts.Add(100, 200, 90);
	parts.AddSilence(200, 5000);
	auto const gain = MakeObject<FakeProcessor>(2.0f);
	parts.mProcessors = {gain};
	auto const track = parts.Make(context);
	dsp::AudioBuffer buffer(1, 80);
	track->GetAudioData(At(60), buffer, false);
	EXPECT_THAT(first->mCalls, ElementsAre(Call{"GetAudioData", At(67), 40, false}));
	EXPECT_THAT(second->mCalls, ElementsAre(Call{"GetAudioData", At(10), 40, false}));
	EXPECT_THAT(gain->mCalls, ElementsAre(Call{"ProcessAudioData", At(60), 80, false}));
	EXPECT_EQ(buffer.GetChannel(0)[39], 2.0f * PositionSample(0, 106));
	EXPECT_EQ(buffer.GetChannel(0)[40], 2.0f * PositionSample(0, 10));

	// A request that ends with an item leaves the next one alone.
	first->mCalls.clear();
	second->mCalls.clear();
	track->GetAudioData(At(20), buffer, false);
	EXPECT_EQ(first->mCalls.size(), 1u);
	EXPECT_TRUE(second->mCalls.empty());

	// In reverse, times fall from the top of the request.
	gain->mCalls.clear();
	track->GetAudioData(At(60), buffer, true);
	ASSERT_EQ(gain->mCalls.size(), 5u);
	EXPECT_EQ(gain->mCalls.front(), (Call{"ProcessAudioData", At(140), 16, false}));
	EXPECT_EQ(gain->mCalls.back(), (Call{"ProcessAudioData", At(76), 16, false}));
	EXPECT_EQ(buffer.GetChannel(0)[0], 2.0f * PositionSample(0, 49));

	// Off the list, nothing of a request is heard, nor of what follows.
	track->GetAudioData(At(4990), buffer, false);
	EXPECT_TRUE(buffer.IsSilent());
	track->GetAudioData(At(20), buffer, false);
	EXPECT_TRUE(buffer.IsSilent());
	for (int again = 0; again < 2; ++again)
	{
		track->Preroll(At(0), false);
		track->GetAudioData(At(20), buffer, false);
		EXPECT_FALSE(buffer.IsSilent()) << "until the next preroll";
		track->GetAudioData(At(4990), buffer, false);
	}
	track->Reset();
	track->GetAudioData(At(-150), buffer, false);
	EXPECT_TRUE(buffer.IsSilent()) << "before the list";
}

TEST(AudioClipTrackRenderer, BlocksBeyondTheContextsLargestAreCutShort)
{
	for (bool const reverse : {false, true})
	{
		ScopedContext const context(64);
		TrackParts parts(1000);
		auto const track = parts.Make(context);
		dsp::AudioBuffer buffer(1, 100);
		track->GetAudioData(At(200), buffer, reverse);
		EXPECT_EQ(buffer.GetChannel(0)[0], PositionSample(0, reverse ? 299 : 200));
		EXPECT_EQ(buffer.GetChannel(0)[63], PositionSample(0, reverse ? 236 : 263));
		EXPECT_EQ(buffer.GetChannel(0)[64], 0.0f);
	}
}

TEST(AudioClipTrackRenderer, ControlsChangeOnTheGridOfTheControlInterval)
{
	// The context's interval is 16; the pan goes from left to right at frame 40. The grid goes on over
	// requests, so the gains change with the block that begins at 48.
	Prefetcher prefetcher;
	ScopedContext const context(512, &prefetcher);
	TrackParts parts(1000);
	auto const pan =
		MakeObject<FakeParameter>([](TickTime const& inTime) { return inTime < At(40) ? 0.0f : 1.0f; });
	pan->mNext = At(40);
	parts.mPanner = MakePanner(context, kPanMonoToStereo, {pan});
	auto const track = parts.Make(context);
	track->Preroll(At(0), false);
	Samples const out = Pull(*track, {.mFrames = 200, .mChannels = 2}, RandomBlocks(3, 60));
	EXPECT_EQ(out[0][47], PositionSample(0, 47));
	EXPECT_EQ(out[1][47], 0.0f);
	EXPECT_EQ(out[1][48], 0.0f) << "the ramp begins here";
	EXPECT_GT(out[1][49], 0.0f);
	EXPECT_EQ(InterfaceRef<IAudioGeneratorPrivate>(track)->GetNumOutputChannels(), 2u);
}

TEST(AudioClipTrackRenderer, APanWidensTheTrackAndItsCache)
{
	ScopedContext const context(256);
	TrackParts parts(1000);
	parts.mOwner = MakeObject<FakeParameter>(0.0f);
	parts.mPanner = MakePanner(context, kPanMonoToStereo, ConstantParameters({1.0f}));
	auto const track = parts.Make(context);
	InterfaceRef<ICachedAudioGenerator> const cached(track);
	EXPECT_EQ(context->FindCachedGenerator(parts.mOwner), cached);
	track->Preroll(At(0), false);
	EXPECT_EQ(TakeCached(track, 2, 100)[0][9], 0.0f) << "nothing is generated";
	cached->GenerateAudio(100, At(5), false);
	cached->GenerateAudio(100, At(5), false);
	EXPECT_EQ(parts.mFakes[0]->mCalls.size(), 2u) << "a preroll and one pull";
	for (int again = 0; again < 2; ++again)
	{
		EXPECT_EQ(TakeCached(track, 2, 100)[1][9], PositionSample(0, 14));
	}
	cached->GenerateAudio(100, At(5), true);
	cached->GenerateAudio(99, At(5), true);
	track->Reset();
	EXPECT_EQ(parts.mFakes[0]->mCalls.size(), 5u);
	EXPECT_EQ(TakeCached(track, 2, 100)[1][9], 0.0f) << "a reset empties the cache";
}

TEST(AudioClipTrackRenderer, AMuteFadesAndThenAsksNobody)
{
	Prefetcher prefetcher;
	ScopedContext const context(1000, &prefetcher);
	TrackParts parts(100000, [](unsigned long long, long long) { return 1.0f; });
	auto const item = parts.mFakes[0];
	auto const meter = MakeObject<FakeProcessor>(1.0f);
	parts.mProcessors = {meter};
	auto const track = parts.Make(context);
	track->Preroll(At(0), false);
	auto const pull = [&](long long inFrame)
	{ return PullWhole(*track, {.mStartFrame = inFrame, .mFrames = 1000})[0]; };
	EXPECT_EQ(pull(0), std::vector<float>(1000, 1.0f));
	parts.mMute->Set(1);
	auto const fading = pull(1000);
	EXPECT_NEAR(static_cast<double>(fading[240]), 0.5, 1e-6) << "10 ms";
	EXPECT_EQ(fading[480], 0.0f);
	item->mCalls.clear();
	meter->mCalls.clear();
	EXPECT_EQ(pull(2000), std::vector<float>(1000, 0.0f));
	EXPECT_TRUE(item->mCalls.empty());
	EXPECT_EQ(meter->mCalls.size(), 1u) << "processors go on";
	item->mIsMuteAware = true;
	EXPECT_EQ(pull(2000), std::vector<float>(1000, 0.0f));
	EXPECT_EQ(item->mCalls.size(), 1u) << "unless it has to keep running";
	item->mIsMuteAware = false;
	auto const clone = track->Clone();
	parts.mMute->Set(0);
	EXPECT_NEAR(static_cast<double>(pull(3000)[240]), 0.5, 1e-6);
	auto const clones = PullWhole(*clone, {.mStartFrame = 0, .mFrames = 1000})[0];
	EXPECT_EQ(clones[300], 0.0f) << "a clone keeps the mute as it was";

	track->Reset();
	parts.mMute->Set(1);
	track->Preroll(At(0), false);
	EXPECT_EQ(pull(0)[0], 0.0f) << "a preroll never fades";
}

TEST(AudioClipTrackRenderer, APrerollCountsOnceAndGivesItemsTheirOwnTime)
{
	struct Case
	{
		char const* mName;
		bool mCaches;
		long long mSecond;
		bool mCounts;
	};
	constexpr Case kCases[] = {
		{"again", false, 150, false},
		{"again and cached", true, 150, false},
		{"earlier", false, 50, false},
		{"earlier and cached", true, 50, true},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		context->SetTrackCacheEnabled(test.mCaches);
		TrackParts parts;
		auto const first = parts.Add(0, 100, -10);
		auto const second = parts.Add(100, 200, 100);
		auto const third = parts.Add(200, 300, 190);
		auto const track = parts.Make(context);
		track->Preroll(At(150), false);
		EXPECT_THAT(first->mCalls, ElementsAre(Call{"Preroll", At(160), 0, false}));
		EXPECT_THAT(second->mCalls, ElementsAre(Call{"Preroll", At(50), 0, false}));
		EXPECT_THAT(third->mCalls, ElementsAre(Call{"Preroll", At(0), 0, false}));
		track->Preroll(At(test.mSecond), false);
		EXPECT_EQ(first->mCalls.size(), test.mCounts ? 2u : 1u);
	}
}

// Items of 100 frames each, some with a delay, prerolled: who is filled at once, and what delay is left for the
// track itself.
struct LatencyCase
{
	char const* mName;
	// In frames, for the items at 0, 100, 200 and 300.
	std::vector<long long> mDelays;
	long long mStart;
	bool mReverse;
	unsigned mNesting;
	// The items that the preroll fills at once, in their order, and the delay that is left.
	std::string mFilledNow;
	long long mTrackDelay;
};
LatencyCase const kLatencyCases[] = {
	{"none", {0, 0, 0, 0}, 50, false, 0, "", 0},
	{"far ahead, on the way", {0, 0, 0, 20}, 50, false, 0, "", 0},
	{"just ahead, too late", {0, 60, 0, 0}, 50, false, 0, "1", 0},
	{"exactly now", {0, 50, 0, 0}, 50, false, 0, "1", 0},
	{"reaching before a latent one", {0, 0, 10, 120}, 50, false, 0, "3", 0},
	{"reaching only into a latent one", {0, 0, 10, 90}, 50, false, 0, "", 0},
	{"beginning as a latent one does", {0, 0, 10, 100}, 50, false, 0, "", 0},
	{"the current one at the top", {30, 0, 0, 0}, 50, false, 0, "0", 0},
	{"the current one nested, begun", {30, 0, 0, 0}, 20, false, 1, "0", 0},
	{"the current one nested, past its delay", {30, 0, 0, 0}, 50, false, 1, "", 30},
	{"the current one nested, at its start", {30, 0, 0, 0}, 0, false, 1, "", 30},
	{"after the end", {10, 10, 10, 10}, 400, false, 0, "", 0},
	{"in reverse, on the way", {20, 0, 0, 0}, 350, true, 0, "", 0},
	{"in reverse, too late", {0, 0, 60, 0}, 350, true, 0, "2", 0},
	{"in reverse, exactly now", {0, 0, 50, 0}, 350, true, 0, "2", 0},
	{"in reverse, reaching past a latent one", {120, 10, 0, 0}, 350, true, 0, "0", 0},
	{"in reverse, beginning as a latent one does", {100, 10, 0, 0}, 350, true, 0, "", 0},
	{"in reverse, nested, at its end", {0, 0, 30, 0}, 300, true, 1, "", 30},
	{"in reverse, the current one at the top", {0, 0, 0, 30}, 350, true, 0, "3", 0},
	{"in reverse, nested, begun", {0, 0, 0, 30}, 380, true, 1, "3", 0},
	{"in reverse, nested, past its delay", {0, 0, 0, 30}, 350, true, 1, "", 30},
};
TEST(AudioClipTrackRenderer, ItemsWithALatencyGetTheirHeadStart)
{
	for (LatencyCase const& test : kLatencyCases)
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher;
		ScopedContext const context(256, &prefetcher);
		context.Nest(test.mNesting);
		TrackParts parts;
		for (unsigned i = 0; i < 4; ++i)
		{
			parts.Add(100 * i, 100 * i + 100, 100 * i)->mDelay = At(test.mDelays[i]);
		}
		auto const track = parts.Make(context);
		track->Preroll(At(test.mStart), test.mReverse);
		std::string filled;
		for (unsigned i = 0; i < 4; ++i)
		{
			Call const& last = parts.mFakes[i]->mCalls.back();
			if (last.mName == "Fill, forced")
			{
				filled += std::to_string(i);
				EXPECT_EQ(last.mTime, test.mReverse ? At(100 * i + 100) : At(0));
			}
		}
		EXPECT_EQ(filled, test.mFilledNow);
		EXPECT_EQ(track->GetDelay(), At(test.mTrackDelay));
		context->SetDelayCompensationDisabled(true);
		EXPECT_EQ(track->GetDelay(), kTimeZero);
	}
}

TEST(AudioClipTrackRenderer, AnItemThatBeginsBeforeTheSequenceAddsNoDelay)
{
	Prefetcher prefetcher;
	ScopedContext const context(256, &prefetcher);
	context.Nest();
	TrackParts parts;
	parts.Add(0, 100, -50)->mDelay = At(30);
	auto const track = parts.Make(context);
	track->Preroll(At(0), false);
	EXPECT_EQ(track->GetDelay(), kTimeZero);
}

TEST(AudioClipTrackRenderer, FillingKeepsPaceWithPlaying)
{
	Prefetcher prefetcher;
	ScopedContext const context(256, &prefetcher);
	TrackParts parts;
	parts.Add(0, 100, 0);
	parts.Add(100, 200, 100);
	auto const latent = parts.Add(200, 300, 200);
	latent->mDelay = At(30);
	parts.Add(300, 1000, 300);
	auto const track = parts.Make(context);
	track->Preroll(At(0), false);
	latent->mCalls.clear();
	// Filling begins 30 frames ahead of 200.
	for (long long frame = 0; frame < 240; frame += 40)
	{
		PullWhole(*track, {.mStartFrame = frame, .mFrames = 40});
	}
	EXPECT_THAT(latent->mCalls, ElementsAre(Call{"Fill", At(0), 30, false}, Call{"Fill", At(0), 40, false},
									Call{"GetAudioData", At(0), 40, false}));

	// Forced, it is filled from where its delay reaches the playhead.
	track->Reset();
	track->Preroll(At(0), false);
	latent->mCalls.clear();
	track->FillInitialDelay(At(169), kTimeZero, false, true);
	EXPECT_TRUE(latent->mCalls.empty());
	track->FillInitialDelay(At(170), kTimeZero, false, true);
	EXPECT_THAT(latent->mCalls, ElementsAre(Call{"Fill, forced", At(0), 0, false}));

	track->Reset();
	track->Preroll(At(0), false);
	latent->mCalls.clear();
	RequestPrefetch(*track, {At(100), At(190)});
	EXPECT_THAT(latent->mCalls, ElementsAre(Call{"Prefetch", At(-30), 20, false}))
		<< "what filling reads on the way";
}

TEST(AudioClipTrackRenderer, APrefetchIsCutAtItems)
{
	struct Case
	{
		char const* mName;
		long long mStart;
		long long mEnd;
		// For each of the items at 0, 100 and 200 whose own time begins 10 frames earlier: start and length.
		std::vector<std::pair<long long, long long>> mParts;
	};
	std::pair<long long, long long> const none{-1, -1};
	Case const cases[] = {
		{"an item whole", 100, 200, {none, {10, 100}, none}},
		{"inside", 120, 130, {none, {30, 10}, none}},
		{"two", 150, 250, {none, {60, 50}, {10, 50}}},
		{"all", 0, 300, {{10, 100}, {10, 100}, {10, 100}}},
		{"the end of one", 50, 100, {{60, 50}, none, none}},
		{"beyond the end", 250, 400, {none, none, {60, 50}}},
		{"after the end", 300, 400, {none, none, none}},
	};
	for (Case const& test : cases)
	{
		for (long long const playhead : {0, 150, 250})
		{
			SCOPED_TRACE(std::string(test.mName) + ", playhead " + std::to_string(playhead));
			ScopedContext const context;
			TrackParts parts;
			for (long long start = 0; start < 300; start += 100)
			{
				parts.Add(start, start + 100, start - 10);
			}
			auto const track = parts.Make(context);
			PullWhole(*track, {.mStartFrame = playhead, .mFrames = 1});
			RequestPrefetch(*track, {At(test.mStart), At(test.mEnd)});
			for (unsigned i = 0; i < 3; ++i)
			{
				std::pair<long long, long long> part = none;
				for (Call const& call : parts.mFakes[i]->mCalls)
				{
					if (call.mName == "Prefetch")
					{
						part = {call.mTime.ToFrame64(k48000Hz), call.mAmount};
					}
				}
				EXPECT_EQ(part, test.mParts[i]) << i;
			}
		}
	}
}

TEST(AudioClipTrackRenderer, IsSharedByItsOwnerUnlessItHasHistory)
{
	ScopedContext const context;
	context->SetTrackCacheEnabled(true);
	TrackParts parts;
	parts.mOwner = MakeObject<FakeParameter>(0.0f);
	parts.Add(0, 100, 0);
	auto const track = parts.Make(context);
	EXPECT_EQ(parts.Make(context), track);
	parts.mFakes[0]->mHasHistory = true;
	auto const another = parts.Make(context);
	EXPECT_NE(another, track);
	EXPECT_EQ(context->FindTrackRenderer(parts.mOwner), another);

	auto const clone = track->Clone();
	EXPECT_NE(clone, track);
	EXPECT_EQ(track->Clone(), clone) << "two branches share one clone";
	EXPECT_TRUE(Same(PullWhole(*clone, {.mFrames = 50}), PullWhole(*track, {.mFrames = 50})));
}

TEST(AudioClipTrackRenderer, WhatIsEmptyOrNeverHeardIsSilent)
{
	ScopedContext const context;
	auto const makeFader = [&](bool inIsMuted, TickTime const& inNext)
	{
		auto const mute = MakeObject<FakeParameter>(inIsMuted ? 1.0f : 0.0f);
		mute->mNext = inNext;
		return MakeFader(context, {MakeObject<FakeParameter>(1.0f), mute});
	};
	auto const send = MakeSend(context, MakeObject<FakeParameter>(0.0f), ConstantParameters({1.0f, 0.0f}),
		MakePanner(context, kPanNoneMono));
	struct Case
	{
		char const* mName;
		Processors mProcessors;
		bool mIsDropped;
	};
	Case const cases[] = {
		{"open", {makeFader(false, kTimeMax)}, false},
		{"closed", {makeFader(true, kTimeMax)}, true},
		{"closed until later", {makeFader(true, At(50))}, false},
		{"the second is closed", {makeFader(false, kTimeMax), makeFader(true, kTimeMax)}, true},
		{"closed with a send", {send, makeFader(true, kTimeMax)}, false},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		TrackParts parts(100);
		parts.mProcessors = test.mProcessors;
		auto const track = parts.Make(context);
		EXPECT_EQ(InterfaceRef<IAudioRenderGraphNodeInfo>(track)->GetNodeName(),
			test.mIsDropped ? u"SilentRenderer" : u"AudioClipTrackRenderer");
	}

	TrackParts frame;
	frame.AddSilence(-100, 0);
	frame.AddSilence(0, 100);
	dsp::AudioBuffer buffer(1, 50);
	frame.Make(context)->GetAudioData(At(10), buffer, false);
	EXPECT_TRUE(buffer.IsSilent());
	TrackParts nothing;
	nothing.Make(context)->GetAudioData(At(10), buffer, false);
	EXPECT_TRUE(buffer.IsSilent());
	TrackParts broken;
	broken.mItems = {{}, {}, {}};
	EXPECT_THROW(broken.Make(context), zorvcore::config::NullPtrException);
}

} // namespace SN::AudioClipTrackRendererTest
