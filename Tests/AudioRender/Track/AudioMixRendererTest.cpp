#include "AudioRender/Track/AudioMixRenderer.h"

#include "AudioRender/Track/AudioMixRendererCreateFailure.h"
#include "Support/Engine.h"

namespace SN::AudioMixRendererTest
{

// Never gives more than so many samples, added to what is there, and notes how many were wanted.
class ShortGenerator final : public SimpleGenerator
{
public:
	ShortGenerator()
		: SimpleGenerator(2)
	{
	}

	void GetAudioData(TickTime const& inTime, dsp::AudioBuffer& inBuffer, bool) override
	{
		mWanted.push_back(inBuffer.GetUseSize());
		inBuffer.SetUseSize(std::min(inBuffer.GetUseSize(), mLimit));
		dsp::AudioBuffer sound(2, inBuffer.GetUseSize());
		FillFrom(PositionSample, 2, inTime, k48000Hz, sound);
		inBuffer.Mix(sound);
	}

	std::vector<unsigned> mWanted;
	unsigned mLimit = 64;
};

// Adds the second's right channel to the first's left one, and its left to the right.
InterfaceRef<IAudioProcessor> MakeCross(Context const& inContext)
{
	return MakeMatrix(inContext, {{0, {0}}, {1, {1}}, {2, {1}}, {3, {0}}});
}

TEST(AudioMixRenderer, TheSecondFollowsTheFirstInAnySplit)
{
	ScopedContext const context(64);
	SampleFunction const other = [](unsigned long long inChannel, long long inFrame)
	{ return static_cast<float>(3 * inFrame + static_cast<long long>(inChannel)); };
	auto const mix = MakeJoin(
		context, MakeObject<FakeGenerator>(2), MakeObject<FakeGenerator>(2, other), MakeCross(context));
	// A third channel of the caller's, which holds what was there before, becomes silent.
	Samples expected(3, std::vector<float>(300));
	for (unsigned i = 0; i < 300; ++i)
	{
		expected[0][i] = PositionSample(0, i) + other(1, i);
		expected[1][i] = PositionSample(1, i) + other(0, i);
	}
	for (auto const& one : {mix, mix->Clone()})
	{
		PullRange const range{.mFrames = 300, .mChannels = 3};
		EXPECT_TRUE(Same(Pull(*one, range, RandomBlocks(1, 64)), expected));
		EXPECT_TRUE(Same(Pull(*one, range, RandomBlocks(2, 64), Direction::kReverse), Reversed(expected)));
	}
}

TEST(AudioMixRenderer, EachTimeIsScaledAndTheProcessorsIsNot)
{
	ScopedContext const context;
	auto const first = MakeObject<FakeGenerator>(2);
	auto const second = MakeObject<FakeGenerator>(2);
	first->mDelay = At(3);
	second->mDelay = At(5);
	auto const processor = MakeObject<FakeProcessor>(1.0f);
	auto const mix = MakeJoin(context, first, second, processor, 2.0, -0.5);
	EXPECT_EQ(mix->GetDelay(), At(3));
	mix->Preroll(At(10), true);
	mix->FillInitialDelay(At(10), At(4), true, true);
	RequestPrefetch(*mix, {At(10), At(20)});
	dsp::AudioBuffer buffer(2, 6);
	mix->GetAudioData(At(10), buffer, true);
	MakeJoin(context, first, second, MakeCross(context), 2.0, -0.5)
		->Clone()
		->GetAudioData(At(10), buffer, true);
	EXPECT_EQ(buffer.GetChannel(0)[5], PositionSample(0, 20) + PositionSample(1, -5)) << "cloned with scales";
	auto const calls = [](long long inTime, long long inPrefetched)
	{
		return std::vector<Call>{{"Preroll", At(inTime), 0, true},
			{"FillInitialDelay, forced", At(inTime), At(4).GetTicks(), true},
			{"Prefetch " + std::to_string(SynchronousPrefetch), At(inTime), At(inPrefetched).GetTicks(),
				false},
			{"GetAudioData", At(inTime), 6, true}, {"Clone", {}, 0, false}};
	};
	EXPECT_EQ(first->mCalls, calls(20, 20));
	EXPECT_EQ(second->mCalls, calls(-5, -5));
	EXPECT_THAT(processor->mCalls,
		ElementsAre(Call{"Preroll", At(10), 0, true}, Call{"ProcessAudioData", At(10), 6, false}));
}

TEST(AudioMixRenderer, AShortFirstGeneratorEndsTheRequest)
{
	struct Case
	{
		char const* mName;
		unsigned mFirst;
		unsigned mSecond;
		unsigned mFrames;
		unsigned mWritten;
		// How many samples each pass asks the first for; the largest block has 64.
		std::vector<unsigned> mWanted;
	};
	Case const cases[] = {
		{"whole", 64, 64, 50, 50, {50}},
		{"nothing wanted", 64, 64, 0, 0, {}},
		{"cut into blocks of the same time", 64, 64, 150, 150, {64, 64, 22}},
		{"the first is short", 40, 64, 150, 40, {64}},
		{"the first gives nothing", 0, 64, 150, 0, {64}},
		{"the second is short, and silent from there on", 64, 10, 150, 150, {64, 64, 22}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context(64);
		auto const first = MakeObject<ShortGenerator>();
		auto const second = MakeObject<ShortGenerator>();
		auto const mix = MakeJoin(context, first, second, MakeCross(context));
		dsp::AudioBuffer buffer(2, 200);
		mix->GetAudioData(At(0), buffer, false);
		first->mWanted.clear();
		first->mLimit = test.mFirst;
		second->mLimit = test.mSecond;
		buffer.SetUseSize(test.mFrames);
		mix->GetAudioData(At(7), buffer, false);
		EXPECT_EQ(buffer.GetUseSize(), test.mWritten);
		EXPECT_EQ(first->mWanted, test.mWanted);
		for (unsigned i = 0; i < test.mWritten; ++i)
		{
			long long const frame = 7 + i % 64;
			float const other = i % 64 < test.mSecond ? PositionSample(1, frame) : 0.0f;
			ASSERT_EQ(buffer.GetChannel(0)[i], PositionSample(0, frame) + other) << i;
		}
	}
}

TEST(AudioMixRenderer, CreationThrowsForWhatIsMissing)
{
	ScopedContext const context;
	InterfaceRef<IAudioGenerator> mix;
	try
	{
		SonaroFactory::CreateClassRef()->CreateAudioMixRenderer(
			context, k48000Hz, MakeObject<FakeGenerator>(2), 1.0, {}, 1.0, MakeCross(context), &mix);
		FAIL();
	}
	catch (AudioMixRendererCreateFailure const& failure)
	{
		EXPECT_STREQ(failure.what(), "CreateAudioMixRenderer failed");
		EXPECT_EQ(static_cast<unsigned>(failure.GetResultCode()), 0xF865001Eu);
	}
}

} // namespace SN::AudioMixRendererTest
