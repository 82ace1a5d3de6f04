#include "Support/Engine.h"
#include "Support/NaiveClip.h"

namespace SN::AudioClipRendererTest
{

AudioChannelMap Identity(unsigned inChannels)
{
	AudioChannelMap map;
	for (unsigned channel = 0; channel < inChannels; ++channel)
	{
		map[channel] = channel;
	}
	return map;
}

TEST(AudioClipRenderer, AnyRoutingEqualsTheNaiveClip)
{
	std::mt19937 random(7);
	for (int trial = 0; trial < 200; ++trial)
	{
		SCOPED_TRACE("trial " + std::to_string(trial));
		ScopedContext const context(128);
		unsigned const clipChannels = 1 + static_cast<unsigned>(random() % 8);
		unsigned const count = 1 + static_cast<unsigned>(random() % 3);
		NaiveClip naive;
		naive.mStartOffset = static_cast<long long>(random() % 400) - 200;
		naive.mGain = random() % 2 == 0 ? 1.0 : 0.25;
		std::map<Generator, AudioChannelMap> generators;
		// Each output channel has one feeder at most, and those that the clip does not silence by itself,
		// the first ones, always have one.
		for (unsigned index = 0; index < count; ++index)
		{
			NaiveStream stream;
			stream.mSourceChannels = 1 + static_cast<unsigned>(random() % 8);
			stream.mLength = 300;
			AudioChannelMap map;
			for (unsigned out = index; out < clipChannels; out += count)
			{
				if (out < count || random() % 3 != 0)
				{
					// Also channels that the generator does not have.
					map[out] = random() % (stream.mSourceChannels + 1);
				}
			}
			generators[MakeStream(context, MakeObject<FakeSource>(stream.mSourceChannels, stream.mLength))] =
				map;
			naive.mStreams.emplace_back(stream, map);
		}
		ClipSettings const settings{
			clipChannels, At(naive.mStartOffset), static_cast<float>(naive.mGain), 1.0};
		auto const make = [&] { return MakeClip(context, generators, settings); };
		PullRange const range{static_cast<long long>(random() % 600) - 300,
			1 + static_cast<unsigned>(random() % 400), 1 + static_cast<unsigned>(random() % 8)};

		auto const expected = naive.Render(range.mStartFrame, range.mFrames, range.mChannels);
		Samples const pulled = Pull(*make(), range, BlocksOf(128));
		for (unsigned channel = 0; channel < range.mChannels; ++channel)
		{
			// Lower channels than the number of generators, without a feeder, stay as they came.
			if (channel >= clipChannels && channel < count)
			{
				continue;
			}
			EXPECT_TRUE(Same({pulled[channel]}, {expected[channel]}));
		}
		ExpectAnySplitEqualsWhole(make, range, 128);
		EXPECT_TRUE(Same(Pull(*make()->Clone(), range, BlocksOf(128)), pulled)) << "a clone";
		ASSERT_FALSE(HasFailure());
	}
}

TEST(AudioClipRenderer, LowerChannelsWithoutAFeederStayAsTheCallerLeftThem)
{
	ScopedContext const context;
	auto const clip = MakeClip(context,
		{{MakeObject<FakeGenerator>(1), {{1, 0}}}, {MakeObject<FakeGenerator>(1), {{3, 0}}}},
		{4, {}, 1.0f, 1.0});
	dsp::AudioBuffer buffer = MakeBuffer(6, 1, 5.0f);
	clip->GetAudioData(At(0), buffer, false);
	float const sound = PositionSample(0, 0);
	EXPECT_EQ(HeardChannels(buffer), (Samples{{5.0f}, {sound}, {0.0f}, {sound}, {0.0f}, {0.0f}}));
}

TEST(AudioClipRenderer, ANarrowSingleGeneratorSeesABufferOfItsOwnWidth)
{
	ScopedContext const context;
	struct Case
	{
		char const* mName;
		unsigned mGeneratorChannels;
		unsigned mClipChannels;
		unsigned long long mSeen;
	};
	Case const cases[] = {{"narrower", 2, 6, 2}, {"as wide", 6, 6, 6}, {"wider", 8, 6, 8}};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const generator = MakeObject<FakeGenerator>(test.mGeneratorChannels);
		auto const clip = MakeClip(context, {{generator, Identity(6)}}, {test.mClipChannels, {}, 1.0f, 1.0});
		Samples const pulled = PullWhole(*clip, {100, 8, 6});
		EXPECT_EQ(generator->mSeenChannels, test.mSeen);
		EXPECT_EQ(pulled[1][7], PositionSample(1, 107));
		EXPECT_EQ(pulled[5][7], test.mGeneratorChannels > 5 ? PositionSample(5, 107) : 0.0f);
	}
}

TEST(AudioClipRenderer, SpeedAndRateActOnTheOffsetAlone)
{
	struct Case
	{
		char const* mName;
		long long mOffset;
		double mSpeed;
		FrameRate mSourceRate;
		TickTime mExpected;
	};
	Case const cases[] = {
		{"plain", 480, 1.0, k48000Hz, At(480)},
		{"a tenth of the speed", 1, 0.1, k48000Hz, At(1) * 0.1},
		{"backwards", 480, -2.0, k48000Hz, At(-960)},
		{"the source's rate at speed 1", 480, 1.0, k44100Hz, At(441)},
		{"speed goes before the rate", 480, 0.5, k44100Hz, At(240)},
		{"an invalid source rate counts as 0", 480, 1.0, FrameRate(), At(0)},
	};
	ScopedContext const context;
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto const generator = MakeObject<FakeGenerator>(1, PositionSample, test.mSourceRate);
		auto const clip =
			MakeClip(context, {{generator, Identity(1)}}, {1, At(test.mOffset), 2.0f, test.mSpeed});
		dsp::AudioBuffer buffer(1, 4);
		clip->GetAudioData(At(1000), buffer, true);
		Call const expected{"GetAudioData", At(1000) + test.mExpected, 4, true};
		EXPECT_EQ(generator->mCalls, std::vector<Call>{expected});
	}
}

