#include "AudioRender/Component/AudioChannelMatrixRenderer.h"
#include "Sonaro/AudioChannelMix.h"
#include "Support/Engine.h"

namespace SN::RoutingTest
{

using zorvmediatypes::CreateMultichannelLayout;

constexpr float kStale = -77.0f;

// A buffer whose channel k holds k + 1.
void FillWithChannelNumbers(dsp::AudioBuffer& outBuffer)
{
	for (unsigned channel = 0; channel < outBuffer.GetNumChannels(); ++channel)
	{
		std::fill_n(outBuffer.GetChannel(channel), outBuffer.GetUseSize(), static_cast<float>(channel + 1));
	}
	outBuffer.ClearSilenceFlags(dsp::SilenceFlags::All());
}

// What the channels of a buffer hold, 0 for a flagged one.
std::vector<float> GetChannelValues(dsp::AudioBuffer const& inBuffer)
{
	std::vector<float> values;
	for (unsigned channel = 0; channel < inBuffer.GetNumChannels(); ++channel)
	{
		values.push_back(Heard(inBuffer, channel)[3]);
	}
	return values;
}

// What a router makes of channel numbers in a stale output.
std::vector<float> Route(IAudioPanProcessor& ioPanner, unsigned inInputs, unsigned inOutputs)
{
	ioPanner.Preroll(kTimeZero, false);
	dsp::AudioBuffer input(inInputs, 8);
	FillWithChannelNumbers(input);
	auto output = MakeBuffer(inOutputs, 8, kStale);
	ioPanner.ProcessAudioData(input, output, kTimeZero);
	return GetChannelValues(output);
}

TEST(AdaptivePanner, PositionMakesTheSideAndTheRoutingTheSound)
{
	float const h = std::sqrt(0.5f);
	struct Case
	{
		char const* mName;
		bool mIsStereo;
		double mPan;
		unsigned mOutputs;
		AudioChannelMatrix mMatrix;
		// With 1 on the left or only input, 2 on the right one.
		std::vector<float> mExpected;
	};
	Case const cases[] = {
		{"a pair to the left", false, 0.0, 8, {{0, {0, 1}}}, {1, 0, 0, 0, 0, 0, 0, 0}},
		{"a pair to the right", false, 1.0, 8, {{0, {0, 1}}}, {0, 1, 0, 0, 0, 0, 0, 0}},
		{"a pair in the middle", false, 0.5, 2, {{0, {0, 1}}}, {1, 1}},
		{"the first of a pair feeds both", false, 0.5, 4, {{0, {2}}}, {0, 0, 1, 1}},
		{"but not the second", false, 0.5, 4, {{0, {3}}}, {0, 0, 0, 1}},
		{"only the first input is widened", false, 0.5, 4, {{0, {1}}, {1, {2}}}, {0, 1, 1, 0}},
		{"one output", false, 0.25, 1, {{0, {0}}}, {1}},
		{"the last of three is a left one", false, 0.25, 3, {{0, {2, 3}}}, {0, 0, 1}},
		{"six of eight", false, 0.25, 8, {{0, {0, 1, 4, 5, 6, 7}}}, {1, h, 0, 0, 1, h, 1, h}},
		{"left to 1 and 3, right to 6 and 8", true, 0.5, 8, {{0, {0, 2}}, {1, {5, 7}}},
			{1, 0, 1, 0, 0, 2, 0, 2}},
		{"the key does not matter", true, 0.25, 4, {{1, {0, 1}}}, {1, 2 * h, 0, 0}},
		{"stereo is not widened", true, 0.5, 4, {{0, {0}}}, {1, 0, 0, 0}},
		{"an untouched last channel", true, 0.5, 3, {{0, {0}}}, {1, 0, kStale}},
		{"nothing is routed", true, 0.5, 3, {}, {0, 0, 0}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		auto const panner = MakeDirectPanner(context,
			test.mIsStereo ? kPanStereoToAdaptive : kPanMonoToAdaptive, static_cast<int>(test.mOutputs),
			test.mMatrix, ConstantParameters({static_cast<float>(test.mPan)}));
		EXPECT_EQ(panner->GetNumOutputChannels(), test.mOutputs);
		auto const clone = panner->Clone(k48000Hz, 16);
		for (auto const& one : {panner, clone})
		{
			auto const out = Route(*one, test.mIsStereo ? 2 : 1, test.mOutputs);
			for (unsigned channel = 0; channel < test.mOutputs; ++channel)
			{
				EXPECT_NEAR(out[channel], test.mExpected[channel], 3e-7f) << channel;
			}
		}
	}
}

TEST(DirectPanners, SumAtFullLevelByTheRouting)
{
	ScopedContext const context;
	auto const four = ConstantParameters({0.1f, 0.2f, 0.3f, 0.4f});
	auto const mono = MakeDirectPanner(context, kPanMonoTo51, 0, {{0, {1, 3, 6}}}, four);
	EXPECT_EQ(Route(*mono, 1, 6), (std::vector<float>{0, 1, 0, 1, 0, 0}));
	EXPECT_EQ(Route(*mono, 1, 7), (std::vector<float>{0, 1, 0, 1, 0, 0, 0})) << "the layout counts";
	auto const surround =
		MakeDirectPanner(context, kPan51ToAdaptive, 4, {{0, {0, 2}}, {3, {2}}, {5, {1, 9}}, {70, {3}}});
	for (auto const& one : {surround, surround->Clone(k48000Hz, 16)})
	{
		EXPECT_EQ(Route(*one, 6, 4), (std::vector<float>{1, 6, 5, 0}));
		EXPECT_EQ(one->GetOutputChannelType(), VX::kAudioChannelTypeAdaptive);
	}
}

TEST(MultichannelPanners, CopyByPositionOrByTheRouting)
{
	ScopedContext const context;
	auto const factory = SonaroFactory::CreateClassRef();
	EXPECT_EQ(Route(*MakePanner(context, kPanChannelMapMono), 32, 1), std::vector<float>{1});
	EXPECT_EQ(Route(*MakePanner(context, kPanChannelMap51), 32, 6), (std::vector<float>{1, 2, 3, 4, 5, 6}));

	struct Case
	{
		char const* mName;
		unsigned mInputs;
		AudioChannelMatrix mMatrix;
		std::vector<float> mExpected;
	};
	Case const cases[] = {
		{"an entry for each channel", 3, {{0, {2, 3}}, {1, {0}}, {2, {1}}}, {2, 3, 1, kStale}},
		{"fewer entries", 3, {{0, {2}}}, {1, 2, 3, kStale}},
		{"more entries", 3, {{0, {2}}, {1, {0}}, {2, {1}}, {3, {3}}}, {1, 2, 3, kStale}},
		{"no outputs for one", 3, {{0, {0}}, {1, {}}, {2, {3}}}, {1, kStale, kStale, 3}},
		{"more inputs than outputs", 6, {{1, {0}}, {3, {1}}, {4, {2}}, {5, {3}}}, {2, 4, 5, 6}},
		{"more inputs, by position", 6, {{5, {0}}}, {1, 2, 3, 4}},
		{"more inputs, an entry for each", 6, {{0, {3}}, {1, {3}}, {2, {3}}, {3, {3}}, {4, {3}}, {5, {3}}},
			{1, 2, 3, 4}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		InterfaceRef<IAudioPanProcessor> panner;
		ASSERT_EQ(
			factory->CreateDefaultMultiChannelAudioPanProcessorRenderer(context, k48000Hz, test.mMatrix,
				false, ConstantParameters({0.1f}), CreateMultichannelLayout(static_cast<int>(test.mInputs)),
				CreateMultichannelLayout(4), &panner),
			kSuccess);
		EXPECT_EQ(Route(*panner, test.mInputs, 4), test.mExpected);
		EXPECT_EQ(Route(*panner->Clone(k48000Hz, 16), test.mInputs, 4), test.mExpected);
	}

	std::pair<PanProcessorType, unsigned> const nones[] = {{kPanNoneMono, 1}, {kPanNoneMonoAlias, 1},
		{kPanNoneStereo, 2}, {kPanNone51, 6}, {kPanNoneAdaptive, 32}};
	for (auto const& [type, channels] : nones)
	{
		auto const none = MakePanner(context, type);
		EXPECT_EQ(Route(*none, channels, channels), std::vector<float>(channels, kStale))
			<< "nothing is written";
		EXPECT_TRUE(none->DoesNotAlterAudio());
		EXPECT_EQ(none->GetNumInputChannels(), channels);
		EXPECT_EQ(none->GetNumOutputChannels(), channels);
	}
}

TEST(ChannelMixerAudioPanProcessor, MixesByItsGains)
{
	struct Case
	{
		char const* mName;
		AudioChannelLayout mInput;
		AudioChannelLayout mOutput;
		std::vector<std::vector<float>> mGains;
		// Empty where the gains do not fit.
		std::vector<float> mExpected;
	};
	auto const& mono = VX::kAudioChannelLayout_Mono;
	auto const& stereo = VX::kAudioChannelLayout_Stereo;
	std::vector<std::vector<float>> const eight(8, std::vector<float>(8, 0.5f));
	Case const cases[] = {
		{"to the left", mono, stereo, {{1, 0}}, {1, 0}},
		{"to the right", mono, stereo, {{0, 1}}, {0, 1}},
		{"to both", mono, stereo, {{1, 1}}, {1, 1}},
		{"the left one", stereo, mono, {{1}, {0}}, {1}},
		{"the right one", stereo, mono, {{0}, {1}}, {2}},
		{"a difference", stereo, mono, {{0.5f}, {-0.25f}}, {0}},
		{"eight", CreateMultichannelLayout(8), CreateMultichannelLayout(8), eight, std::vector<float>(8, 18)},
		{"nine inputs", CreateMultichannelLayout(9), mono, std::vector<std::vector<float>>(9, {1}), {}},
		{"nine outputs", mono, CreateMultichannelLayout(9), {std::vector<float>(9, 1)}, {}},
		{"a row too few", stereo, mono, {{1}}, {}},
		{"a short row", stereo, stereo, {{1, 1}, {1}}, {}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		InterfaceRef<IAudioPanProcessor> mixer;
		int const result = SonaroFactory::CreateClassRef()->CreateChannelMixerAudioPanProcessorRenderer(
			test.mInput, test.mOutput, test.mGains, &mixer);
		EXPECT_EQ(result, test.mExpected.empty() ? static_cast<int>(0xA00F0001u) : kSuccess);
		EXPECT_EQ(mixer.IsValid(), !test.mExpected.empty());
		if (mixer)
		{
			auto const inputs = static_cast<unsigned>(test.mInput.size());
			auto const outputs = static_cast<unsigned>(test.mOutput.size());
			EXPECT_EQ(Route(*mixer, inputs, outputs), test.mExpected);
			EXPECT_EQ(Route(*mixer->Clone(k48000Hz, 16), inputs, outputs), test.mExpected);
			EXPECT_FALSE(mixer->DoesNotAlterAudio());
			EXPECT_EQ(GetGainsAt(*mixer, {.mFrames = 5, .mInputs = inputs, .mOutputs = outputs}, ~0ull),
				std::vector<float>(outputs, 0.0f));
		}
	}
}

TEST(AudioChannelMatrixRenderer, ReroutesInPlace)
{
	struct Case
	{
		char const* mName;
		AudioChannelMatrix mMatrix;
		unsigned long long mSilent;
		// Of a buffer of four channels that hold 1 to 4.
		std::vector<float> mExpected;
	};
	Case const cases[] = {
		{"the first two stay", {{0, {0}}, {1, {1}}}, 0, {1, 2, 0, 0}},
		{"a swap", {{0, {1}}, {1, {0}}}, 0, {2, 1, 0, 0}},
		{"a sum", {{0, {2}}, {1, {2}}, {3, {2}}}, 0, {0, 0, 7, 0}},
		{"a silent input adds nothing", {{0, {2}}, {1, {2}}, {3, {2}}}, 0b0010, {0, 0, 5, 0}},
		{"to many", {{3, {0, 1, 2, 3}}}, 0, {4, 4, 4, 4}},
		{"beyond the buffer", {{0, {6}}, {9, {1}}, {1, {1}}}, 0, {0, 2, 0, 0}},
		{"empty", {}, 0, {1, 2, 3, 4}},
		{"silence stays", {{0, {1}}}, 0b1111, {0, 0, 0, 0}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		ScopedContext const context;
		auto const renderer = MakeMatrix(context, test.mMatrix);
		for (auto const& one : {renderer, renderer->Clone(k48000Hz, 256, 16)})
		{
			dsp::AudioBuffer buffer(4, 300);
			// One block that fits the context's largest and one that does not.
			for (unsigned const frames : {100u, 300u})
			{
				buffer.SetUseSize(frames);
				FillWithChannelNumbers(buffer);
				buffer.SetSilenceFlags(dsp::SilenceFlags(test.mSilent));
				one->ProcessAudioData(buffer, kTimeZero);
				EXPECT_EQ(buffer.GetUseSize(), frames);
				EXPECT_EQ(GetChannelValues(buffer), test.mExpected);
			}
		}
	}
	ScopedContext const context;
	auto renderer = MakeMatrix(context, {});
	dsp::AudioBuffer wide(33, 8);
	FillWithChannelNumbers(wide);
	renderer->ProcessAudioData(wide, kTimeZero);
	EXPECT_EQ(wide.GetChannel(31)[7], 32.0f) << "an empty routing leaves 32 channels";
	EXPECT_EQ(wide.GetChannel(32)[7], 0.0f);
	EXPECT_FALSE(wide.IsChannelSilent(32)) << "cleared, not flagged";
	renderer = {};
	EXPECT_EQ(
		AudioChannelMatrixRenderer::Create(context, k48000Hz, {{0, {64}}}, &renderer), eInvalidArgument);
	EXPECT_EQ(AudioChannelMatrixRenderer::Create(context, FrameRate(), {}, &renderer), eInvalidArgument);
	EXPECT_EQ(AudioChannelMatrixRenderer::Create({}, k48000Hz, {}, &renderer), eNullPointer);
	EXPECT_FALSE(renderer);
}

TEST(DirectPanners, MoreChannelsThanABufferHasAreRefused)
{
	ScopedContext const context;
	for (PanProcessorType const type : {kPanMonoToAdaptive, kPanStereoToAdaptive, kPan51ToAdaptive})
	{
		SCOPED_TRACE(type);
		for (int const outputs : {64, 65, 1000})
		{
			InterfaceRef<IAudioPanProcessor> panner;
			EXPECT_EQ(SonaroFactory::CreateClassRef()->CreateDirectAudioPanProcessorRenderer(context,
						  k48000Hz, type, outputs, {{0, {0}}}, false, ConstantParameters({0.5f}), &panner),
				outputs == 64 ? kSuccess : eInvalidArgument);
			EXPECT_EQ(static_cast<bool>(panner), outputs == 64);
		}
	}
}

// The first channel is flagged, and the second, which mono has not, sounds.
TEST(MonoInputs, AFlaggedChannelOfAWiderBufferCountsAsZeros)
{
	constexpr unsigned kFrames = 16;
	ScopedContext const context;
	auto const stereo = MakePanner(context, kPanMonoToStereo, ConstantParameters({0.5f}));
	auto const surround = MakePanner(context, kPanMonoTo51, ConstantParameters({0.5f, 0.5f, 0.5f, 1.0f}));
	struct Case
	{
		char const* mName;
		unsigned mOutputs;
		std::function<void(dsp::AudioBuffer const&, dsp::AudioBuffer&)> mRun;
	};
	stereo->Preroll(kTimeZero, false);
	surround->Preroll(kTimeZero, false);
	Case const cases[] = {
		{"panner to stereo", 2,
			[&](auto const& inInput, auto& outOutput)
			{ stereo->ProcessAudioData(inInput, outOutput, kTimeZero); }},
		{"panner to 5.1", 6,
			[&](auto const& inInput, auto& outOutput)
			{ surround->ProcessAudioData(inInput, outOutput, kTimeZero); }},
		{"fold to stereo", 2,
			AudioChannelMix::GetMixFunction(VX::kAudioChannelLayout_Mono, VX::kAudioChannelLayout_Stereo)},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		auto input = MakeBuffer(2, kFrames, kStale);
		input.MarkChannelSilent(0);
		dsp::AudioBuffer output(test.mOutputs, kFrames);
		test.mRun(input, output);
		EXPECT_TRUE(Same(HeardChannels(output), Samples(test.mOutputs, std::vector<float>(kFrames))));
	}
}

} // namespace SN::RoutingTest
