#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Sonaro/SonaroFactory.h"
#include "Support/Contexts.h"
#include "Support/Panning.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace SN
{
namespace
{

using namespace Testing;
using Parameters = std::vector<InterfaceRef<IRenderableAudioComponentParam>>;

FrameRate const k96000Hz = FrameRate::FromSamplesPerSecond(96000.0);

float One(unsigned long long, long long)
{
	return 1.0f;
}

bool IsSurround(PanProcessorType inType)
{
	return inType == kPanMonoTo51 || inType == kPanStereoTo51;
}

// Panned all to the left, from the ordinary maker or, for the two adaptive ones, from the direct one.
InterfaceRef<IAudioPanProcessor> MakeLeft(
	InterfaceRef<IAudioRenderContext> const& inContext, PanProcessorType inType, FrameRate const& inFrameRate)
{
	InterfaceRef<IAudioPanProcessor> panner;
	auto const factory = SonaroFactory::CreateClassRef();
	auto const params = ConstantParameters(std::vector<float>(IsSurround(inType) ? 4 : 1, 0.0f));
	if (inType == kPanMonoToAdaptive || inType == kPanStereoToAdaptive)
	{
		factory->CreateDirectAudioPanProcessorRenderer(
			inContext, inFrameRate, inType, 2, {{0, {0, 1}}}, false, params, &panner);
	}
	else
	{
		factory->CreateAudioPanProcessorRenderer(inContext, inFrameRate, inType, false, params, &panner);
	}
	return panner;
}

PanRange RangeOf(IAudioPanProcessor& ioPanner, unsigned inFrames)
{
	return {.mFrames = inFrames,
		.mInputs = ioPanner.GetNumInputChannels(),
		.mOutputs = ioPanner.GetNumOutputChannels()};
}

constexpr PanProcessorType kRamping[] = {kPanMonoToStereo, kPanStereoToStereo, kPanMonoTo51, kPanStereoTo51,
	kPanMonoToAdaptive, kPanStereoToAdaptive};

// Backwards no block is a jump, so that the ramps as built are heard: 5 ms from full level.
TEST(Panners, RampFromFullLevelOverFiveMillisecondsOfTheirRate)
{
	for (PanProcessorType const type : kRamping)
	{
		SCOPED_TRACE(type);
		Prefetcher reverse;
		reverse.mReverse = 1;
		ScopedContext const context(4096, &reverse);
		auto const panner = MakeLeft(context.Get(), type, k96000Hz);
		auto const expectRamp = [](IAudioPanProcessor& ioPanner, double inLength)
		{
			Samples const out = RunPanner(ioPanner, RangeOf(ioPanner, 600), BlocksOf(600), One);
			for (unsigned i = 0; i < 600; ++i)
			{
				ASSERT_NEAR(static_cast<double>(out[1][i]), std::max(0.0, 1.0 - i / inLength), 1e-6) << i;
			}
		};
		expectRamp(*panner, 480.0);
		expectRamp(*panner->Clone(k96000Hz, 16), 480.0);
		expectRamp(*panner->Clone(k48000Hz, 16), 240.0);
	}
}

// Only sound makes a jump: what begins in silence goes on with the ramp that has run meanwhile.
TEST(Panners, AStartInSilenceRampsOn)
{
	for (PanProcessorType const type : kRamping)
	{
		SCOPED_TRACE(type);
		ScopedContext const context(4096);
		auto const panner = MakeLeft(context.Get(), type, k48000Hz);
		Samples const out = RunPanner(*panner, RangeOf(*panner, 300), BlocksOf(300), One,
			[](unsigned long long, long long inFrame) { return inFrame < 100; });
		EXPECT_EQ(out[1][99], 0.0f);
		for (unsigned i = 100; i < 300; ++i)
		{
			ASSERT_NEAR(static_cast<double>(out[1][i]), std::max(0.0, 1.0 - i / 240.0), 1e-6) << i;
		}
	}
}

TEST(Panners, SilenceInIsSilenceOut)
{
	ScopedContext const context;
	Parameters const four = ConstantParameters({0.2f, 0.3f, 0.4f, 0.5f});
	Parameters const one = ConstantParameters({0.2f});
	InterfaceRef<IAudioPanProcessor> any;
	SonaroFactory::CreateClassRef()->CreateDefaultMultiChannelAudioPanProcessorRenderer(context.Get(),
		k48000Hz, {}, false, one, zorvmediatypes::CreateMultichannelLayout(3),
		zorvmediatypes::CreateMultichannelLayout(5), &any);
	InterfaceRef<IAudioPanProcessor> const panners[] = {MakePanner(context.Get(), kPanMonoToStereo, one),
		MakePanner(context.Get(), kPanStereoToStereo, one), MakePanner(context.Get(), kPanStereoToMono),
		MakePanner(context.Get(), kPanMonoTo51, four), MakePanner(context.Get(), kPanStereoTo51, four),
		MakePanner(context.Get(), kPan51ToMono), MakePanner(context.Get(), kPan51ToStereo),
		MakePanner(context.Get(), kPanChannelMapMono), MakePanner(context.Get(), kPanChannelMap51),
		MakeDirectPanner(context.Get(), kPanMonoToAdaptive, 3, {{0, {0}}}, one),
		MakeDirectPanner(context.Get(), kPanMonoTo51, 6, {{0, {0}}}, four),
		MakeDirectPanner(context.Get(), kPan51ToAdaptive, 3, {{0, {0}}}), any};
	for (auto const& panner : panners)
	{
		SCOPED_TRACE(panner->GetNumInputChannels() * 100 + panner->GetNumOutputChannels());
		dsp::AudioBuffer input(panner->GetNumInputChannels(), 8);
		dsp::AudioBuffer output(panner->GetNumOutputChannels(), 8);
		input.Zero();
		panner->Preroll(kTimeZero, false);
		panner->ProcessAudioData(input, output, kTimeZero);
		EXPECT_TRUE(output.IsSilent());
	}
}

TEST(Panners, APanThatIsNoNumberIsHeardAndLeftAgain)
{
	Prefetcher prefetcher;
	ScopedContext const context(4096, &prefetcher);
	auto const pan = zorvcore::classref::MakeObject<FakeParameter>(std::numeric_limits<float>::quiet_NaN());
	auto const panner = MakePanner(context.Get(), kPanMonoToStereo, {pan});
	EXPECT_TRUE(std::isnan(GetGainsAt(*panner, {.mFrames = 4})[0]));
	pan->mValueAt = [](TickTime const&) { return 1.0f; };
	EXPECT_EQ(GetGainsAt(*panner, {.mStartFrame = 100, .mFrames = 4})[1], 1.0f);
}

// In a render that detaches, an empty reference ends the list.
TEST(Panners, AMissingControlStandsAtZero)
{
	ScopedContext const context;
	for (PanProcessorType const type : {kPanMonoToStereo, kPanStereoToStereo})
	{
		SCOPED_TRACE(type);
		auto const panner = MakePanner(context.Get(), type, {InterfaceRef<IRenderableAudioComponentParam>()});
		panner->Preroll(kTimeZero, false);
		EXPECT_FALSE(panner->DoesNotAlterAudio());
		Samples const out = RunPanner(*panner, RangeOf(*panner, 4), BlocksOf(4), One);
		EXPECT_EQ(out[0][3], 1.0f);
		EXPECT_EQ(out[1][3], 0.0f);
	}
}

// One step of arithmetic, rounded apart.
float Rounded(float inValue)
{
	float volatile const rounded = inValue;
	return rounded;
}

TEST(SurroundPanner, TheFilterRoundsEveryStepToSinglePrecision)
{
	constexpr float kPi = 3.14159265f;
	for (double const rate : {8000.0, 32000.0, 44100.0, 48000.0, 88200.0, 96000.0, 192000.0})
	{
		SCOPED_TRACE(rate);
		auto const w = static_cast<float>((120.0 / rate + 120.0 / rate) * static_cast<double>(kPi));
		auto const alpha = static_cast<float>(std::sin(static_cast<double>(w)) * 0.70710678118654752440);
		float const a2 = Rounded(1.0f - alpha) / Rounded(alpha + 1.0f);
		auto const a1 =
			static_cast<float>((static_cast<double>(a2) + 1.0) * std::cos(static_cast<double>(w)));
		float const b = Rounded(Rounded(Rounded(a2 + 1.0f) - a1) * 0.25f);
		ScopedContext const context(4096);
		InterfaceRef<IAudioPanProcessor> panner;
		SonaroFactory::CreateClassRef()->CreateAudioPanProcessorRenderer(context.Get(),
			FrameRate::FromSamplesPerSecond(rate), kPanMonoTo51, false,
			ConstantParameters({0.0f, 0.0f, 0.0f, 1.0f}), &panner);
		// At another rate than the clone's: its coefficients are those of the first one.
		auto const clone = panner->Clone(k48000Hz, 16);
		for (auto const& one : {panner, clone})
		{
			Samples const out = RunPanner(*one, RangeOf(*one, 500), BlocksOf(500), PositionSample);
			float x1 = 0.0f;
			float x2 = 0.0f;
			float y1 = 0.0f;
			float y2 = 0.0f;
			for (unsigned i = 0; i < 500; ++i)
			{
				float const s = PositionSample(0, i);
				float const feed = Rounded(Rounded(Rounded(Rounded(2.0f * x1) + s) + x2) * b);
				float const y = Rounded(Rounded(feed + Rounded(y1 * a1)) - Rounded(a2 * y2));
				ASSERT_EQ(out[3][i], y) << i;
				x2 = x1;
				x1 = s;
				y2 = y1;
				y1 = y;
			}
		}
	}
}

// Faders, panners and sends have a flag each, which reaches their controls alone.
TEST(Panners, AndFadersAndSendsHandTheirFlagsToTheirControls)
{
	Prefetcher prefetcher;
	auto const factory = SonaroFactory::CreateClassRef();
	for (bool const isPanner : {false, true})
	{
		for (bool const isSend : {false, true})
		{
			InterfaceRef<IAudioRenderContext> context;
			factory->CreateAudioRenderContext(256, true, false, kTimeZero, kTimeMax, 16, kTimeZero,
				&prefetcher, ImmutableString("flags"), !isPanner, isPanner, !isSend, isSend,
				RenderQuality::kMedium, &context);
			InterfaceRef<IAudioPanProcessor> stereo;
			InterfaceRef<IAudioPanProcessor> any;
			InterfaceRef<IAudioProcessor> fader;
			InterfaceRef<IAudioProcessor> send;
			auto const pan = zorvcore::classref::MakeObject<FakeParameter>(0.5f);
			auto const gain = zorvcore::classref::MakeObject<FakeParameter>(0.5f);
			auto const level = zorvcore::classref::MakeObject<FakeParameter>(0.5f);
			pan->mIsPending = true;
			factory->CreateAudioPanProcessorRenderer(
				context, k48000Hz, kPanMonoToStereo, isPanner, {pan}, &stereo);
			factory->CreateDefaultMultiChannelAudioPanProcessorRenderer(context, k48000Hz, {}, isPanner,
				{pan}, VX::kAudioChannelLayout_Mono, VX::kAudioChannelLayout_Mono, &any);
			factory->CreateAudioFaderRenderer(context, k48000Hz, {gain}, &fader);
			factory->CreateAudioSendRenderer(
				context, k48000Hz, {}, {level}, MakePanner(context, kPanNoneMono), &send);
			auto const init = [](bool inFlag) { return inFlag ? "init 16 5292000 flag" : "init 16 5292000"; };
			EXPECT_EQ(*pan->mLog, (FakeParameter::Log{init(isPanner), init(isPanner)}));
			EXPECT_EQ(*gain->mLog, FakeParameter::Log{init(!isPanner)});
			EXPECT_EQ(*level->mLog, FakeParameter::Log{init(isSend)});
			for (auto const& panner : {stereo, any, stereo->Clone(k48000Hz, 16), any->Clone(k48000Hz, 16)})
			{
				LiveAudioParameterMap map;
				InterfaceRef<ILiveAudioParameterOwner>(panner)->CollectLiveParameters(map);
				ASSERT_EQ(map.size(), 1u);
				EXPECT_EQ(map.begin()->second.mActionFlag, isPanner);
			}
			context->Clear();
		}
	}
}

} // namespace
} // namespace SN