TEST(AudioClipRenderer, HandsItsCallsOnToEachGenerator)
{
	ScopedContext const context;
	auto const a = MakeObject<FakeGenerator>(1);
	auto const b = MakeObject<FakeGenerator>(1);
	a->mDelay = TickTime::FromTicks(3);
	b->mDelay = TickTime::FromTicks(7);
	auto const clip =
		MakeClip(context, {{a, {{0, 0}}}, {b, {{1, 0}}}, {{}, {{0, 0}}}}, {2, At(10), 1.0f, 1.0});

	EXPECT_EQ(clip->GetDelay(), TickTime::FromTicks(7));
	context->SetDelayCompensationDisabled(true);
	EXPECT_EQ(clip->GetDelay(), kTimeZero);
	EXPECT_FALSE(clip->HasHistory());
	b->mHasHistory = true;
	EXPECT_TRUE(clip->HasHistory());
	EXPECT_EQ(InterfaceRef<IAudioRenderGraphNodeInfo>(clip)->GetInputNodes().size(), 3u);

	clip->InitializeAudioFilters();
	RequestPrefetch(*clip, {At(5), At(25)}, AsynchronousPrefetch);
	clip->Preroll(At(100), true);
	clip->FillInitialDelay(At(100), At(4), true, false);
	clip->FillInitialDelay(At(100), At(4), true, true);
	clip->Reset();
	clip->ShutdownAudioFilters();
	std::vector<Call> const expected = {
		{"InitializeAudioFilters", {}, 0, false},
		{"Prefetch 1", At(15), At(20).GetTicks(), false},
		{"Preroll", At(110), 0, true},
		// Without the offset, and not at all unless forced.
		{"FillInitialDelay, forced", At(100), At(4).GetTicks(), true},
		{"Reset", {}, 0, false},
		{"ShutdownAudioFilters", {}, 0, false},
	};
	EXPECT_EQ(a->mCalls, expected);
	EXPECT_EQ(b->mCalls, expected);
}

// Gives no more than three samples of a request.
class CutGenerator final : public SimpleGenerator
{
public:
	using SimpleGenerator::SimpleGenerator;

	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool) override
	{
		FillFrom(PositionSample, GetNumChannels(), inTime, k48000Hz, inBuffer);
		inBuffer.SetUseSize(std::min(inBuffer.GetUseSize(), 3u));
	}
};

TEST(AudioClipRenderer, WhatAGeneratorLeavesOfARequestIsSilent)
{
	struct Case
	{
		char const* mName;
		unsigned mGeneratorChannels;
		unsigned mClipChannels;
	};
	for (Case const& test : {Case{"into the caller's buffer", 1, 1}, Case{"through a shell", 1, 2},
			 Case{"through the scratch", 2, 1}})
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context(8);
		ClipSettings const settings{test.mClipChannels, {}, 1.0f, 1.0};
		auto const full =
			MakeClip(context, {{MakeObject<FakeGenerator>(test.mGeneratorChannels), {{0, 0}}}}, settings);
		auto const cut =
			MakeClip(context, {{MakeObject<CutGenerator>(test.mGeneratorChannels), {{0, 0}}}}, settings);
		dsp::AudioBuffer buffer(test.mClipChannels, 8);
		// Leaves its samples in the scratch that both clips share.
		full->GetAudioData(At(100), buffer, false);
		cut->GetAudioData(At(0), buffer, false);
		ASSERT_EQ(buffer.GetUseSize(), 8u);
		for (unsigned frame = 0; frame < 8; ++frame)
		{
			EXPECT_EQ(buffer.GetChannel(0)[frame], frame < 3 ? PositionSample(0, frame) : 0.0f) << frame;
		}
	}
}

TEST(AudioClipRenderer, CreationReportsTheContextAndTheRate)
{
	auto const factory = SonaroFactory::CreateClassRef();
	ScopedContext const context;
	InterfaceRef<IAudioGenerator> const before = MakeObject<FakeGenerator>(1);
	InterfaceRef<IAudioGenerator> clip = before;
	EXPECT_EQ(factory->CreateAudioClipRenderer({}, k48000Hz, {}, {}, {}, 1.0f, 1.0, &clip), eNullPointer);
	EXPECT_EQ(factory->CreateAudioClipRenderer(context, FrameRate(), {}, {}, {}, 1.0f, 1.0, &clip),
		eInvalidArgument);
	EXPECT_EQ(clip, before);
}

TEST(AudioClipRenderer, WithoutGeneratorsEveryChannelIsSilent)
{
	ScopedContext const context;
	auto const clip = MakeClip(context, {}, {2, {}, 0.5f, 1.0});
	EXPECT_EQ(clip->GetDelay(), kTimeZero);
	EXPECT_FALSE(clip->HasHistory());
	dsp::AudioBuffer buffer(2, 4);
	clip->GetAudioData(At(0), buffer, false);
	EXPECT_TRUE(buffer.IsSilent());
}

} // namespace SN::AudioClipRendererTest
