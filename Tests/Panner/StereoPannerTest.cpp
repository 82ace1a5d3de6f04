#include "PannerReference.h"

#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Contexts.h"
#include "Support/Panning.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;

// Two units in the last place of full scale.
constexpr double kTwoUnits = 2.4e-7;

float One(unsigned long long, long long)
{
	return 1.0f;
}

TEST(StereoPanner, StandsAtTheGainsOfItsLawFromTheFirstBlockOn)
{
	for (int step = 0; step <= 64; ++step)
	{
		double const pan = step / 64.0;
		SCOPED_TRACE(pan);
		ScopedContext const context;
		auto const params = ConstantParameters({static_cast<float>(pan)});
		auto const mono = MakePanner(context.Get(), kPanMonoToStereo, params);
		auto const stereo = MakePanner(context.Get(), kPanStereoToStereo, params);
		auto const monoGains = GetGainsAt(*mono, {.mFrames = 4});
		auto const stereoGains = GetGainsAt(*stereo, {.mFrames = 4, .mInputs = 2});
		for (unsigned side = 0; side < 2; ++side)
		{
			EXPECT_NEAR(static_cast<double>(monoGains[side]), GetEqualPowerReference(pan)[side], kTwoUnits);
			EXPECT_NEAR(
				static_cast<double>(stereoGains[side]), GetSideKeepingReference(pan)[side], kTwoUnits);
		}
		EXPECT_FALSE(mono->DoesNotAlterAudio());
		EXPECT_EQ(stereo->DoesNotAlterAudio(), step == 32);
	}
	ScopedContext const context;
	auto const mono = MakePanner(context.Get(), kPanStereoToMono);
	EXPECT_EQ(GetGainsAt(*mono, {.mFrames = 4, .mInputs = 2, .mOutputs = 1}, 0b10)[0], 0.5f);
}

TEST(StereoPanner, SidesDoNotCross)
{
	ScopedContext const context;
	auto const panner = MakePanner(context.Get(), kPanStereoToStereo, ConstantParameters({0.25f}));
	Samples const out = RunPanner(*panner, {.mFrames = 8, .mInputs = 2}, BlocksOf(3),
		[](unsigned long long inChannel, long long inFrame)
		{ return static_cast<float>(inFrame) + 100.0f * static_cast<float>(inChannel); });
	EXPECT_EQ(out[0][5], 5.0f);
	EXPECT_NEAR(static_cast<double>(out[1][5]), 105.0 * std::sqrt(0.5), 1e-4);
}

// A pan that changes on the control grid, silence on one side and on both, and a start before time 0.
TEST(StereoPanner, AnySplitEqualsWhole)
{
	for (PanProcessorType const type : {kPanMonoToStereo, kPanStereoToStereo, kPanStereoToMono})
	{
		PanRange range{.mStartFrame = -100, .mFrames = 1500, .mControlInterval = 250};
		range.mInputs = type == kPanMonoToStereo ? 1 : 2;
		range.mOutputs = type == kPanStereoToMono ? 1 : 2;
		auto const run = [&](BlockSizes const& inBlocks)
		{
			ScopedContext const context;
			std::vector<InterfaceRef<IRenderableAudioComponentParam>> params;
			if (type != kPanStereoToMono)
			{
				params.push_back(zorvcore::classref::MakeObject<FakeParameter>([](TickTime const& inTime)
					{ return static_cast<float>(std::fmod(inTime.GetSeconds() * 700.0 + 9.0, 1.0)); }));
			}
			auto const panner = MakePanner(context.Get(), type, params);
			return RunPanner(*panner, range, inBlocks, PositionSample,
				[](unsigned long long inChannel, long long inFrame)
				{
					bool const bothSilent = inFrame > 600 && inFrame < 900;
					return bothSilent || (inChannel == 1 && inFrame > 100 && inFrame < 400);
				});
		};
		Samples const whole = run(BlocksOf(range.mFrames));
		for (unsigned seed = 1; seed <= 4; ++seed)
		{
			EXPECT_EQ(DescribeDifference(run(RandomBlocks(seed, 5 * seed * seed)), whole), "") << type;
		}
		EXPECT_EQ(DescribeDifference(run(BlocksOf(1)), whole), "") << type;
	}
}

