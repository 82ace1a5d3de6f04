#include "PannerReference.h"

#include "Support/Engine.h"

namespace SN::StereoPannerTest
{

// Two units in the last place of full scale.
constexpr double kTwoUnits = 2.4e-7;

float One(unsigned long long, long long)
{
	return 1.0f;
}

// What is heard from frame 1000 on, or so much later, when the pan is moved from left to right there. The
// prefetcher makes it a playback, which hears the edit.
Samples MoveToTheRight(Prefetcher* ioPrefetcher, long long inJump, bool inIsSilentThere)
{
	ScopedContext const context(4096, ioPrefetcher);
	auto const pan = MakeObject<FakeParameter>(0.0f);
	auto const panner = MakePanner(context, kPanStereoToStereo, {pan});
	RunPanner(*panner, {.mFrames = 1000, .mInputs = 2}, BlocksOf(1000), One);
	pan->mValueAt = [](TickTime const&) { return 1.0f; };
	return RunPanner(*panner, {.mStartFrame = 1000 + inJump, .mFrames = 1000, .mInputs = 2}, BlocksOf(250),
		One, [&](unsigned long long, long long inFrame) { return inIsSilentThere && inFrame < 1500; });
}

TEST(StereoPanner, GainsRampExceptOverAJump)
{
	Prefetcher forward;
	Prefetcher reverse;
	reverse.mReverse = 1;

	Samples const jumped = MoveToTheRight(&forward, 1, false);
	EXPECT_EQ(jumped[0][0], jumped[0][999]);
	EXPECT_EQ(jumped[1][0], 1.0f);
	// Backwards a jump is the rule, and everything ramps over 5 ms: at first from 1 to the gains of the pan.
	Samples const backwards = MoveToTheRight(&reverse, -700, false);
	EXPECT_NEAR(static_cast<double>(backwards[1][120]), 0.5, 1e-6);
	EXPECT_EQ(backwards[1][240], 1.0f);
	// A ramp goes on unheard.
	Samples const unheard = MoveToTheRight(&forward, 0, true);
	EXPECT_EQ(unheard[1][499], 0.0f);
	EXPECT_NEAR(static_cast<double>(unheard[1][500]), 500.0 / 720.0, 1e-6);
}

TEST(StereoPanner, AnIdentityIsAPromiseForTheWholeRun)
{
	struct Case
	{
		char const* mName;
		PanProcessorType mType;
		float mPan;
		bool mHasKeyframes;
		bool mIsIdentity;
	};
	Case const cases[] = {
		{"stereo in the middle", kPanStereoToStereo, 0.5f, false, true},
		{"stereo in the middle, animated", kPanStereoToStereo, 0.5f, true, false},
		{"stereo beside it", kPanStereoToStereo, 0.51f, false, false},
		{"balance without the test", kPanBalance, 0.5f, false, false},
		{"balance with the test", kPanBalanceWithIdentity, 0.5f, false, true},
		{"balance with the test, animated", kPanBalanceWithIdentity, 0.5f, true, false},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		auto const pan = MakeObject<FakeParameter>(test.mPan);
		pan->mIsEmpty = !test.mHasKeyframes;
		auto const panner = MakePanner(context, test.mType, {pan});
		EXPECT_FALSE(panner->DoesNotAlterAudio()) << "nothing has been sampled";
		panner->Preroll(kTimeZero, false);
		EXPECT_EQ(panner->DoesNotAlterAudio(), test.mIsIdentity);
		auto const clone = panner->Clone(k48000Hz, 16);
		clone->Preroll(kTimeZero, false);
		EXPECT_EQ(clone->DoesNotAlterAudio(), test.mIsIdentity);
	}
	ScopedContext const context;
	EXPECT_FALSE(MakePanner(context, kPanBalanceWithIdentity)->DoesNotAlterAudio());
}

TEST(StereoPanner, AClonePlaysFromItsOwnStateUnderTheSameControls)
{
	for (PanProcessorType const type :
		{kPanMonoToStereo, kPanStereoToStereo, kPanStereoToMono, kPanMonoTo51, kPanStereoTo51, kPanBalance})
	{
		SCOPED_TRACE(type);
		Prefetcher prefetcher;
		ScopedContext const context(4096, &prefetcher);
		auto const x = MakeObject<FakeParameter>(0.2f);
		Parameters params = ConstantParameters({0.3f, 0.3f, 0.4f, 0.9f});
		params[0] = x;
		params.resize(GetNumControls(type));
		auto const panner = MakePanner(context, type, params);
		PanRange range = RangeOf(*panner, 500);
		auto const clone = panner->Clone(k48000Hz, 16);
		Samples const first = RunPanner(*panner, range, BlocksOf(100), PositionSample);
		EXPECT_TRUE(Same(RunPanner(*clone, range, BlocksOf(70), PositionSample), first));
		auto const late = panner->Clone(k48000Hz, 16);
		EXPECT_TRUE(Same(RunPanner(*late, range, BlocksOf(7), PositionSample), first))
			<< "what the first has heard is not in the clone";

		// The control is shared, and no ramp is: the clone's goes on while the first one is edited.
		x->mValueAt = [](TickTime const&) { return 0.9f; };
		range.mStartFrame = 500;
		Samples const edited = RunPanner(*clone, range, BlocksOf(50), PositionSample);
		EXPECT_TRUE(Same(RunPanner(*panner, range, BlocksOf(500), PositionSample), edited));
		EXPECT_EQ(InterfaceRef<ILiveAudioParameterOwner>(clone).IsValid(), type != kPanStereoToMono);
	}
}

TEST(Panners, RefuseWhatTheyCannotBeMadeFrom)
{
	struct Case
	{
		char const* mName;
		bool mIsDirect;
		unsigned mType;
		unsigned mParams;
		bool mHasContext;
		FrameRate mFrameRate;
		int mResult;
	};
	FrameRate const invalid;
	auto const failure = static_cast<int>(0x80000000u);
	Case const cases[] = {
		{"no pan", false, 4, 0, true, k48000Hz, failure},
		{"two pans", false, 5, 2, true, k48000Hz, failure},
		{"three controls, stereo", false, 8, 3, true, k48000Hz, failure},
		{"three controls, mono", false, 7, 3, true, k48000Hz, kSuccess},
		{"three controls, direct", true, 7, 3, true, k48000Hz, failure},
		{"four controls, direct", true, 7, 4, true, k48000Hz, kSuccess},
		{"no rate", false, 4, 1, true, invalid, eInvalidArgument},
		{"no rate, surround", false, 8, 4, true, invalid, eInvalidArgument},
		{"no rate, fold", false, 9, 0, true, invalid, eInvalidArgument},
		{"no rate, direct", true, 12, 1, true, invalid, eInvalidArgument},
		{"no rate needed", false, 0, 0, true, invalid, kSuccess},
		{"no context", false, 4, 0, false, k48000Hz, eNullPointer},
		{"no context for none", false, 2, 0, false, k48000Hz, eNullPointer},
		{"no context for a fold", false, 10, 0, false, k48000Hz, eNullPointer},
		{"no context, direct", true, 13, 0, false, k48000Hz, eNullPointer},
		{"direct only", false, 11, 1, true, k48000Hz, eInvalidArgument},
		{"direct only", false, 12, 1, true, k48000Hz, eInvalidArgument},
		{"direct only", false, 13, 1, true, k48000Hz, eInvalidArgument},
		{"the undefined one", false, 18, 1, true, k48000Hz, eInvalidArgument},
		{"beyond the last", false, 20, 1, true, k48000Hz, eInvalidArgument},
		{"far beyond", false, 0xFFFFFFFF, 1, true, k48000Hz, eInvalidArgument},
		{"not direct", true, 8, 4, true, k48000Hz, eInvalidArgument},
		{"mono again", false, 19, 0, true, k48000Hz, kSuccess},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(std::string(test.mName) + " " + std::to_string(test.mType));
		ScopedContext const context;
		auto const factory = SonaroFactory::CreateClassRef();
		auto const given = test.mHasContext ? context.Get() : InterfaceRef<IAudioRenderContext>();
		auto const params = ConstantParameters(std::vector<float>(test.mParams, 0.5f));
		auto const type = static_cast<PanProcessorType>(test.mType);
		InterfaceRef<IAudioPanProcessor> panner;
		int const result = test.mIsDirect
							   ? factory->CreateDirectAudioPanProcessorRenderer(
									 given, test.mFrameRate, type, 8, {{0, {0, 1}}}, false, params, &panner)
							   : factory->CreateAudioPanProcessorRenderer(
									 given, test.mFrameRate, type, false, params, &panner);
		EXPECT_EQ(result, test.mResult);
		EXPECT_EQ(panner.IsValid(), test.mResult == kSuccess);
	}
}

TEST(AudioPannerBalance, ScalesTheSideThatIsPannedAwayFrom)
{
	struct Case
	{
		char const* mName;
		double mPan;
		unsigned mInputs;
		unsigned mOutputs;
		// Expected factor of each output, -1 for one that stays as it was.
		std::vector<double> mGains;
	};
	double const h = std::sqrt(0.5);
	Case const cases[] = {
		{"the middle copies all", 0.5, 5, 5, {1, 1, 1, 1, 1}},
		{"to the right", 0.75, 4, 4, {h, 1, h, 1}},
		{"to the left", 0.25, 4, 4, {1, h, 1, h}},
		{"far left", 0.0, 2, 2, {1, 0}},
		{"a lone last channel is a left one", 0.75, 5, 5, {h, 1, h, 1, h}},
		{"and copied to the left", 0.25, 3, 3, {1, h, 1}},
		{"unequal counts leave it", 0.75, 3, 5, {h, 1, -1, -1, -1}},
		{"one channel is a left one", 0.75, 1, 1, {h}},
		{"pairs end at 16", 0.75, 40, 33, {}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		auto const panner =
			MakePanner(context, kPanBalance, ConstantParameters({static_cast<float>(test.mPan)}));
		auto input = MakeBuffer(test.mInputs, 9, 1.0f);
		auto output = MakeBuffer(test.mOutputs, 9, -1.0f);
		panner->Preroll(kTimeZero, false);
		panner->ProcessAudioData(input, output, kTimeZero);
		auto expected = test.mGains;
		for (unsigned channel = 0; test.mGains.empty() && channel < test.mOutputs; ++channel)
		{
			expected.push_back(channel >= 32 ? -1.0 : channel % 2 == 0 ? h : 1.0);
		}
		for (unsigned channel = 0; channel < test.mOutputs; ++channel)
		{
			EXPECT_NEAR(static_cast<double>(Heard(output, channel)[8]), expected[channel], kTwoUnits)
				<< channel;
		}
		input.Zero();
		panner->ProcessAudioData(input, output, kTimeZero);
		EXPECT_TRUE(output.IsSilent());
	}
}

} // namespace SN::StereoPannerTest
