#include "AudioRender/Track/RealtimeAudioClipTrackItemRenderer.h"

#include "Sonaro/AudioTrackRenderableItems.h"
#include "Support/Engine.h"

#include <tuple>

namespace SN::RealtimeAudioClipTrackItemRendererTest
{

struct ItemParts : ItemSettings
{
	Generator Make(ScopedContext const& inContext) const { return MakeItem(inContext, mSource, *this); }

	InterfaceRef<FakeGenerator> mSource = MakeObject<FakeGenerator>(1);
};

TEST(RealtimeAudioClipTrackItemRenderer, PlaysItsSourceShiftedAndMapped)
{
	auto const make = [](ScopedContext const& inContext)
	{
		ItemParts parts;
		parts.mShift = 1000;
		parts.mProcessors = {MakeObject<FakeProcessor>(0.5f)};
		parts.mPanner = MakePanner(inContext, kPanStereoToMono);
		parts.mSource = MakeObject<FakeGenerator>(2);
		auto const item = parts.Make(inContext);
		item->Preroll(At(0), false);
		return item;
	};
	ScopedContext const context(256);
	ExpectAnySplitEqualsWhole([&] { return make(context); }, {.mStartFrame = 20, .mFrames = 250}, 256);
	auto const item = make(context);
	for (auto const& one : {item, item->Clone()})
	{
		EXPECT_EQ(PullWhole(*one, {.mStartFrame = 20, .mFrames = 10})[0][3],
			0.25f * (PositionSample(0, 1023) + PositionSample(1, 1023)));
	}

	ItemParts parts;
	auto const unprepared = parts.Make(context);
	EXPECT_EQ(PullWhole(*unprepared, {.mFrames = 4})[0], std::vector<float>(4, 0.0f));
	EXPECT_TRUE(parts.mSource->mCalls.empty()) << "without a preroll the source is not asked";
	context->SetImmediateRender(true);
	EXPECT_EQ(PullWhole(*unprepared, {.mFrames = 4})[0][2], PositionSample(0, 2));
}

// A slow tone, whose resampled form is known: at twice the speed it is an octave up.
float Tone(unsigned long long, long long inFrame)
{
	return 0.5f * static_cast<float>(std::sin(0.01 * static_cast<double>(inFrame)));
}

TEST(RealtimeAudioClipTrackItemRenderer, ASpeedReadsTheSourceInItsTime)
{
	for (double const speed : {0.5, 0.9, 1.5, 2.0, 3.0})
	{
		for (Direction const direction : {Direction::kForward, Direction::kReverse})
		{
			SCOPED_TRACE(std::to_string(speed) + (direction == Direction::kReverse ? ", in reverse" : ""));
			ScopedContext const context(256);
			ItemParts parts;
			parts.mSource = MakeObject<FakeGenerator>(1, &Tone);
			parts.mSpeed = speed;
			auto const item = parts.Make(context);
			item->Preroll(At(0), false);
			Samples out =
				Pull(*item, {.mStartFrame = 1000, .mFrames = 3000}, RandomBlocks(7, 256), direction);
			if (direction == Direction::kReverse)
			{
				out = Reversed(out);
			}
			// The position may be up to 16 samples of the source off, and a jump begins with silence.
			double worst = 0.0;
			for (unsigned i = 100; i < 2900; ++i)
			{
				double nearest = 1.0;
				for (double shift = -24.0; shift <= 24.0; shift += 0.25)
				{
					double const expected = 0.5 * std::sin(0.01 * ((1000.0 + i) * speed + shift));
					nearest = std::min(nearest, std::abs(static_cast<double>(out[0][i]) - expected));
				}
				worst = std::max(worst, nearest);
			}
			EXPECT_LT(worst, 2e-3);
		}
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, ReadsOnUntilThePositionsDriftApart)
{
	struct Case
	{
		char const* mName;
		// Samples of the source.
		long long mJump;
		bool mIsFollowed;
	};
	for (Case const& test : {Case{"none", 0, false}, Case{"up to 16 ahead", 16, false},
			 Case{"more ahead", 17, true}, Case{"up to 16 back", -16, false}, Case{"more back", -17, true}})
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context(256);
		ItemParts parts;
		parts.mSpeed = 2.0;
		auto const item = parts.Make(context);
		item->Preroll(At(0), false);
		PullWhole(*item, {.mStartFrame = 500, .mFrames = 100});
		// Where the source was read to; the next request is that far in the item's time, and then jumps.
		Call const last = parts.mSource->mCalls.back();
		long long const position = last.mTime.ToFrame64(k48000Hz) + last.mAmount;
		EXPECT_EQ(parts.mSource->mCalls[1].mTime, At(1000)) << "after the preroll";
		parts.mSource->mCalls.clear();
		dsp::AudioBuffer buffer(1, 10);
		item->GetAudioData(At(position + test.mJump) / 2.0, buffer, false);
		EXPECT_EQ(
			parts.mSource->mCalls.front().mTime, At(test.mIsFollowed ? position + test.mJump : position));
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, InReverseReadsOnFromTheLowEnd)
{
	ScopedContext const context(256);
	ItemParts parts;
	parts.mSpeed = 2.0;
	auto const item = parts.Make(context);
	item->Preroll(At(0), true);
	dsp::AudioBuffer buffer(1, 100);
	item->GetAudioData(At(1000), buffer, true);
	EXPECT_EQ(parts.mSource->mCalls[1].mTime, At(2000)) << "after the preroll";
	parts.mSource->mCalls.clear();
	// Off by a few samples, which are not followed.
	item->GetAudioData(At(903), buffer, true);
	Call const& first = parts.mSource->mCalls.front();
	EXPECT_EQ(first.mTime.ToFrame64(k48000Hz) + first.mAmount, 2000);
}

TEST(RealtimeAudioClipTrackItemRenderer, ALatencyIsReportedAndFilledAhead)
{
	Prefetcher prefetcher;
	ScopedContext const context(256, &prefetcher);
	ItemParts parts;
	parts.mSource->mDelay = At(60);
	parts.mOffset = At(40);
	auto const item = parts.Make(context);
	EXPECT_EQ(item->GetDelay(), kTimeZero) << "before a preroll";
	item->Preroll(At(1000), false);
	EXPECT_EQ(item->GetDelay(), At(100));
	parts.mSource->mCalls.clear();
	// Rendered from 900 on, 40 ahead of that in the source.
	item->FillInitialDelay(At(0), At(30), false, false);
	item->FillInitialDelay(At(0), At(300), false, false);
	item->FillInitialDelay(At(0), At(300), false, false);
	EXPECT_THAT(parts.mSource->mCalls,
		ElementsAre(Call{"GetAudioData", At(940), 30, false}, Call{"GetAudioData", At(970), 70, false}));
	context->SetDelayCompensationDisabled(true);
	EXPECT_EQ(item->GetDelay(), kTimeZero);
	EXPECT_EQ(PullWhole(*item, {.mStartFrame = 1000, .mFrames = 4})[0][0], PositionSample(0, 1000))
		<< "the offset is left out";
	context->SetDelayCompensationDisabled(false);
	EXPECT_EQ(PullWhole(*item, {.mStartFrame = 1000, .mFrames = 4})[0][0], PositionSample(0, 1040));

	// Forced, in reverse: from the other side, each piece prefetched before.
	item->Reset();
	item->Preroll(At(1000), true);
	parts.mSource->mCalls.clear();
	item->FillInitialDelay(At(0), kTimeZero, true, true);
	EXPECT_THAT(parts.mSource->mCalls, ElementsAre(Call{"FillInitialDelay, forced", At(1100), 0, true},
										   Call{"Prefetch 0", At(1040), At(100).GetTicks(), false},
										   Call{"GetAudioData", At(1140), 100, true}));

	// Nested, and begun long ago: nothing to fill.
	context.Nest();
	auto const nested = parts.Make(context);
	nested->Preroll(At(1000), false);
	parts.mSource->mCalls.clear();
	nested->FillInitialDelay(At(0), At(300), false, false);
	EXPECT_TRUE(parts.mSource->mCalls.empty());
	for (bool const isWithinDelay : {false, true})
	{
		nested->Reset();
		nested->Preroll(At(isWithinDelay ? 99 : 100), false);
		parts.mSource->mCalls.clear();
		nested->FillInitialDelay(At(0), At(300), false, false);
		EXPECT_EQ(parts.mSource->mCalls.size(), isWithinDelay ? 1u : 0u);
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, ACloneLiesAndPlaysWhereTheOriginalDoes)
{
	for (double const speed : {1.0, 0.5, 2.0})
	{
		SCOPED_TRACE(speed);
		Prefetcher prefetcher;
		ScopedContext const context(256, &prefetcher);
		ItemParts parts;
		parts.mSpeed = speed;
		parts.mOffset = At(40);
		parts.mShift = 1000;
		auto const item = parts.Make(context);
		InterfaceRef<IAudioTrackRenderableItem>(item)->Init(At(100), At(900), At(150), k48000Hz);
		auto const clone = item->Clone();
		InterfaceRef<IAudioTrackRenderableItem> const place(clone);
		EXPECT_EQ(place->GetStartTime(), At(100));
		EXPECT_EQ(place->GetEndTime(), At(900));
		EXPECT_EQ(place->GetTrackItemStartTime(), At(150));
		PullRange const range{.mStartFrame = 200, .mFrames = 300};
		item->Preroll(At(200), false);
		clone->Preroll(At(200), false);
		EXPECT_EQ(clone->GetDelay(), item->GetDelay());
		Samples const expected = PullWhole(*item, range);
		EXPECT_GT(std::abs(expected[0][299]), 0.0f);
		EXPECT_TRUE(Same(PullWhole(*clone, range), expected));
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, TheDelayOfTheSourceIsDividedByTheSpeed)
{
	struct Case
	{
		double mSpeed;
		// In frames.
		long long mSourceDelay;
		long long mDelay;
	};
	constexpr Case kCases[] = {{2.0, 60, 30}, {0.5, 60, 120}, {0.5, 48000 * 29, 48000 * 58},
		{0.5, 48000 * 31, 0}, {1e-9, 60, 0}, {0.0, 60, 0}, {0.0, 0, 0}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(Message() << "speed " << test.mSpeed << ", delay " << test.mSourceDelay);
		Prefetcher prefetcher;
		ScopedContext const context(256, &prefetcher);
		ItemParts parts;
		parts.mSource->mDelay = At(test.mSourceDelay);
		parts.mSpeed = test.mSpeed;
		parts.mOffset = At(40);
		auto const item = parts.Make(context);
		item->Preroll(At(1000), false);
		EXPECT_EQ(item->GetDelay(), At(test.mDelay + 40));
		item->FillInitialDelay(At(0), kTimeZero, false, true);
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, RefusesWhatItCannotBeMadeFrom)
{
	ScopedContext const context(256);
	auto const panner = MakePanner(context, kPanNoneMono);
	auto const create = [](Context const& inContext, auto const& inPanner, double inSpeed)
	{
		Generator item;
		int const result = SonaroFactory::CreateClassRef()->CreateRealtimeAudioClipTrackItemRenderer(
			inContext, k48000Hz, MakeObject<FakeGenerator>(1), {}, inPanner, inSpeed,
			MakeObject<ShiftTransform>(0), kTimeZero, &item);
		EXPECT_FALSE(item);
		return result;
	};
	EXPECT_EQ(create(context, InterfaceRef<IAudioPanProcessor>(), 1.0), eNullPointer);
	EXPECT_EQ(create({}, panner, 1.0), eNullPointer);
	EXPECT_EQ(create(context, panner, std::nan("")), eInvalidArgument);
}

// Blocks so short that the resampler wants no input for them.
TEST(RealtimeAudioClipTrackItemRenderer, WhatTheResamplerHoldsIsHeardInBlocksWithoutInput)
{
	for (PanProcessorType const panner : {kPanNoneMono, kPanMonoToStereo})
	{
		SCOPED_TRACE(panner);
		ScopedContext const context(256);
		ItemParts parts;
		parts.mSource = MakeObject<FakeGenerator>(1, [](unsigned long long, long long) { return 1.0f; });
		parts.mPanner = MakePanner(
			context, panner, ConstantParameters(std::vector<float>(panner == kPanNoneMono ? 0 : 1)));
		parts.mSpeed = 0.1;
		auto const item = parts.Make(context);
		item->Preroll(At(0), false);
		Samples const out = Pull(*item, {.mFrames = 300, .mChannels = 1}, BlocksOf(1));
		for (unsigned i = 100; i < 300; ++i)
		{
			ASSERT_NEAR(out[0][i], 1.0f, 1e-3f) << i;
		}
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, WithoutPlaybackAnOffsetIsWarmedUp)
{
	ScopedContext const context(64);
	ItemParts parts;
	parts.mOffset = At(100);
	auto const item = parts.Make(context);
	item->Preroll(At(1000), false);
	std::vector<Call> pulls;
	for (Call const& call : parts.mSource->mCalls)
	{
		if (call.mName == "GetAudioData")
		{
			pulls.push_back(call);
		}
	}
	EXPECT_THAT(pulls,
		ElementsAre(Call{"GetAudioData", At(1000), 64, false}, Call{"GetAudioData", At(1064), 36, false}));
	EXPECT_EQ(item->GetDelay(), kTimeZero);
}

TEST(RealtimeAudioClipTrackItemRenderer, WhatRunsAheadWrapsAtTheEndsOfALoop)
{
	struct Case
	{
		char const* mName;
		bool mReverse;
		long long mOffset;
		long long mTime;
		long long mExpected;
	};
	for (Case const& test : {Case{"inside", false, 50, 100, 150}, Case{"across the end", false, 50, 960, 10},
			 Case{"at the end", false, 50, 950, 0}, Case{"in reverse inside", true, -50, 500, 450},
			 Case{"in reverse across the start", true, -50, 30, 980},
			 Case{"without an offset", false, 0, 990, 990}})
	{
		SCOPED_TRACE(test.mName);
		Prefetcher prefetcher{At(0), At(1000), 1, test.mReverse ? 1u : 0u};
		ScopedContext const context(64, &prefetcher);
		ItemParts parts;
		parts.mOffset = At(test.mOffset);
		auto const item = parts.Make(context);
		item->Preroll(At(0), false);
		parts.mSource->mCalls.clear();
		dsp::AudioBuffer buffer(1, 4);
		item->GetAudioData(At(test.mTime), buffer, false);
		ASSERT_FALSE(parts.mSource->mCalls.empty());
		EXPECT_EQ(parts.mSource->mCalls.back().mTime, At(test.mExpected));
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, APrefetchCoversWhatTheResamplerReads)
{
	for (auto const& [speed, start, length] :
		{std::tuple(1.0, 110ll, 100ll), std::tuple(0.5, 55ll, 50ll), std::tuple(2.0, 220ll, 400ll)})
	{
		SCOPED_TRACE(speed);
		ScopedContext const context(64);
		ItemParts parts;
		parts.mOffset = At(10);
		parts.mSpeed = speed;
		auto const item = parts.Make(context);
		RequestPrefetch(*item, {At(100), At(200)}, AsynchronousPrefetch);
		EXPECT_EQ(
			parts.mSource->mCalls.back(), (Call{"Prefetch 1", At(start), At(length).GetTicks(), false}));
	}
}

TEST(RealtimeAudioClipTrackItemRenderer, LatentEffectsAreLeftOutWithoutCompensation)
{
	ScopedContext const context(64);
	ItemParts parts;
	auto const latent = MakeObject<FakeProcessor>(0.5f);
	latent->mDelay = At(5);
	parts.mProcessors = {latent, MakeObject<FakeProcessor>(0.25f)};
	auto const item = parts.Make(context);
	item->Preroll(At(0), false);
	EXPECT_EQ(PullWhole(*item, {.mFrames = 4})[0][1], 0.125f * PositionSample(0, 1));
	context->SetDelayCompensationDisabled(true);
	EXPECT_EQ(PullWhole(*item, {.mFrames = 4})[0][1], 0.25f * PositionSample(0, 1));
}

} // namespace SN::RealtimeAudioClipTrackItemRendererTest