// What is heard from frame 1000 on, or so much later, when the pan is moved from left to right there. The
// prefetcher makes it a playback, which hears the edit.
Samples MoveToTheRight(Prefetcher* ioPrefetcher, long long inJump, bool inIsSilentThere)
{
	ScopedContext const context(4096, ioPrefetcher);
	auto const pan = zorvcore::classref::MakeObject<FakeParameter>(0.0f);
	auto const panner = MakePanner(context.Get(), kPanStereoToStereo, {pan});
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

	// 5 ms at 48 kHz, then 15 ms since the first block was a jump.
	Samples const ramped = MoveToTheRight(&forward, 0, false);
	for (unsigned i = 0; i < 1000; ++i)
	{
		double const done = std::min(1.0, i / 720.0);
		ASSERT_NEAR(static_cast<double>(ramped[0][i]), 1.0 - done, 1e-6) << i;
		ASSERT_NEAR(static_cast<double>(ramped[1][i]), done, 1e-6) << i;
	}
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
		auto const pan = zorvcore::classref::MakeObject<FakeParameter>(test.mPan);
		pan->mIsEmpty = !test.mHasKeyframes;
		auto const panner = MakePanner(context.Get(), test.mType, {pan});
		EXPECT_FALSE(panner->DoesNotAlterAudio()) << "nothing has been sampled";
		panner->Preroll(kTimeZero, false);
		EXPECT_EQ(panner->DoesNotAlterAudio(), test.mIsIdentity);
		auto const clone = panner->Clone(k48000Hz, 16);
		clone->Preroll(kTimeZero, false);
		EXPECT_EQ(clone->DoesNotAlterAudio(), test.mIsIdentity);
	}
	ScopedContext const context;
	EXPECT_FALSE(MakePanner(context.Get(), kPanBalanceWithIdentity)->DoesNotAlterAudio());
}

TEST(StereoPanner, AClonePlaysFromItsOwnStateUnderTheSameControls)
{
	for (PanProcessorType const type :
		{kPanMonoToStereo, kPanStereoToStereo, kPanStereoToMono, kPanMonoTo51, kPanStereoTo51, kPanBalance})
	{
		SCOPED_TRACE(type);
		Prefetcher prefetcher;
		ScopedContext const context(4096, &prefetcher);
		auto const x = zorvcore::classref::MakeObject<FakeParameter>(0.2f);
		std::vector<InterfaceRef<IRenderableAudioComponentParam>> params{x};
		if (type == kPanMonoTo51 || type == kPanStereoTo51)
		{
			auto const others = ConstantParameters({0.3f, 0.4f, 0.9f});
			params.insert(params.end(), others.begin(), others.end());
		}
		auto const panner = MakePanner(context.Get(), type, params);
		PanRange range{.mFrames = 500};
		range.mInputs = panner->GetNumInputChannels();
		range.mOutputs = panner->GetNumOutputChannels();
		auto const clone = panner->Clone(k48000Hz, 16);
		Samples const first = RunPanner(*panner, range, BlocksOf(100), PositionSample);
		EXPECT_EQ(DescribeDifference(RunPanner(*clone, range, BlocksOf(70), PositionSample), first), "");
		auto const late = panner->Clone(k48000Hz, 16);
		EXPECT_EQ(DescribeDifference(RunPanner(*late, range, BlocksOf(7), PositionSample), first), "")
			<< "what the first has heard is not in the clone";

		// The control is shared, and no ramp is: the clone's goes on while the first one is edited.
		x->mValueAt = [](TickTime const&) { return 0.9f; };
		range.mStartFrame = 500;
		Samples const edited = RunPanner(*clone, range, BlocksOf(50), PositionSample);
		EXPECT_EQ(DescribeDifference(RunPanner(*panner, range, BlocksOf(500), PositionSample), edited), "");
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
			MakePanner(context.Get(), kPanBalance, ConstantParameters({static_cast<float>(test.mPan)}));
		dsp::AudioBuffer input(test.mInputs, 9);
		dsp::AudioBuffer output(test.mOutputs, 9);
		for (unsigned channel = 0; channel < test.mInputs; ++channel)
		{
			std::fill_n(input.GetChannel(channel), 9, 1.0f);
		}
		for (unsigned channel = 0; channel < test.mOutputs; ++channel)
		{
			std::fill_n(output.GetChannel(channel), 9, -1.0f);
		}
		panner->Preroll(kTimeZero, false);
		panner->ProcessAudioData(input, output, kTimeZero);
		auto expected = test.mGains;
		for (unsigned channel = 0; test.mGains.empty() && channel < test.mOutputs; ++channel)
		{
			expected.push_back(channel >= 32 ? -1.0 : channel % 2 == 0 ? h : 1.0);
		}
		for (unsigned channel = 0; channel < test.mOutputs; ++channel)
		{
			double const got =
				output.IsChannelSilent(channel) ? 0.0 : static_cast<double>(output.GetChannel(channel)[8]);
			EXPECT_NEAR(got, expected[channel], kTwoUnits) << channel;
		}
		input.Zero();
		panner->ProcessAudioData(input, output, kTimeZero);
		EXPECT_TRUE(output.IsSilent());
	}
}

} // namespace
} // namespace SN
