#include "Support/Engine.h"

namespace SN::PannerStateTest
{

FrameRate const k96000Hz = FrameRate::FromSamplesPerSecond(96000.0);

float One(unsigned long long, long long)
{
	return 1.0f;
}

// All the way to the left, which is 0 of every control.
InterfaceRef<IAudioPanProcessor> MakeLeft(
	Context const& inContext, PanProcessorType inType, FrameRate const& inFrameRate)
{
	auto const params = ConstantParameters(std::vector<float>(GetNumControls(inType), 0.0f));
	return MakeAnyPanner(inContext, inType, params, inFrameRate);
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
		auto const panner = MakeLeft(context, type, k96000Hz);
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
		auto const panner = MakeLeft(context, type, k48000Hz);
		Samples const out = RunPanner(*panner, RangeOf(*panner, 300), BlocksOf(300), One,
			[](unsigned long long, long long inFrame) { return inFrame < 100; });
		EXPECT_EQ(out[1][99], 0.0f);
		for (unsigned i = 100; i < 300; ++i)
		{
			ASSERT_NEAR(static_cast<double>(out[1][i]), std::max(0.0, 1.0 - i / 240.0), 1e-6) << i;
		}
	}
}

// Controls that move on their grid, silence on one side and on all, a start before time 0, and a filter that
// neither hears nor forgets in silence.
TEST(Panners, AnySplitEqualsWhole)
{
	for (PanProcessorType const type : {kPanMonoToStereo, kPanStereoToStereo, kPanStereoToMono, kPanMonoTo51,
			 kPanStereoTo51, kPan51ToMono, kPan51ToStereo, kPanMonoToAdaptive, kPanStereoToAdaptive})
	{
		SCOPED_TRACE(type);
		bool const isAdaptive = type == kPanMonoToAdaptive || type == kPanStereoToAdaptive;
		auto const run = [&](BlockSizes const& inBlocks)
		{
			ScopedContext const context;
			Parameters params;
			for (unsigned control = 0; control < GetNumControls(type); ++control)
			{
				params.push_back(MakeObject<FakeParameter>(
					[=](TickTime const& inTime) {
						return static_cast<float>(
							std::fmod(inTime.GetSeconds() * (130.0 + 20.0 * control) + 9.0, 1.0));
					}));
			}
			auto const panner = isAdaptive ? MakeDirectPanner(context, type, 5, {{0, {0, 1, 3, 4}}}, params)
										   : MakePanner(context, type, params);
			PanRange range = RangeOf(*panner, 2400);
			range.mStartFrame = -100;
			range.mControlInterval = 300;
			return RunPanner(*panner, range, inBlocks, PositionSample,
				[](unsigned long long inChannel, long long inFrame)
				{
					bool const allSilent = inFrame > 1100 && inFrame < 1600;
					return allSilent || (inChannel == 1 && inFrame > 200 && inFrame < 700);
				});
		};
		Samples const whole = run(BlocksOf(2400));
		for (unsigned seed = 1; seed <= 4; ++seed)
		{
			EXPECT_TRUE(Same(run(RandomBlocks(seed, 6 * seed * seed)), whole)) << seed;
		}
		EXPECT_TRUE(Same(run(BlocksOf(1)), whole));
		EXPECT_TRUE(!isAdaptive || whole[4] == whole[0]) << "one ramp a side";
	}
}

TEST(Panners, SilenceInIsSilenceOut)
{
	ScopedContext const context;
	Parameters const four = ConstantParameters({0.2f, 0.3f, 0.4f, 0.5f});
	Parameters const one = ConstantParameters({0.2f});
	InterfaceRef<IAudioPanProcessor> any;
	SonaroFactory::CreateClassRef()->CreateDefaultMultiChannelAudioPanProcessorRenderer(context, k48000Hz, {},
		false, one, zorvmediatypes::CreateMultichannelLayout(3), zorvmediatypes::CreateMultichannelLayout(5),
		&any);
	InterfaceRef<IAudioPanProcessor> const panners[] = {MakePanner(context, kPanMonoToStereo, one),
		MakePanner(context, kPanStereoToStereo, one), MakePanner(context, kPanStereoToMono),
		MakePanner(context, kPanMonoTo51, four), MakePanner(context, kPanStereoTo51, four),
		MakePanner(context, kPan51ToMono), MakePanner(context, kPan51ToStereo),
		MakePanner(context, kPanChannelMapMono), MakePanner(context, kPanChannelMap51),
		MakeDirectPanner(context, kPanMonoToAdaptive, 3, {{0, {0}}}, one),
		MakeDirectPanner(context, kPanMonoTo51, 6, {{0, {0}}}, four),
		MakeDirectPanner(context, kPan51ToAdaptive, 3, {{0, {0}}}), any};
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
	auto const pan = MakeObject<FakeParameter>(std::numeric_limits<float>::quiet_NaN());
	auto const panner = MakePanner(context, kPanMonoToStereo, {pan});
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
		auto const panner = MakePanner(context, type, {InterfaceRef<IRenderableAudioComponentParam>()});
		panner->Preroll(kTimeZero, false);
		EXPECT_FALSE(panner->DoesNotAlterAudio());
		Samples const out = RunPanner(*panner, RangeOf(*panner, 4), BlocksOf(4), One);
		EXPECT_EQ(out[0][3], 1.0f);
		EXPECT_EQ(out[1][3], 0.0f);
	}
}

TEST(SurroundPanner, TheFilterRoundsEveryStepToSinglePrecision)
{
	constexpr float kPi = 3.14159265f;
	for (double const rate : {8000.0, 32000.0, 44100.0, 48000.0, 88200.0, 96000.0, 192000.0})
	{
		SCOPED_TRACE(rate);
		auto const w = static_cast<float>((120.0 / rate + 120.0 / rate) * static_cast<double>(kPi));
		auto const alpha = static_cast<float>(std::sin(static_cast<double>(w)) * 0.70710678118654752440);
		float const a2 = (1.0f - alpha) / (alpha + 1.0f);
		auto const a1 =
			static_cast<float>((static_cast<double>(a2) + 1.0) * std::cos(static_cast<double>(w)));
		float const b = (a2 + 1.0f - a1) * 0.25f;
		ScopedContext const context(4096);
		auto const panner = MakeAnyPanner(context, kPanMonoTo51, ConstantParameters({0.0f, 0.0f, 0.0f, 1.0f}),
			FrameRate::FromSamplesPerSecond(rate));
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
				// In this order, and nothing is contracted.
				float const y = (2.0f * x1 + s + x2) * b + y1 * a1 - a2 * y2;
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
			auto const pan = MakeObject<FakeParameter>(0.5f);
			auto const gain = MakeObject<FakeParameter>(0.5f);
			auto const level = MakeObject<FakeParameter>(0.5f);
			pan->mIsPending = true;
			factory->CreateAudioPanProcessorRenderer(
				context, k48000Hz, kPanMonoToStereo, isPanner, {pan}, &stereo);
			factory->CreateDefaultMultiChannelAudioPanProcessorRenderer(context, k48000Hz, {}, isPanner,
				{pan}, VX::kAudioChannelLayout_Mono, VX::kAudioChannelLayout_Mono, &any);
			MakeFader(context, {gain});
			MakeSend(context, {}, {level}, MakePanner(context, kPanNoneMono));
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

} // namespace SN::PannerStateTest
